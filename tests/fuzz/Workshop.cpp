#include "tests/fuzz/Workshop.h"

#include <SDL_image.h>
#include <unistd.h>
#include <cstdio>
#include <cstdlib>
#include <filesystem>

namespace fuzz {
namespace {

namespace fs = std::filesystem;

const std::string& folderOfThisProcess() {
  static const std::string& folder = *new std::string("/dev/shm/topscreen-fuzz-" + std::to_string(getpid()) + "/");
  return folder;
}

std::string freshFolder(const std::string& target) {
  fs::create_directories(folderOfThisProcess() + target);
  std::atexit([] {
    std::error_code error;
    fs::remove_all(folderOfThisProcess(), error);
  });
  return folderOfThisProcess() + target + "/";
}

}  // namespace

Workshop::Workshop(const std::string& target, const CrashSignals&)
  : mFolder(freshFolder(target)), mHarness(200, 100) {
  SDL_Surface* picture = SDL_CreateRGBSurfaceWithFormat(0, 64, 64, 32, SDL_PIXELFORMAT_ARGB8888);
  SDL_FillRect(picture, nullptr, 0x80FF4020);
  IMG_SavePNG(picture, (mFolder + "atlas.png").c_str());
  SDL_FreeSurface(picture);
}

void Workshop::write(const std::string& name, const std::string& content) const {
  std::FILE* file = std::fopen((mFolder + name).c_str(), "wb");
  if (!file) std::abort();
  std::fwrite(content.data(), 1, content.size(), file);
  std::fclose(file);
}

}  // namespace fuzz
