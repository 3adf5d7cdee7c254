#pragma once

// Heap allocations (malloc and its kin, and so new) of the calling thread since it started, in whatever library.
long allocationsOfThisThread();

// Those of them that C++ code asked for by operator new: ours, since SDL and the drivers here are C.
long newsOfThisThread();
