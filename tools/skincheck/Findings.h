#pragma once

#include <cstdint>
#include <string>
#include <vector>

enum class Severity { Warning, Error };

// One thing that a designer should look at. Line and column count from 1; 0 where there is none.
struct Finding {
  Severity severity = Severity::Error;
  std::string code;  // a short word that scripts can rely on: "missing", "size", "fallback"
  std::string file;
  int line = 0, column = 0;
  std::string text;  // one sentence without a full stop
};

// A file that was read, and what it takes in memory once it is decoded.
struct DecodedFile {
  std::string file;
  int width = 0, height = 0;
  int64_t bytes = 0;
};

// What a check of a skin gathers. One thread.
struct Findings {
  std::vector<Finding> list;
  std::vector<DecodedFile> decoded;
  std::vector<std::string> used;  // paths of all files that the program opens, also those with something wrong

  void error(std::string code, std::string file, std::string text, int line = 0, int column = 0) {
    list.push_back({Severity::Error, std::move(code), std::move(file), line, column, std::move(text)});
  }
  void warn(std::string code, std::string file, std::string text, int line = 0, int column = 0) {
    list.push_back({Severity::Warning, std::move(code), std::move(file), line, column, std::move(text)});
  }
};
