#include "GameCheck.h"

#include <algorithm>
#include <filesystem>
#include <map>

#include "AtlasCheck.h"
#include "FolderFiles.h"
#include "FontCheck.h"
#include "Inventory.h"
#include "PictureCheck.h"

namespace fs = std::filesystem;

namespace {

constexpr const char* kPages = "paytable";
constexpr int kScreenWidth = 1920, kScreenHeight = 1080;
// What the bets in the corners are written with, whatever the language calls them.
constexpr const char* kBets = "0123456789.,: ";

bool isThere(const std::string& path) {
  std::error_code code;
  return fs::exists(path, code);
}

// The picture of this name, ".png" before ".jpg", or empty: pages and their ground know no other extensions.
std::string findPage(const std::string& folder, const std::string& name) {
  for (const char* extension : {".png", ".jpg"})
    if (isThere(folder + name + extension)) return folder + name + extension;
  return {};
}

void welcomePage(const std::string& folder, const std::string& name, std::vector<std::string>& welcome) {
  for (const char* extension : {".png", ".jpg"}) welcome.push_back(folder + name + extension);
}

std::string listed(const std::vector<std::string>& names) {
  std::string text;
  for (const std::string& name : names) text += (text.empty() ? "" : ", ") + name;
  return text;
}

std::vector<std::string> without(std::vector<std::string> names, const std::vector<std::string>& others) {
  std::erase_if(names, [&others](const std::string& name) {
    return std::find(others.begin(), others.end(), name) != others.end();
  });
  return names;
}

void checkBackground(const SkinFile& file, const std::string& icons, std::vector<std::string>& welcome,
                     Findings& findings) {
  const std::string stem = fs::path(file.name).stem().string();
  welcomePage(icons, stem, welcome);
  const std::string path = findPage(icons, stem);
  if (path.empty())
    findings.warn("missing", icons + file.name,
                  "the file " + missingText(icons, file.name) + " (" + file.shows + ")");
  else
    checkPictureAt(path, file.fit, file.width, file.height, findings);
}

int64_t decodedFrom(size_t first, const Findings& findings) {
  int64_t bytes = 0;
  for (size_t i = first; i < findings.decoded.size(); ++i) bytes += findings.decoded[i].bytes;
  return bytes;
}

// What they take in memory. Of those among the levels only one is there at a time: the overlay, or the picture for
// a screen without levels.
int64_t checkFiles(const std::string& icons, std::vector<std::string>& welcome, Findings& findings) {
  int64_t together = 0, largest = 0;
  for (const SkinFile& file : gameFiles()) {
    const size_t before = findings.decoded.size();
    const std::string animation = file.name + ".xml";
    welcome.push_back(icons + (file.kind == SkinFileKind::Animation ? animation : file.name));
    if (file.kind == SkinFileKind::Animation && isThere(icons + animation))
      checkAtlas(icons + animation, file.width, file.height, findings);
    else if (file.kind == SkinFileKind::Animation)
      findings.warn("missing", icons + animation,
                    "the file " + missingText(icons, animation) + " (" + file.shows + ")");
    else if (file.scene == Scene::Paytable)
      checkBackground(file, icons, welcome, findings);
    else
      checkPicture(file, icons, Severity::Warning, findings);
    const int64_t bytes = decodedFrom(before, findings);
    if (file.scene == Scene::Jackpots)
      largest = std::max(largest, bytes);
    else
      together += bytes;
  }
  return together + largest;
}

// The pages in one folder, which must have all that the folder for every language has: they are shown by number.
std::vector<std::string> checkPages(const std::string& folder, std::vector<std::string>& welcome,
                                    Findings& findings) {
  std::vector<std::string> there;
  for (const std::string& name : pageNames()) {
    welcomePage(folder, name, welcome);
    const std::string path = findPage(folder, name);
    if (path.empty()) continue;
    there.push_back(name);
    checkPictureAt(path, Fit::OwnSize, kScreenWidth, kScreenHeight, findings);
  }
  if (there.empty())
    findings.error("pages", folder,
                   "there is no page in the folder, such as " + pageNames().front() +
                     ".png: the screen stays empty while the paytable is open");
  return there;
}

void checkAllPages(const std::string& icons, std::vector<std::string>& welcome, Findings& findings) {
  std::map<std::string, std::vector<std::string>> pages;
  for (const std::string& name : foldersIn(icons, findings))
    if (name == kPages || name.rfind(std::string(kPages) + "_", 0) == 0)
      pages[name] = checkPages(icons + name + "/", welcome, findings);
  const auto all = pages.find(kPages);
  if (all == pages.end()) {
    findings.warn(
      "pages", icons + kPages,
      "the folder " + missingText(icons, kPages) + ": languages without a folder of their own have no pages");
    return;
  }
  for (const auto& [name, there] : pages) {
    const std::vector<std::string> lacking = without(all->second, there), added = without(there, all->second);
    if (there.empty() || (lacking.empty() && added.empty())) continue;
    findings.warn("pages", icons + name + "/",
                  "the pages are not those of the folder paytable, so that they have other numbers: " +
                    (lacking.empty() ? "" : "without " + listed(lacking)) +
                    (lacking.empty() || added.empty() ? "" : ", ") +
                    (added.empty() ? "" : "with " + listed(added)));
  }
}

// Which of them are shown the platform says, by their names without extension.
void checkFonts(const std::string& icons, Findings& findings) {
  Findings unheard;  // what cannot be listed is told with the files that nothing asks for
  std::vector<std::string> outlines, bitmaps;
  for (const std::string& path : filesBelow(icons, unheard)) {
    const std::string extension = fs::path(path).extension().string();
    if (extension == ".fnt") bitmaps.push_back(path);
    if (extension == ".ttf" || extension == ".otf") outlines.push_back(path);
  }
  for (const std::string& path : bitmaps) checkFont(path, "", findings);
  for (const std::string& path : outlines) {
    const std::string stem = path.substr(0, path.size() - 4);
    if (path.substr(path.size() - 4) == ".otf" && isThere(stem + ".ttf")) continue;
    checkOutlines(path, kBets, 0, findings);
    if (!isThere(stem + ".fnt"))
      findings.warn("prize-font", path,
                    "there is no \"" + fs::path(stem).filename().string() +
                      ".fnt\" beside it: the platform names both fonts with one name, and the amounts would show "
                      "nothing");
  }
  if (!bitmaps.empty() && outlines.empty())
    findings.warn("prize-font", bitmaps.front(),
                  "there is no .ttf or .otf of this name beside it: the bets in the corners would show nothing");
}

// Of what was decoded from `first` on: all outside the folders of the languages, and the largest of these.
int64_t bytesOfOneLanguage(const std::string& icons, size_t first, const Findings& findings) {
  std::map<std::string, int64_t> languages;
  int64_t common = 0, largest = 0;
  for (size_t i = first; i < findings.decoded.size(); ++i) {
    const DecodedFile& file = findings.decoded[i];
    const std::string name = file.file.substr(std::min(icons.size(), file.file.size()));
    const size_t slash = name.find('/');
    if (slash == std::string::npos || name.rfind(kPages, 0) != 0)
      common += file.bytes;
    else
      largest = std::max(largest, languages[name.substr(0, slash)] += file.bytes);
  }
  return common + largest;
}

}  // namespace

const std::vector<std::string>& pageNames() {
  static const auto& names =
    *new std::vector<std::string>{"InfoPage_Paytable",   "InfoPage_Paytable_Bonus", "InfoPage_ExpandFeature",
                                  "InfoPage_Features",   "InfoPages_BonusFeature",  "InfoPage_Features2",
                                  "InfoPages_Features2", "InfoPages_BonusFeature2", "InfoPage_Rules"};
  return names;
}

void checkGame(const std::string& icons, Findings& findings, int64_t& bytes) {
  std::vector<std::string> welcome;
  bytes = checkFiles(icons, welcome, findings);
  const size_t others = findings.decoded.size();
  checkAllPages(icons, welcome, findings);
  checkFonts(icons, findings);
  reportUnused(icons, welcome, findings);
  bytes += bytesOfOneLanguage(icons, others, findings);
}
