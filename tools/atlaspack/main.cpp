// atlaspack DIR -o NAME: the PNG files of a folder become the frames of an animation.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <stdexcept>

#include "AtlasPack.h"

namespace fs = std::filesystem;

namespace {
// The frames in playing order: by name, where numbers in the names count as numbers.
std::vector<fs::path> framesOf(const std::string& folder) {
  std::vector<fs::path> files;
  std::error_code code;
  const fs::directory_iterator entries(folder, code);
  if (code) throw std::runtime_error("the folder \"" + folder + "\" cannot be read: " + code.message());
  for (const auto& entry : entries) {
    std::string extension = entry.path().extension().string();
    for (char& c : extension) c = static_cast<char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
    if (entry.is_regular_file() && extension == ".png") files.push_back(entry.path());
  }
  if (files.empty()) throw std::runtime_error("there is no PNG file in the folder \"" + folder + "\"");
  const auto key = [](const fs::path& path) {
    // Digits are led by their count, so that a longer number comes later.
    std::string out;
    const std::string name = path.filename().string();
    const auto digit = [](char c) { return c >= '0' && c <= '9'; };
    for (size_t i = 0; i < name.size();) {
      if (!digit(name[i])) {
        out += name[i++];
        continue;
      }
      while (i + 1 < name.size() && name[i] == '0' && digit(name[i + 1])) ++i;
      size_t end = i;
      while (end < name.size() && digit(name[end])) ++end;
      out += static_cast<char>('0' + std::min<size_t>(end - i, 60));
      out.append(name, i, end - i);
      i = end;
    }
    return std::pair(out, name);
  };
  std::sort(files.begin(), files.end(), [&key](const fs::path& a, const fs::path& b) { return key(a) < key(b); });
  return files;
}

// The atlas would be a frame of the next run, or take the place of one.
void refuseAmongFrames(const std::string& folder, const std::string& name) {
  const fs::path parent = fs::path(name).parent_path();
  std::error_code code;
  if (fs::equivalent(parent.empty() ? "." : parent, folder, code))
    throw std::runtime_error(name + " would lie among the frames: name another folder for the atlas");
}
}  // namespace

int main(int argc, char** argv) {
  CLI::App app{"Packs the PNG files of a folder into an atlas of trimmed frames with its XML description."};
  std::string folder, name, blend = "BLEND";
  int maxSize = 8192;
  app.add_option("DIR", folder, "folder with one PNG for each frame, played in the order of their names")
    ->required();
  app.add_option("-o,--output", name, "path without extension; NAME.png and NAME.xml are written")->required();
  app.add_option("--blend", blend, "how the frames are drawn")
    ->capture_default_str()
    ->check(CLI::IsMember({"BLEND", "ADD", "MOD", "NONE"}));
  app.add_option("--max", maxSize, "longest side of the atlas in pixels")
    ->capture_default_str()
    ->check(CLI::Range(16, 16384));
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : 2;
  }
  try {
    AtlasPack atlas(blend, maxSize);
    const std::vector<fs::path> frames = framesOf(folder);
    refuseAmongFrames(folder, name);
    for (const fs::path& file : frames) atlas.add(file.stem().string(), Canvas(file.string()));
    const AtlasReport report = atlas.save(name);
    std::printf("%d frames, %d pictures, %d by %d pixels, %lld KB decoded, %.1f %% waste\n", report.frames,
                report.distinct, report.width, report.height, static_cast<long long>(report.pixels() * 4 / 1000),
                100 * report.waste());
  } catch (const std::exception& error) {
    std::fprintf(stderr, "atlaspack: %s\n", error.what());
    return 1;
  }
  return 0;
}
