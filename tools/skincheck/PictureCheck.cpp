#include "PictureCheck.h"

#include <SDL_ttf.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <memory>

#include "FolderFiles.h"
#include "PictureFile.h"
#include "TextFit.h"

namespace {

// The only one that is copied to the screen without being blended.
constexpr const char* kOpaque = "Background.png";
// Drawn as squares of their own height.
constexpr std::array kSquares = {"dot.png", "dot_shadow.png"};
// Of the sides' ratio, before a stretched picture looks wrong.
constexpr double kSkewed = 0.02;
constexpr int kPoints = 34;

std::string sizeText(int width, int height) { return std::to_string(width) + " x " + std::to_string(height); }

void checkSize(const std::string& path, Fit fit, int width, int height, int w, int h, Findings& findings) {
  const std::string is = "the picture is " + sizeText(w, h);
  switch (fit) {
    case Fit::Exact:
      if (w != width || h != height)
        findings.error("size", path, is + ", the place needs " + sizeText(width, height));
      break;
    case Fit::Stretched:
      if (w > width || h > height) {
        findings.error("size", path, is + " and larger than its place of " + sizeText(width, height));
      } else {
        const double skew = double(w) * height / (double(h) * width);
        if (skew < 1 - kSkewed || skew > 1 + kSkewed)
          findings.warn("size", path,
                        is + " and is drawn out of shape when it is stretched to " + sizeText(width, height));
      }
      break;
    case Fit::OwnSize:
      if (w > width || h > height)
        findings.warn("size", path, is + ", there is room for " + sizeText(width, height));
      break;
  }
}

bool isOpaque(SDL_Surface* surface) {
  const std::unique_ptr<SDL_Surface, decltype(&SDL_FreeSurface)> plain(
    SDL_ConvertSurfaceFormat(surface, SDL_PIXELFORMAT_RGBA32, 0), SDL_FreeSurface);
  if (!plain) return true;
  for (int y = 0; y < plain->h; ++y) {
    const auto* line = static_cast<const Uint8*>(plain->pixels) + static_cast<ptrdiff_t>(y) * plain->pitch;
    for (int x = 0; x < plain->w; ++x)
      if (line[4 * x + 3] != 255) return false;
  }
  return true;
}

}  // namespace

void checkPicture(const SkinFile& file, const std::string& folder, Severity missing, Findings& findings) {
  const std::string path = folder + file.name;
  const bool opaque = file.name == kOpaque;
  const PictureFile picture = readPicture(path, opaque, findings);
  if (picture.width == 0) {
    if (picture.there)
      findings.error("unreadable", path, "the file cannot be read as a picture (" + file.shows + ")");
    else
      findings.list.push_back(
        {missing, "missing", path, 0, 0, "the file " + missingText(folder, file.name) + " (" + file.shows + ")"});
    return;
  }
  if (picture.byFallback)
    findings.warn("fallback", path,
                  std::string("the file ") + (picture.there ? "cannot be read" : missingText(folder, file.name)) +
                    ", the program takes \"" + std::filesystem::path(picture.file).filename().string() + "\"");
  checkSize(picture.file, file.fit, file.width, file.height, picture.width, picture.height, findings);
  if (std::find(kSquares.begin(), kSquares.end(), file.name) != kSquares.end() && picture.width != picture.height)
    findings.error("size", picture.file,
                   "the picture is " + sizeText(picture.width, picture.height) + " and is drawn as a square");
  if (opaque && picture.surface && !isOpaque(picture.surface.get()))
    findings.error("opaque", picture.file, "the picture has transparent pixels, which the program does not blend");
}

void checkPictureAt(const std::string& path, Fit fit, int width, int height, Findings& findings) {
  findings.used.push_back(path);
  const std::shared_ptr<SDL_Surface> surface = decodePicture(path);
  if (!surface) {
    findings.error("unreadable", path, "the file cannot be read as a picture");
    return;
  }
  findings.decoded.push_back({path, surface->w, surface->h, int64_t{surface->w} * surface->h * 4});
  checkFormat(path, findings);
  checkSize(path, fit, width, height, surface->w, surface->h, findings);
}

void checkOutlines(const std::string& path, const std::string& text, int width, Findings& findings) {
  findings.used.push_back(path);
  if (!TTF_WasInit()) TTF_Init();
  const std::unique_ptr<TTF_Font, decltype(&TTF_CloseFont)> font(TTF_OpenFont(path.c_str(), kPoints),
                                                                 TTF_CloseFont);
  if (!font) {
    findings.error("unreadable", path, "the file cannot be read as a font");
    return;
  }
  std::string missing;
  for (const int code : codePoints(text))
    if (!TTF_GlyphIsProvided32(font.get(), static_cast<Uint32>(code)))
      missing += (missing.empty() ? "" : ", ") + characterName(code);
  if (!missing.empty())
    findings.error("font-character", path, "characters are missing, " + missing + ": they show as boxes");
  int w = 0;
  if (width > 0 && TTF_SizeUTF8(font.get(), text.c_str(), &w, nullptr) == 0 && w > width)
    findings.error(
      "text-fit", path,
      "\"" + text + "\" is " + std::to_string(w) + " pixels wide, there is room for " + std::to_string(width));
}
