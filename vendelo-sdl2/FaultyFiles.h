#pragma once

#include <string>

namespace MyUtils {

// What is wrong with a file of the skin goes to the log, each text once for the run however often the file is asked
// for; behind the first thousand no more. Any thread.
void TellFaultyFile(const std::string& text);

// How many different texts there have been.
int FaultyFiles();

}  // namespace MyUtils
