#include "Arguments.h"

#include <sstream>
#include <stdexcept>

Colour parseColour(const std::string& text) {
  const std::string digits = !text.empty() && text[0] == '#' ? text.substr(1) : text;
  if ((digits.size() != 6 && digits.size() != 8) ||
      digits.find_first_not_of("0123456789abcdefABCDEF") != std::string::npos)
    throw std::runtime_error("\"" + text + "\" is no colour; a colour is six or eight hexadecimal digits");
  const auto part = [&digits](size_t at) { return std::stoi(digits.substr(at, 2), nullptr, 16) / 255.0; };
  return {part(0), part(2), part(4), digits.size() == 8 ? part(6) : 1};
}

Ramp parseRamp(const std::string& text) {
  std::vector<Colour> colours;
  std::istringstream list(text);
  for (std::string one; std::getline(list, one, ',');) colours.push_back(parseColour(one));
  if (text.ends_with(',')) parseColour("");
  if (colours.empty()) throw std::runtime_error("a gradient needs at least one colour");
  Ramp ramp;
  for (size_t i = 0; i < colours.size(); ++i)
    ramp.push_back(
      {colours.size() == 1 ? 0 : static_cast<double>(i) / static_cast<double>(colours.size() - 1), colours[i]});
  if (ramp.size() == 1) ramp.push_back({1, colours[0]});
  return ramp;
}
