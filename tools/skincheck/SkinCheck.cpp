#include "SkinCheck.h"

#include <SDL_image.h>
#include <SDL_ttf.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <tuple>

#include "AtlasCheck.h"
#include "FolderFiles.h"
#include "FontCheck.h"
#include "GameCheck.h"
#include "Inventory.h"
#include "PictureCheck.h"

namespace fs = std::filesystem;

namespace {

constexpr const char* kSkinFolder = "VESPERA/TOP_SKIN/";
constexpr const char* kPages = "paytable";  // in the folder Icons of a game
constexpr int64_t kMegabyte = 1000000;
// The waiting screen's line, and the two lines of the frame rate with figures as long as they get.
constexpr const char* kWaiting = "Waiting for KSL connection...";
constexpr const char* kFrameRate = "Loop freq.: FPS: 0123456789.()";

bool isFolder(const std::string& path) {
  std::error_code code;
  return fs::is_directory(path, code);
}

bool isFile(const std::string& path) {
  std::error_code code;
  return fs::is_regular_file(path, code);
}

std::string withSlash(const std::string& folder) {
  std::string path = fs::path(folder).lexically_normal().string();
  if (path.empty() || path.back() != '/') path += '/';
  return path;
}

// The folder that WORKING_DIR names, of which `folder` may be a part.
void checkMeant(const std::string& folder, const std::string& root) {
  if (!isFolder(folder)) throw WrongFolder("there is no folder \"" + folder + "\"");
  if (isFolder(root + kSkinFolder)) return;
  if (isFolder(root + "TOP_SKIN"))
    throw WrongFolder("\"" + folder + "\" is the folder VESPERA of a skin: give the one that holds it, \"" +
                      withSlash(root + "..") + "\"");
  if (isFolder(root + "Fonts") || isFile(root + "Background.png"))
    throw WrongFolder("\"" + folder + "\" is the folder VESPERA/TOP_SKIN of a skin: give the one that holds " +
                      "VESPERA, as WORKING_DIR names it, \"" + withSlash(root + "../..") + "\"");
  const std::string like = otherCapitals(root, "VESPERA/TOP_SKIN");
  throw WrongFolder("there is no folder VESPERA/TOP_SKIN in \"" + folder + "\"" +
                    (like.empty() ? "" : ", but \"" + like + "\", which has other capitals"));
}

std::string nameOnDisk(const SkinFile& file) {
  switch (file.kind) {
    case SkinFileKind::BitmapFont:
      return file.name + ".fnt";
    case SkinFileKind::Animation:
      return file.name + ".xml";
    default:
      return file.name;
  }
}

void checkFile(const SkinFile& file, const std::string& skin, Findings& findings) {
  const std::string name = nameOnDisk(file);
  const std::string path = fs::path(skin + name).lexically_normal().string();
  if (file.kind == SkinFileKind::Picture) {
    checkPicture(file, skin, Severity::Error, findings);
    return;
  }
  if (!isFile(path)) {
    findings.error("missing", path, "the file " + missingText(skin, name) + " (" + file.shows + ")");
    return;
  }
  if (file.kind == SkinFileKind::BitmapFont)
    checkFont(path, file.name, findings);
  else if (file.kind == SkinFileKind::Animation)
    checkAtlas(path, file.width, file.height, findings);
  else if (file.scene == Scene::Loader)
    checkOutlines(path, kWaiting, file.places.front().w, findings);
  else
    checkOutlines(path, kFrameRate, 0, findings);
}

std::string megabytes(int64_t bytes) {
  char text[32];
  std::snprintf(text, sizeof text, "%.1f", static_cast<double>(bytes) / kMegabyte);
  return text;
}

// Moves what one part gathered to the report.
void close(CheckReport& report, Findings& findings, CheckedPart part, int budget, int fileBudget) {
  part.budget = budget * kMegabyte;
  part.files = std::move(findings.decoded);
  for (const DecodedFile& file : part.files)
    if (file.bytes > fileBudget * kMegabyte)
      findings.warn("budget", file.file,
                    "the picture of " + std::to_string(file.width) + " x " + std::to_string(file.height) +
                      " takes " + megabytes(file.bytes) + " MB when decoded, above " + std::to_string(fileBudget));
  if (part.bytes > part.budget)
    findings.warn(
      "budget", part.folder,
      "all pictures together take " + megabytes(part.bytes) + " MB when decoded, above " + std::to_string(budget));
  std::stable_sort(part.files.begin(), part.files.end(),
                   [](const DecodedFile& a, const DecodedFile& b) { return a.bytes > b.bytes; });
  report.findings.insert(report.findings.end(), findings.list.begin(), findings.list.end());
  report.parts.push_back(std::move(part));
}

void checkGames(const CheckOptions& options, CheckReport& report) {
  const std::string games = withSlash(options.games);
  if (!isFolder(games)) throw WrongFolder("there is no folder \"" + options.games + "\"");
  if (isFolder(games + "Icons") && !isFolder(games + "Icons/Icons"))
    throw WrongFolder("\"" + options.games + "\" is the folder of one game: give the one that holds the games, \"" +
                      withSlash(games + "..") + "\"");
  if (isFolder(games + kPages) && !isFolder(games + kPages + "/Icons"))
    throw WrongFolder("\"" + options.games +
                      "\" is the folder Icons of a game: give the one that holds the games, \"" +
                      withSlash(games + "../..") + "\"");
  Findings general;
  const std::vector<std::string> names = foldersIn(games, general);
  if (isFolder(games + "Games") && !isFolder(games + "Games/Icons"))
    throw WrongFolder("\"" + options.games + "\" holds the folder of the games: give \"" + games + "Games\"");
  if (names.empty() && general.list.empty())
    general.error("game-folder", games, "there is no game in the folder: each one is a folder in it");
  for (const std::string& name : names) {
    if (!isFolder(games + name + "/Icons")) {
      general.warn("game-folder", games + name,
                   "the folder Icons " + missingText(games + name + "/", "Icons") +
                     ": the program shows nothing of this game");
      continue;
    }
    if (name.find("..") != std::string::npos)
      general.error("game-folder", games + name, "the program takes no game with two dots in its name");
    Findings findings;
    CheckedPart part;
    part.name = name;
    part.folder = games + name + "/Icons/";
    checkGame(part.folder, findings, part.bytes);
    close(report, findings, std::move(part), options.gameBudget, options.fileBudget);
  }
  report.findings.insert(report.findings.end(), general.list.begin(), general.list.end());
}

}  // namespace

int CheckReport::count(Severity severity) const {
  return static_cast<int>(std::count_if(findings.begin(), findings.end(),
                                        [severity](const Finding& f) { return f.severity == severity; }));
}

CheckReport checkSkin(const CheckOptions& options) {
  const std::string root = withSlash(options.folder);
  checkMeant(options.folder, root);
  CheckReport report;
  Findings findings;
  CheckedPart part;
  part.name = "skin";
  part.folder = root + kSkinFolder;
  for (const SkinFile& file : skinFiles()) checkFile(file, part.folder, findings);
  std::vector<std::string> welcome;
  for (const SkinFile& file : skinFiles()) welcome.push_back(part.folder + nameOnDisk(file));
  reportUnused(part.folder, welcome, findings);
  for (const DecodedFile& file : findings.decoded) part.bytes += file.bytes;
  close(report, findings, std::move(part), options.skinBudget, options.fileBudget);
  if (!options.games.empty()) checkGames(options, report);

  std::stable_sort(report.findings.begin(), report.findings.end(), [](const Finding& a, const Finding& b) {
    return std::tie(a.file, a.line, a.column) < std::tie(b.file, b.line, b.column);
  });
  if (TTF_WasInit()) TTF_Quit();
  IMG_Quit();
  return report;
}
