// The designers' page tells of each file what the program asks for, and names only what is there.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <set>
#include <sstream>

#include "tools/skincheck/Inventory.h"
#include "tools/skincheck/PlaceLabels.h"

namespace fs = std::filesystem;

namespace {

const std::string kDocs = SOURCE_DIR "/docs/";

std::string read(const std::string& path) {
  std::ifstream file(path);
  EXPECT_TRUE(file) << path;
  return {std::istreambuf_iterator<char>(file), {}};
}

const std::string& page() {
  static const std::string& text = *new std::string(read(kDocs + "SKINS.md"));
  return text;
}

std::vector<SkinFile> allFiles() {
  std::vector<SkinFile> files = skinFiles();
  files.insert(files.end(), gameFiles().begin(), gameFiles().end());
  return files;
}

std::string size(int w, int h) { return std::to_string(w) + " x " + std::to_string(h); }

std::string sizeOf(const SkinFile& file) {
  if (file.kind == SkinFileKind::TrueTypeFont) return "34 points";
  if (file.kind == SkinFileKind::BitmapFont && file.width == 0)
    return "room " + std::to_string(file.height) + " high";
  if (file.kind == SkinFileKind::BitmapFont) return "room " + size(file.width, file.height);
  const std::string text = size(file.width, file.height);
  if (file.fit == Fit::Stretched) return text + ", stretched";
  return (file.fit == Fit::OwnSize ? "up to " : "") + text;
}

// Corners of the places; before those of another size than the file's stands that size.
std::string placesOf(const SkinFile& file) {
  if (file.places.empty()) return "-";
  std::string text;
  int w = file.width, h = file.height;
  for (const Area& place : file.places) {
    if (!text.empty()) text += place.w == w && place.h == h ? ", " : "; ";
    if (place.w != w || place.h != h) text += size(place.w, place.h) + " at ";
    text += "(" + std::to_string(place.x) + ", " + std::to_string(place.y) + ")";
    w = place.w;
    h = place.h;
  }
  return text;
}

std::string rowOf(size_t number, const SkinFile& file) {
  return "| " + std::to_string(number) + " | `" + file.name + "` | " + sizeOf(file) + " | " + placesOf(file) +
         " | ";
}

// The rows of the page's tables that begin with a number.
std::map<size_t, std::vector<std::string>> rows() {
  std::map<size_t, std::vector<std::string>> found;
  std::istringstream lines(page());
  for (std::string line; std::getline(lines, line);)
    if (line.rfind("| ", 0) == 0 && std::isdigit(static_cast<unsigned char>(line[2])))
      found[std::stoul(line.substr(2))].push_back(line);
  return found;
}

std::set<std::string> matches(const std::string& text, const std::string& pattern) {
  const std::regex regex(pattern);
  std::set<std::string> found;
  for (std::sregex_iterator it(text.begin(), text.end(), regex), end; it != end; ++it) found.insert((*it)[1]);
  return found;
}

}  // namespace

TEST(SkinsPage, EveryFileHasItsRow) {
  const auto found = rows();
  size_t number = 0;
  for (const SkinFile& file : allFiles()) {
    const std::string row = rowOf(++number, file);
    const auto at = found.find(number);
    if (at == found.end()) {
      ADD_FAILURE() << "no row for\n" << row << file.shows << " |";
      continue;
    }
    EXPECT_EQ(1U, at->second.size()) << row << "stands twice";
    EXPECT_EQ(row, at->second.front().substr(0, row.size()));
    EXPECT_GT(at->second.front().size(), row.size() + 10) << "nothing is said of " << file.name;
  }
}

TEST(SkinsPage, EveryRowHasItsFile) {
  const size_t files = allFiles().size();
  for (const auto& [number, lines] : rows()) {
    EXPECT_GE(number, 1U) << lines.front();
    EXPECT_LE(number, files) << lines.front();
  }
}

TEST(SkinsPage, EveryPictureIsThereAndSmall) {
  const auto pictures = matches(page(), "\\]\\((images/[^)]*)\\)");
  for (const std::string& picture : pictures) {
    ASSERT_TRUE(fs::exists(kDocs + picture)) << picture;
    EXPECT_LT(fs::file_size(kDocs + picture), 150U * 1024) << picture;
  }
  for (const View& view : views())
    EXPECT_EQ(1U, pictures.count(std::string("images/places-") + view.name + ".jpg")) << view.name;
}

TEST(SkinsPage, StationsAreThoseOfTheDemo) {
  const std::string tour = read(SOURCE_DIR "/tools/tour/evening.json");
  std::set<std::string> stations = matches(tour, "\"do\": \"station\", \"name\": \"([a-z-]+)\"");
  ASSERT_GT(stations.size(), 25U);
  stations.insert("loader");
  std::set<std::string> named = matches(page(), "--until ([a-z-]+)");
  EXPECT_GE(named.size(), 4U);
  const size_t begin = page().find("## I want to change"), end = page().find("## How do I");
  ASSERT_LT(begin, end);
  // The last cell of a row holds the stations.
  for (const std::string& cell : matches(page().substr(begin, end - begin), "\\| ([^|\n]*) \\|\n"))
    named.merge(matches(cell, "`([a-z-]+)`"));
  EXPECT_GE(named.size(), 15U);
  for (const std::string& name : named) EXPECT_EQ(1U, stations.count(name)) << name;
  for (const View& view : views()) EXPECT_EQ(1U, stations.count(view.screenshot)) << view.name;
}

// In the table that begins with "| Code |": the words of the first column.
TEST(SkinsPage, ExplainsEveryCodeOfTheCheckAndNoOther) {
  std::set<std::string> codes;
  for (const auto& entry : fs::directory_iterator(SOURCE_DIR "/tools/skincheck")) {
    if (entry.path().extension() != ".cpp") continue;
    const std::string text = read(entry.path());
    // Told, given to a reader that tells it, or told with a severity that depends.
    codes.merge(matches(text, "(?:error|warn)\\(\\s*\"([a-z-]+)\""));
    codes.merge(matches(text, "[,(] *\"([a-z]+-[a-z]+)\""));
    codes.merge(matches(text, "push_back\\(\\{[a-zA-Z:]+, \"([a-z-]+)\""));
  }
  EXPECT_GE(codes.size(), 30U);
  const size_t begin = page().find("| Code |");
  ASSERT_NE(std::string::npos, begin);
  std::istringstream table(page().substr(begin, page().find("\n\n", begin) - begin));
  std::set<std::string> explained;
  for (std::string row; std::getline(table, row);)
    explained.merge(matches(row.substr(0, row.find('|', 1)), "`([a-z-]+)`"));
  EXPECT_EQ(codes, explained);
}
