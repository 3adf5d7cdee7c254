#pragma once

#include <string>
#include <vector>

#include "Findings.h"

// The pages that a game may have, in the order that decides their numbers.
const std::vector<std::string>& pageNames();

// Checks what one game brings; `icons` is its folder `Icons/`, with the slash, and is there. `bytes` is what it
// takes in memory with the pages of one language, the largest.
void checkGame(const std::string& icons, Findings& findings, int64_t& bytes);
