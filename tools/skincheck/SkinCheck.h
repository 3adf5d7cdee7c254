#pragma once

#include <stdexcept>
#include <string>
#include <vector>

#include "Findings.h"

// What is to be checked. Folders may end in a slash or not.
struct CheckOptions {
  std::string folder;  // that WORKING_DIR names
  std::string games;   // the folder `Games`; empty for none
  // What the decoded pictures may take, in megabytes of 1,000,000 bytes.
  int skinBudget = 60, gameBudget = 40, fileBudget = 32;
};

// What was checked together: the skin or one game.
struct CheckedPart {
  std::string name;    // "skin", or the game's
  std::string folder;  // ends in a slash
  int64_t bytes = 0;   // decoded, as much as is in memory at a time
  int64_t budget = 0;
  std::vector<DecodedFile> files;  // the largest first
};

struct CheckReport {
  std::vector<Finding> findings;  // by file, line and column
  std::vector<CheckedPart> parts;

  int count(Severity severity) const;
};

// Thrown when a folder to be checked is not there or not the one that is meant; says in one line what to do.
class WrongFolder : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Checks a skin, and games with it. Reads every file that the program would read, changes none. One thread.
CheckReport checkSkin(const CheckOptions& options);
