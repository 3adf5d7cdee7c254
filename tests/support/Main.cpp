// Entry point of every test program.
#include <gtest/gtest.h>
#include <cstdlib>
#include <cstring>

#include "tests/support/Golden.h"

int main(int argc, char** argv) {
  setenv("DISABLE_REBOOT_ON_EXIT", "1", 1);  // no test ever reboots, whoever starts it
  setenv("no_proxy", "127.0.0.1", 1);
  testing::InitGoogleTest(&argc, argv);
  for (int i = 1; i < argc; ++i)
    if (!std::strcmp(argv[i], "--update")) golden::setUpdate(true);
  return RUN_ALL_TESTS();
}
