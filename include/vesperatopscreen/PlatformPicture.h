#pragma once

#include "common/TKSLReturnStructures.h"
#include "common/ThreadSafeProperty.h"

// The latest picture of the platform's state, which the application keeps: for the screen and its panels, which
// need nothing else of the application. Only while there is one. Lock it for the length of the use; any thread.
ThreadSafeProperty<PlatformState>& platformState();
