// Draws the demo skin: skinmaker ROOT makes ROOT/VESPERA/TOP_SKIN/ and the fonts that the program opens.
#include <cstdio>
#include <exception>
#include <filesystem>
#include <stdexcept>

#include "Canvas.h"
#include "Family.h"

std::string Output::path(const std::string& name) const {
  const std::string full = mRoot + name;
  std::filesystem::create_directories(std::filesystem::path(full).parent_path());
  return full;
}

std::string Output::skinPath(const std::string& name) const { return path("VESPERA/TOP_SKIN/" + name); }

void Output::image(const std::string& name, const Canvas& canvas) const { canvas.save(skinPath(name)); }

void Output::copy(const std::string& from, const std::string& name) const {
  std::filesystem::copy_file(from, path(name), std::filesystem::copy_options::overwrite_existing);
}

// A new family of pictures is one source file, one declaration in Family.h and one row here.
static constexpr Family kFamilies[] = {
  {"fonts", drawFonts},           {"backgrounds", drawBackgrounds}, {"titles", drawTitles},
  {"frames", drawFrames},         {"info bar", drawInfoBar},        {"loader", drawLoader},
  {"animations", drawAnimations}, {"buttons", drawButtons},         {"games", drawGames},
};

int main(int argc, char** argv) {
  if (argc < 2 || argc > 3) {
    std::fprintf(stderr, "usage: skinmaker ROOT [FAMILY]\n");
    return 2;
  }
  std::string root = argv[1];
  if (root.back() != '/') root += '/';
  const Output output(root);
  const std::string only = argc == 3 ? argv[2] : "";
  try {
    int drawn = 0;
    for (const Family& family : kFamilies)
      if (only.empty() || only == family.name) {
        family.draw(output);
        ++drawn;
      }
    if (drawn == 0) throw std::runtime_error("no family of pictures is named " + only);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "skinmaker: %s\n", error.what());
    return 1;
  }
  return 0;
}
