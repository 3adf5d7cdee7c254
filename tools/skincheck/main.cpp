// skincheck DIR [--games DIR]: what is wrong with a skin, before a cabinet shows it.
#include <CLI/CLI.hpp>
#include <cstdio>
#include <stdexcept>

#include "Report.h"
#include "SkinCheck.h"

namespace {
constexpr const char* kFooter = R"(
DIR holds AppFontBold.ttf and VESPERA/TOP_SKIN/, as the folder that WORKING_DIR names. Every file that the program
asks for is looked for as the program does it and read to its end. Files that nothing asks for are told; hidden
files, Thumbs.db, desktop.ini and papers (README, LICENSE, COPYING, NOTICE, OFL, AUTHORS, without an extension or
.txt or .md) are not.

Of a game, the folder Icons is checked: overlay.xml, topscreen.jpg, background.png or .jpg, the pages in paytable/
and paytable_<language>/, bitmap fonts for the prizes and .ttf or .otf of the same names. What a game does not
bring is a warning. Its sum counts the pages of one language and the larger of overlay and topscreen, of which the
program holds one.

Output:   FILE:LINE:COLUMN: error|warning: TEXT [CODE]   sorted by file, then one line in all; LINE and COLUMN only
          where there are any. The codes are explained in docs/SKINS.md.
--json:   {"errors", "warnings",
           "findings": [{"severity", "code", "file", "line", "column", "text"}],
           "parts": [{"name", "folder", "bytes", "budget", "files": [{"file", "width", "height", "bytes"}]}]}
          "line" and "column" only where there are any; "parts" are the skin and each game.
Exit:     0 nothing but warnings, 1 errors (with --strict: or warnings), 2 options or folders that are wrong, or a
          report that cannot be written.)";
}  // namespace

int main(int argc, char** argv) {
  CLI::App app{"Checks a skin, and games with it, for what the program would not show or not show well."};
  CheckOptions options;
  bool json = false, sizes = false, strict = false;
  app.add_option("DIR", options.folder, "the folder that WORKING_DIR names")->required();
  app.add_option("--games", options.games, "the folder Games, which holds a folder for each game");
  app.add_flag("--json", json, "print one JSON object");
  app.add_flag("--sizes", sizes, "print what each file takes when it is decoded");
  app.add_flag("--strict", strict, "end with 1 for warnings too");
  const auto megabytes = CLI::Range(1, 100000);
  app.add_option("--budget", options.skinBudget, "megabytes for all pictures of the skin, decoded")
    ->capture_default_str()
    ->check(megabytes);
  app.add_option("--game-budget", options.gameBudget, "the same for each game, with the pages of one language")
    ->capture_default_str()
    ->check(megabytes);
  app.add_option("--file-budget", options.fileBudget, "the same for each picture")
    ->capture_default_str()
    ->check(megabytes);
  app.footer(kFooter);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : 2;
  }
  if (app.count("--games") > 0 && options.games.empty()) {
    std::fputs("skincheck: --games names no folder\n", stderr);
    return 2;
  }
  try {
    const CheckReport report = checkSkin(options);
    const std::string text = json ? reportJson(report) : reportText(report, sizes);
    if (std::fputs(text.c_str(), stdout) < 0 || std::fflush(stdout) != 0)
      throw std::runtime_error("the report cannot be written");
    if (report.count(Severity::Error) > 0) return 1;
    return strict && report.count(Severity::Warning) > 0 ? 1 : 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "skincheck: %s\n", error.what());
  }
  return 2;
}
