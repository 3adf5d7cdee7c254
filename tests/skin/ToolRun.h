#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <string>

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

// A folder that is empty at first and gone after the test.
class ScratchFolder {
 public:
  explicit ScratchFolder(const std::string& name)
    : mPath((std::filesystem::temp_directory_path() / (name + "-" + std::to_string(getpid()))).string() + "/") {
    std::filesystem::remove_all(mPath);
    std::filesystem::create_directories(mPath);
  }
  ~ScratchFolder() { std::filesystem::remove_all(mPath); }
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;
  std::string operator+(const std::string& name) const { return mPath + name; }

 private:
  std::string mPath;
};
