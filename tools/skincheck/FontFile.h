#pragma once

#include "TextFit.h"

// Reads the description of a bitmap font as the program does, and reports into `file` what is wrong with it. False
// when the program could not use it.
bool readFont(XmlFile& file, FontData& font);
