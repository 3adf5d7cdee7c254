#include <array>
#include <cstdio>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <system_error>
#include <thread>

#include "vendelo-sdl2/MyUtils.h"
#include "vendelo-sdl2/SystemSeams.h"

namespace fs = std::filesystem;

namespace MyUtils {

void SystemAsync(const std::string& cmd) {
  const auto run = vendelo_sdl2::SystemSeams.System;
  try {
    std::thread([run, cmd] { run(cmd.c_str()); }).detach();
  } catch (const std::system_error& error) {
    std::printf("SystemAsync: no thread for \"%s\": %s\n", cmd.c_str(), error.what());
  }
}

std::string SystemCmdResult(const std::string& command) {
  const auto close = [](FILE* pipe) { pclose(pipe); };
  const std::unique_ptr<FILE, decltype(close)> pipe(popen(command.c_str(), "r"), close);
  if (!pipe) throw std::runtime_error("popen() failed!");
  std::array<char, 128> buffer;
  std::string result;
  while (std::fgets(buffer.data(), static_cast<int>(buffer.size()), pipe.get())) result += buffer.data();
  return result;
}

void StatusFileSet(const fs::path& folder, std::string filename, std::string value) {
  SystemAsync("mkdir -p \"" + folder.string() + "\"; echo \"" + value + "\" > \"" + (folder / filename).string() +
              "\" &");
}

std::string StatusFileGet(const fs::path& folder, std::string filename) {
  std::ifstream file(folder / filename);
  std::string line;
  std::getline(file, line);
  return line;
}

bool FolderExists(const fs::path& path) {
  std::error_code error;
  return fs::is_directory(path, error);
}

bool FileExists(const fs::path& path, bool checkIfRegFile, bool checkIfLink) {
  std::error_code error;
  if (!fs::exists(path, error) || error) return false;
  if (!checkIfRegFile && !checkIfLink) return true;
  return (checkIfRegFile && fs::is_regular_file(path, error)) || (checkIfLink && fs::is_symlink(path, error));
}

}  // namespace MyUtils
