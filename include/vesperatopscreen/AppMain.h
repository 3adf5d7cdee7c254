#pragma once

#include <functional>
#include <string>

namespace vendelo_sdl2 {
class TApplication;
}

// Makes the program's application; ServerAddress is the host and port of the command line, null without.
using ApplicationMaker = std::function<vendelo_sdl2::TApplication*(const std::string* ServerAddress)>;

// The whole program behind its entry point, on the main thread: 0 after a normal run whatever Run returned, -2 when
// Init failed, -3 when it refused because another one runs already, -4 on an exception out of Init or out of its
// clean-up, -6 on one out of Run. A polite signal ends the process from inside, also out of a failed Init. After an
// exception the application is not deleted and its threads still run: ExitProgram ends the process without
// destroying what they use. A command line with an option starts nothing: see CommandLine.h.
int AppMain(int argc, char** argv);
// The same with another application than the top screen.
int AppMain(int argc, char** argv, const ApplicationMaker& MakeApplication);

// Ends the process with AppMain's result as its exit code. What the standard streams hold is written; static
// objects are destroyed only when no thread of the application runs any more.
[[noreturn]] void ExitProgram(int Result);
