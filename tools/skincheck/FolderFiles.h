#pragma once

#include <string>
#include <vector>

#include "Findings.h"

// All files below `folder` (which ends in a slash), sorted, as paths that begin with it. Hidden files and folders,
// what file managers leave behind and papers such as README or LICENSE are left out; linked folders are not
// entered. A folder that cannot be read is reported ("folder") and counts as empty.
std::vector<std::string> filesBelow(const std::string& folder, Findings& findings);

// The folders directly in `folder`, sorted, their names alone; links to folders count, hidden ones do not.
std::vector<std::string> foldersIn(const std::string& folder, Findings& findings);

// What stands in `folder` under `name`, a path, when capitals do not matter; empty when there is nothing.
std::string otherCapitals(const std::string& folder, const std::string& name);

// `text` is missing, as a part of a sentence: with the file that has other capitals when there is one.
std::string missingText(const std::string& folder, const std::string& name);

// Reports every file below `folder` that is not in `findings.used` ("unused"). `welcome` are paths that the
// program would have taken: a file that differs from one in its capitals is told so.
void reportUnused(const std::string& folder, const std::vector<std::string>& welcome, Findings& findings);
