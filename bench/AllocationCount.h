#pragma once

// Heap allocations (malloc and its kin, and so new) of the calling thread since it started, in whatever library.
long allocationsOfThisThread();
