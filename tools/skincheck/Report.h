#pragma once

#include <string>

#include "SkinCheck.h"

// The report as lines for people and for editors: "file:line:col: error: text [code]", then one line in all. With
// `sizes` each decoded file has a line before that. No text of a file can break or colour a line.
std::string reportText(const CheckReport& report, bool sizes);

// The report as one JSON object.
std::string reportJson(const CheckReport& report);
