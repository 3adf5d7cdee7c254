#pragma once

#include <unistd.h>
#include <filesystem>
#include <string>

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
  const std::string& path() const { return mPath; }  // with a slash at its end

 private:
  std::string mPath;
};
