#include "tests/support/TestPaths.h"

namespace testpaths {
const char* const source = TOPSCREEN_SOURCE_DIR;
const char* const binary = TOPSCREEN_BINARY_DIR;
}  // namespace testpaths
