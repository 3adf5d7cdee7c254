#pragma once

// Standard output as a place that may not be there: a pipe that nobody reads, a terminal that is held, a descriptor
// that is closed. None of them may stop or end the program.
namespace TConsole {

// From here on what is printed never waits and never kills: SIGPIPE is taken, closed standard descriptors become
// /dev/null, pipes and terminals are written without waiting, and `stdout` drops the lines that are not taken and
// counts them. Where it takes lines again it says there how many are missing. Children get the descriptors as they
// are, and SIGPIPE at its default. Main thread, once, before anything is printed.
void Guard();

// Lines dropped so far; always 0 without Guard. Any thread.
unsigned long Dropped();

}  // namespace TConsole
