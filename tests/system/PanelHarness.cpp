#include "tests/system/PanelHarness.h"

namespace systest {
namespace {

struct Mark {
  const char* word;
  int x, y;
  Colour colour;
};

// One pixel for each thing, where nothing else of the skin stands.
const Mark MARKS[] = {
  {"loader", 960, 180, TestSkin::kSplash},
  {"background", 5, 1075, TestSkin::kBackground},
  {"demo", 5, 1075, TestSkin::kDemo},
  {"title", 960, 100, TestSkin::kTitle},
  {"dark-title", 960, 100, {TestSkin::kTitle.red / 2, TestSkin::kTitle.green / 2, TestSkin::kTitle.blue / 2}},
  {"gold", 60, 490, TestSkin::kFrames[0]},
  {"upper-gold", 60, 290, TestSkin::kFrames[0]},
  {"lower-silver", 110, 710, TestSkin::kFrames[1]},
  {"overlay-A", 1300, 300, TestSkin::kOverlays[0]},
  {"overlay-B", 1300, 300, TestSkin::kOverlays[1]},
  {"logo", 700, 510, TestSkin::kLogo},
  {"button-1", 92, 860, TestSkin::kButton},
  {"button-1-off", 92, 860, TestSkin::kButtonOff},
  {"button-2", 304, 741, TestSkin::kButton},
  {"button-2-off", 304, 741, TestSkin::kButtonOff},
  {"paper-A", 5, 1000, TestSkin::kPapers[0]},
  {"paper-B", 5, 1000, TestSkin::kPapers[1]},
  {"page-A1", 570, 250, TestSkin::kPages[0][0]},
  {"page-A2", 570, 250, TestSkin::kPages[0][1]},
  {"page-B1", 570, 250, TestSkin::kPages[1][0]},
  {"page-B2", 570, 250, TestSkin::kPages[1][1]},
  {"page-SI1", 570, 250, TestSkin::kPagesSi[0]},
};

struct Line {
  const char* word;
  int x, y, width;
};

// The rows in which texts can be read: the integrity text below the title; the error text, or the buttons 1, 3, 4
// and 5; the prizes of a page; the hint near the bottom edge.
const Line LINES[] = {
  {"high", 0, 190, 1920}, {"low", 0, 900, 1100}, {"prize", 840, 370, 500}, {"hint", 400, 1042, 1100}};

// Narrower runs are separators and edges.
constexpr int kLeastRun = 6;

}  // namespace

void PanelTest::SetUp() {
  SystemTest::SetUp();
  if (HasFatalFailure()) return;
  ASSERT_TRUE(TestSkin::writeGames(mFolder + "/terminal"));
  startSimulator();
  if (HasFatalFailure()) return;
  set({{"LanguageMessages", {"", "Least", "Most", "345", ""}}});
  mSimulator.apply({{"do", "add"}, {"level", level(0, "ACTIVE")}});
}

void PanelTest::startOnTheMenu() {
  startProgramHere();
  if (HasFatalFailure()) return;
  ASSERT_TRUE(within(20000, [this] { return screen() == "background title gold"; })) << screen();
}

std::string PanelTest::screen() {
  std::string words;
  const auto add = [&words](const std::string& word) { words += (words.empty() ? "" : " ") + word; };
  for (const Mark& mark : MARKS)
    if (alike(mX.pixel(mark.x, mark.y), mark.colour, 1)) add(mark.word);
  for (const Line& line : LINES) {
    const std::string text = textAt(line.x, line.y, line.width);
    if (!text.empty()) add(std::string(line.word) + "=" + text);
  }
  return words;
}

testing::AssertionResult PanelTest::shows(const std::string& due) {
  if (within(10000, [&] { return screen() == due; })) return testing::AssertionSuccess();
  return testing::AssertionFailure() << "due: " << due << "\nis:  " << screen();
}

testing::AssertionResult PanelTest::keeps(const std::string& due) {
  if (!asksForEvents(3)) return testing::AssertionFailure() << "the program does not ask for events";
  const std::string is = screen();
  if (is == due) return testing::AssertionSuccess();
  return testing::AssertionFailure() << "due: " << due << "\nis:  " << is;
}

std::string PanelTest::textAt(int x, int y, int width) {
  const Picture row = mX.picture({x, y, width, 1});
  const auto letterAt = [&](int place) {
    const Colour colour = row.at(place, 0);
    if (alike(colour, {255, 255, 255})) return 'x';
    for (int digit = 0; digit < 10; ++digit)
      if (alike(colour, TestSkin::digit(digit))) return static_cast<char>('0' + digit);
    return ' ';
  };
  std::string text;
  int run = 0;
  char last = ' ';
  for (int place = 0; place <= width; ++place) {
    const char letter = place < width ? letterAt(place) : ' ';
    if (letter != last && last != ' ' && run >= kLeastRun) text += last;
    run = letter == last ? run + 1 : 1;
    last = letter;
  }
  return text;
}

Json PanelTest::prizes(int betCost) {
  const auto text = [](const char* symbol, const char* mode, int win) {
    return Json{{"symbol", symbol}, {"mode", mode}, {"win", win},       {"font", "prize"},
                {"fontSize", 40},   {"occurs", 3},  {"alignedLeft", 1}, {"color", 0x00FF00},
                {"x", 300},         {"y", 100},     {"w", 400},         {"h", 100}};
  };
  return {{"betCost", betCost},
          {"paytableSetup",
           {{{"name", "paytable"}, {"texts", {text("K", "line", 12)}}},
            {{"name", "paytableBonus"}, {"texts", {text("S", "scatter", 3)}}}}}};
}

Json PanelTest::level(int id, const std::string& status) {
  return {{"Name", "LEVEL"},
          {"Id", id},
          {"Status", status},
          {"Mode", 0},
          {"CurrentPot", 0},
          {"MinPot", 0},
          {"MaxPot", 0},
          {"MinBet", 0},
          {"MaxBet", 0},
          {"NumWins", 0},
          {"ShowCurrencySign", true},
          {"DecimalPlaces", 0},
          {"Currency", ""},
          {"TimeFrom", ""},
          {"TimeTo", ""},
          {"LastWinData", ""}};
}

}  // namespace systest
