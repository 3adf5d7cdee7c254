#pragma once

// Where this checkout and this build stand. Variables rather than definitions on the compiler's command line, so
// that the compiler cache serves the tests of another checkout.
namespace testpaths {
extern const char* const source;
extern const char* const binary;
}  // namespace testpaths
