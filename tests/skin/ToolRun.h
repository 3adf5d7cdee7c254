#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <array>
#include <cstdio>
#include <string>

#include "tests/support/ScratchFolder.h"

// A tool run as a designer runs it: its exit code and everything that it said.
struct ToolRun {
  int code = -1;
  std::string text;
};

inline ToolRun runTool(const std::string& command) {
  ToolRun run;
  FILE* pipe = popen((command + " 2>&1").c_str(), "r");
  EXPECT_NE(nullptr, pipe);
  if (!pipe) return run;
  std::array<char, 512> part{};
  while (std::fgets(part.data(), part.size(), pipe)) run.text += part.data();
  const int status = pclose(pipe);
  run.code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  return run;
}
