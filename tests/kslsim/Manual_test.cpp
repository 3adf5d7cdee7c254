// docs/SIMULATOR.md beside the rows that the simulator goes by.
#include <gtest/gtest.h>

#include <fstream>
#include <set>
#include <sstream>

#include "tools/kslsim/BadReplies.h"
#include "tools/kslsim/Errors.h"
#include "tools/kslsim/Methods.h"

namespace kslsim {
namespace {

// Every `word` of the text.
std::set<std::string> marked(const std::string& text) {
  std::set<std::string> out;
  for (size_t at = text.find('`'); at != std::string::npos;) {
    const size_t end = text.find('`', at + 1);
    if (end == std::string::npos) break;
    out.insert(text.substr(at + 1, end - at - 1));
    at = text.find('`', end + 1);
  }
  return out;
}

// The cells of the table with this head, a row each, without the head.
std::vector<std::vector<std::string>> table(const std::string& head) {
  std::ifstream in(SIMULATOR_MANUAL);
  std::vector<std::vector<std::string>> out;
  std::string line;
  bool inside = false;
  while (std::getline(in, line)) {
    if (line.empty()) inside = false;
    if (inside && !line.starts_with("|--")) {
      std::stringstream text(line.substr(1));
      std::vector<std::string> cells;
      for (std::string cell; std::getline(text, cell, '|');) cells.push_back(cell);
      out.push_back(cells);
    }
    if (line.starts_with(head)) inside = true;
  }
  return out;
}

TEST(Manual, HasEveryBadReplyWithWhatItTakes) {
  const auto rows = table("| `reply` | Takes |");
  ASSERT_EQ(rows.size(), badRows().size());
  for (size_t i = 0; i < rows.size(); ++i) {
    const BadRow& row = badRows()[i];
    std::set<std::string> arguments;
    for (const BadArgument& argument : row.arguments) arguments.insert(argument.name);
    EXPECT_EQ(marked(rows[i].at(0)), std::set<std::string>{row.name});
    EXPECT_EQ(marked(rows[i].at(1)), arguments) << row.name;
  }
}

TEST(Manual, HasEveryMethod) {
  std::set<std::string> methods;
  for (const auto& row : table("| Method | Parameters |")) methods.merge(marked(row.at(0)));
  const std::vector<std::string> names = methodNames();
  EXPECT_EQ(methods, std::set<std::string>(names.begin(), names.end()));
}

TEST(Manual, HasEveryErrorWithItsCode) {
  const auto rows = table("| Code | Name |");
  ASSERT_EQ(rows.size(), errorRows().size());
  for (size_t i = 0; i < rows.size(); ++i) {
    EXPECT_EQ(rows[i].at(0), " " + std::to_string(errorRows()[i].code) + " ");
    EXPECT_EQ(marked(rows[i].at(1)), std::set<std::string>{errorRows()[i].name});
  }
}

}  // namespace
}  // namespace kslsim
