#include "PictureFile.h"

#include <SDL_image.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <iterator>
#include <string_view>

#include "vendelo-sdl2/PictureHeader.h"

namespace {

// In the order in which the program tries them.
constexpr const char* kExtensions[] = {".png", ".jpg", ".jpeg", ".webp", ".tiff", ".gif", ".exif", ".bmp"};

struct Format {
  const char* name;
  int (*holds)(SDL_RWops*);
  std::array<std::string_view, 2> extensions;
};

// By what a file holds the program reads it, whatever its name says.
const Format kFormats[] = {{"PNG", IMG_isPNG, {".png"}},    {"JPEG", IMG_isJPG, {".jpg", ".jpeg"}},
                           {"WebP", IMG_isWEBP, {".webp"}}, {"TIFF", IMG_isTIF, {".tiff", ".tif"}},
                           {"GIF", IMG_isGIF, {".gif"}},    {"BMP", IMG_isBMP, {".bmp"}}};

std::string small(std::string text) {
  for (char& c : text)
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  return text;
}

bool isFile(const std::string& path) {
  std::error_code code;
  return std::filesystem::is_regular_file(path, code);
}

// Whether `path` could be read; then `picture` is filled.
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
  if (known == findings.decoded.end()) checkFormat(path, findings);
  picture.file = path;
  picture.width = picture.surface->w;
  picture.height = picture.surface->h;
  if (known == findings.decoded.end())
    findings.decoded.push_back({path, picture.width, picture.height, int64_t{picture.width} * picture.height * 4});
  return true;
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

void checkFormat(const std::string& path, Findings& findings) {
  const std::string extension = small(std::filesystem::path(path).extension().string());
  const auto promised = std::find_if(std::begin(kFormats), std::end(kFormats), [&extension](const Format& format) {
    return std::find(format.extensions.begin(), format.extensions.end(), extension) != format.extensions.end();
  });
  if (extension.empty() || promised == std::end(kFormats)) return;
  const std::unique_ptr<SDL_RWops, decltype(&SDL_RWclose)> file(SDL_RWFromFile(path.c_str(), "rb"), SDL_RWclose);
  if (!file || promised->holds(file.get())) return;
  for (const Format& format : kFormats)
    if (format.holds(file.get())) {
      const bool clear = promised->holds == IMG_isPNG && format.holds == IMG_isJPG;
      findings.warn("format", path,
                    std::string("the file is a ") + format.name + ", its ending says " + promised->name +
                      (clear ? ": the transparency is lost" : ""));
      return;
    }
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
