// Entry point of every test program.
#include <gtest/gtest.h>
#include <unistd.h>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>

#include "tests/support/Golden.h"
#include "vendelo-sdl2/SystemSeams.h"

int main(int argc, char** argv) {
  setenv("DISABLE_REBOOT_ON_EXIT", "1", 1);  // no test ever reboots, whoever starts it
  setenv("no_proxy", "127.0.0.1", 1);
  // ThreadSanitizer keeps a thread's pending signals in a block that the thread's first blocking call sets up; a
  // signal that arrives meanwhile is forgotten. So the main thread makes that call before anybody can signal it.
  const timespec none{0, 0};
  nanosleep(&none, nullptr);
  // A test whose application hangs at its end must not pass by the program's way out of that.
  vendelo_sdl2::SystemSeams.ExitNow = [](int code) {
    dprintf(STDERR_FILENO, "The application's end hung, exit code %d was due.\n", code);
    _exit(98);
  };
  testing::InitGoogleTest(&argc, argv);
  for (int i = 1; i < argc; ++i)
    if (!std::strcmp(argv[i], "--update")) golden::setUpdate(true);
  return RUN_ALL_TESTS();
}
