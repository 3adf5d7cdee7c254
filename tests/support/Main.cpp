// Entry point of every test program.
#include <gtest/gtest.h>
#include <cstdlib>
#include <cstring>
#include <ctime>

#include "tests/support/Golden.h"

int main(int argc, char** argv) {
  setenv("DISABLE_REBOOT_ON_EXIT", "1", 1);  // no test ever reboots, whoever starts it
  setenv("no_proxy", "127.0.0.1", 1);
  // ThreadSanitizer keeps a thread's pending signals in a block that the thread's first blocking call sets up; a
  // signal that arrives meanwhile is forgotten. So the main thread makes that call before anybody can signal it.
  const timespec none{0, 0};
  nanosleep(&none, nullptr);
  testing::InitGoogleTest(&argc, argv);
  for (int i = 1; i < argc; ++i)
    if (!std::strcmp(argv[i], "--update")) golden::setUpdate(true);
  return RUN_ALL_TESTS();
}
