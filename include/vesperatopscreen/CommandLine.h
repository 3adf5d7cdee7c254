#pragma once

#include <cstdio>
#include <optional>

const char* TopScreenVersion();

// Serves a command line that holds an option, which an address never looks like: what begins with a dash. --version
// and --help, each alone, go to Out and give 0; every other option costs the usage on Err and gives 2. Nothing
// without an option: the program is to be started.
std::optional<int> ServeOptions(int argc, char** argv, std::FILE* Out, std::FILE* Err);
