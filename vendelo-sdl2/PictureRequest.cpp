#include "vendelo-sdl2/PictureRequest.h"

#include <SDL.h>
#include <png.h>
#include <csignal>
#include <ctime>
#include <exception>
#include <memory>
#include <string>
#include <thread>

#include "vendelo-sdl2/TAsyncJobs.h"
#include "vendelo-sdl2/TFrameWatch.h"
#include "vendelo-sdl2/TLogManager.h"
#include "vendelo-sdl2/WholeFile.h"

namespace vendelo_sdl2 {
namespace {

constexpr TLogType kLogPlain = 1;
constexpr TLogType kLogError = 5;
constexpr mode_t kMode = 0640;

sigset_t requestSignal() {
  sigset_t set;
  sigemptyset(&set);
  sigaddset(&set, SIGUSR1);
  return set;
}

// The surface has three bytes a pixel. Empty where there is no memory.
std::string packed(SDL_Surface& surface) {
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  image.width = static_cast<png_uint_32>(surface.w);
  image.height = static_cast<png_uint_32>(surface.h);
  image.format = PNG_FORMAT_RGB;
  image.flags = PNG_IMAGE_FLAG_FAST;
  png_alloc_size_t size = PNG_IMAGE_PNG_SIZE_MAX(image);
  std::string file(size, '\0');
  if (!png_image_write_to_memory(&image, file.data(), &size, 0, surface.pixels, surface.pitch, nullptr)) return "";
  file.resize(size);
  return file;
}

void store(SDL_Surface& surface, const std::string& path) {
  const std::string file = packed(surface);
  const std::string error = file.empty() ? "no memory" : WriteWholeFile(path, file, kMode);
  if (error.empty())
    logman::WriteLog(kLogPlain, 0, "Picture of the screen written to %s", path.c_str());
  else
    logman::WriteLog(kLogError, 0, "Picture of the screen could not be written: %s", error.c_str());
}

}  // namespace

void TPictureRequest::hold() {
  const sigset_t set = requestSignal();
  pthread_sigmask(SIG_BLOCK, &set, nullptr);
}

bool TPictureRequest::taken() {
  const sigset_t set = requestSignal();
  constexpr timespec atOnce{0, 0};
  return sigtimedwait(&set, nullptr, &atOnce) == SIGUSR1;
}

void TPictureRequest::write(TFrameWatch& frames, const std::string& path) {
  frames.askForPicture([path](SDL_Surface* taken) {
    // Copied into the thread, which counts as a job for as long as it holds them.
    std::shared_ptr<SDL_Surface> surface(taken, SDL_FreeSurface);
    auto job = std::make_shared<TAsyncJob>();
    try {
      std::thread([surface, job, path] { store(*surface, path); }).detach();
    } catch (const std::exception& error) {
      logman::WriteLog(kLogError, 0, "Picture of the screen could not be written: %s", error.what());
    }
  });
}

}  // namespace vendelo_sdl2
