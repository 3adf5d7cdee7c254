#include "PictureFile.h"

#include <SDL_image.h>

#include <algorithm>
#include <filesystem>

#include "vendelo-sdl2/PictureHeader.h"

namespace {

/// In the order in which the program tries them.
constexpr const char* kExtensions[] = {".png", ".jpg", ".jpeg", ".webp", ".tiff", ".gif", ".exif", ".bmp"};

bool isFile(const std::string& path) {
  std::error_code code;
  return std::filesystem::is_regular_file(path, code);
}

/// Whether `path` could be read; then `picture` is filled.
bool readInto(PictureFile& picture, const std::string& path, bool pixels, Findings& findings) {
  if (!isFile(path)) return false;
  const auto known = std::find_if(findings.decoded.begin(), findings.decoded.end(),
                                  [&path](const DecodedFile& file) { return file.file == path; });
  if (known != findings.decoded.end() && !pixels) {
    picture.file = path;
    picture.width = known->width;
    picture.height = known->height;
    return true;
  }
  if (std::find(findings.used.begin(), findings.used.end(), path) == findings.used.end())
    findings.used.push_back(path);
  picture.surface = decodePicture(path);
  if (!picture.surface) return false;
  picture.file = path;
  picture.width = picture.surface->w;
  picture.height = picture.surface->h;
  if (known == findings.decoded.end())
    findings.decoded.push_back({path, picture.width, picture.height, int64_t{picture.width} * picture.height * 4});
  return true;
}

std::string small(std::string text) {
  for (char& c : text)
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  return text;
}

std::string similarName(const std::string& path) {
  namespace fs = std::filesystem;
  const fs::path wanted(path);
  std::error_code code;
  const fs::path folder = wanted.has_parent_path() ? wanted.parent_path() : ".";
  for (fs::directory_iterator entry(folder, code), end; !code && entry != end; entry.increment(code))
    if (small(entry->path().filename().string()) == small(wanted.filename().string()))
      return entry->path().filename().string();
  return {};
}

}  // namespace

std::shared_ptr<SDL_Surface> decodePicture(const std::string& path) {
  std::shared_ptr<SDL_Surface> surface(MyUtils::PromisesTooManyPixels(path) ? nullptr : IMG_Load(path.c_str()),
                                       SDL_FreeSurface);
  if (MyUtils::IsTooLong(surface.get())) surface.reset();
  return surface;
}

PictureFile readPicture(const std::string& path, bool pixels, Findings& findings) {
  PictureFile picture;
  picture.file = path;
  picture.there = isFile(path);
  if (readInto(picture, path, pixels, findings)) return picture;
  // The last dot of the whole path, as the program cuts it.
  const std::string stem = path.substr(0, path.rfind('.'));
  for (const char* extension : kExtensions)
    if (stem + extension != path && readInto(picture, stem + extension, pixels, findings)) {
      picture.byFallback = true;
      return picture;
    }
  picture.surface.reset();
  if (!picture.there) picture.similar = similarName(path);
  return picture;
}

std::string whyNot(const PictureFile& picture) {
  if (picture.there) return " cannot be read";
  if (picture.similar.empty()) return " is missing";
  return " is missing (\"" + picture.similar + "\" has other capitals)";
}
