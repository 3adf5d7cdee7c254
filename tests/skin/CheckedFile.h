#pragma once

#include <SDL_image.h>
#include <gtest/gtest.h>

#include <fstream>
#include <functional>
#include <string>

#include "ToolRun.h"
#include "tools/skincheck/Findings.h"

// One finding as a test expects it.
struct Expected {
  Severity severity;
  const char* code;
  int line, column;
};

// A description that is good at first, spoilt by a piece of text in the place of another.
struct SpoiltFile {
  const char* name;
  std::string from, to;
  Expected expected;
};

inline std::string replaced(std::string text, const std::string& from, const std::string& to) {
  const size_t at = text.find(from);
  EXPECT_NE(std::string::npos, at) << from;
  return at == std::string::npos ? text : text.replace(at, from.size(), to);
}

inline void writeText(const std::string& path, const std::string& text) {
  std::ofstream(path, std::ios::binary) << text;
}

// A picture that `paint` fills; it is clear at first.
inline void writePicture(const std::string& path, int width, int height,
                         const std::function<void(SDL_Surface*)>& paint) {
  SDL_Surface* picture = SDL_CreateRGBSurfaceWithFormat(0, width, height, 32, SDL_PIXELFORMAT_RGBA32);
  ASSERT_NE(nullptr, picture);
  paint(picture);
  ASSERT_EQ(0, IMG_SavePNG(picture, path.c_str()));
  SDL_FreeSurface(picture);
}

inline void paintAll(SDL_Surface* picture) { SDL_FillRect(picture, nullptr, 0xffffffff); }

inline std::string describe(const Findings& findings) {
  std::string out;
  for (const Finding& f : findings.list)
    out += f.code + (f.severity == Severity::Error ? " E " : " W ") + std::to_string(f.line) + ":" +
           std::to_string(f.column) + " " + f.text + "\n";
  return out;
}

// Exactly one finding, that one, in that file.
inline void expectOne(const Findings& findings, const std::string& file, const Expected& expected) {
  ASSERT_EQ(1U, findings.list.size()) << describe(findings);
  const Finding& found = findings.list[0];
  EXPECT_EQ(expected.code, found.code) << found.text;
  EXPECT_EQ(expected.severity, found.severity) << found.text;
  EXPECT_EQ(file, found.file);
  EXPECT_EQ(expected.line, found.line) << found.text;
  EXPECT_EQ(expected.column, found.column) << found.text;
  EXPECT_FALSE(found.text.empty());
  EXPECT_NE('.', found.text.back());
}
