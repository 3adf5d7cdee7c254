// What is done to the running program from outside, beside what the other tests of this folder do.
// tests/system/faults.md lists all of it.
#include <csignal>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <functional>
#include <random>

#include "tests/system/SystemHarness.h"

namespace systest {
namespace {

namespace fs = std::filesystem;

constexpr int64_t kPot = 222222;

class Survival : public SystemTest {
 protected:
  // The link works and the screen moves: a new pot comes to be shown.
  testing::AssertionResult rollsTo(int64_t pot) {
    mSimulator.apply({{"do", "pot"}, {"id", 0}, {"value", pot}});
    if (within(20000, [&] { return shownPot() == pot; })) return testing::AssertionSuccess();
    return testing::AssertionFailure() << "shows " << shownPot();
  }
  int errors() const { return logged("KSL CLIENT: Received error"); }
};

TEST_F(Survival, AnswerThatComesByteByByteIsAnAnswer) {
  startWithPanel(Renderer::Software, 0);
  if (HasFatalFailure()) return;
  mSimulator.apply({{"do", "bad"}, {"method", "game.popEvents"}, {"reply", "drip"}, {"ms", 5}, {"calls", 2}});
  EXPECT_TRUE(rollsTo(kPot));
  EXPECT_EQ(errors(), 0);
}

// A byte a second: the answer takes minutes, and the screen does not wait for it.
TEST_F(Survival, AnswerOfAByteASecondHoldsNoFrameUp) {
  startUntilPanel(Renderer::Software, 1000000);
  if (HasFatalFailure()) return;
  mSimulator.apply({{"do", "bad"}, {"method", "game.popEvents"}, {"reply", "drip"}, {"ms", 1000}, {"calls", -1}});
  EXPECT_TRUE(within(20000, [this] { return shownPot() == 1000000; }))
    << "the digits came to a stand at " << shownPot();
  EXPECT_EQ(errors(), 0);
  mProgram.signal(SIGTERM);
  EXPECT_TRUE(exitsWith(10000, SIGTERM));
}

TEST_F(Survival, TextsThatAreNoAnswerCostOneLineEach) {
  const std::string head = "<?xml version=\"1.0\"?><methodResponse><params><param><value>",
                    foot = "</value></param></params></methodResponse>";
  std::string nested = "<nil/>";
  for (int depth = 0; depth < 5000; ++depth) nested = "<array><data><value>" + nested + "</value></data></array>";
  const struct {
    const char* name;
    Json reply;
  } rows[] = {
    {"no XML", {{"reply", "notxml"}}},
    {"no UTF-8", {{"reply", "utf8"}}},
    {"an empty body", {{"reply", "body"}, {"text", ""}}},
    {"nesting", {{"reply", "body"}, {"text", head + nested + foot}}},
    {"entities",
     {{"reply", "body"},
      {"text", "<!DOCTYPE m [<!ENTITY a \"aaaaaaaaaa\"><!ENTITY b \"&a;&a;&a;&a;&a;&a;&a;&a;\">]>" + head +
                 "<string>&b;&b;&b;&b;</string>" + foot}}},
    {"an unknown entity", {{"reply", "body"}, {"text", head + "<i8>&one;</i8>" + foot}}},
    {"a number that is none", {{"reply", "body"}, {"text", head + "<i8>1x</i8>" + foot}}},
    {"no HTTP", {{"reply", "raw"}, {"text", "hello\r\n"}}},
  };
  startWithPanel(Renderer::Software, 0);
  if (HasFatalFailure()) return;
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    const int before = errors();
    Json step = row.reply;
    step.update({{"do", "bad"}, {"method", "game.popEvents"}, {"calls", 1}});
    mSimulator.apply(step);
    EXPECT_TRUE(within(20000, [&] { return errors() > before; }));
    EXPECT_TRUE(asksForEvents(2));
    EXPECT_EQ(errors(), before + 1);
  }
  EXPECT_EQ(mSimulator.calls("topscreen.init"), 1) << "the registration was lost";
  EXPECT_TRUE(rollsTo(kPot));
}

// One after the other, a second each; then comes the right answer.
TEST_F(Survival, EachFieldOfTheRegistrationMayHaveAWrongTypeOrBeMissing) {
  startSimulator();
  mSimulator.apply({{"do", "add"}, {"level", {{"DecimalPlaces", 0}}}});
  int bad = 0;
  for (const char* reply : {"type", "missing"})
    for (const char* field :
         {"ID", "Locale", "DecimalSeparator", "ThousandSeparator", "ThousandGrouping", "Language"}) {
      mSimulator.apply({{"do", "bad"}, {"method", "topscreen.init"}, {"reply", reply}, {"field", field}});
      ++bad;
    }
  startProgram(mSimulator.address(), Renderer::Software, {});
  ASSERT_TRUE(within(20000, [this] { return loaderShown(); }));
  EXPECT_TRUE(within(40000, [this] { return panelShown(); }));
  for (const Json& entry : mSimulator.log(0)) bad -= entry.contains("bad");
  EXPECT_EQ(bad, 0) << "it was content with one of these";
  EXPECT_EQ(logged("KSL: ERROR on init"), 1) << "one reason, one line";
  EXPECT_TRUE(rollsTo(kPot));
}

TEST_F(Survival, EachFieldOfTheStateMayHaveAWrongTypeOrBeMissing) {
  startWithPanel(Renderer::Software, 0);
  if (HasFatalFailure()) return;
  for (const char* reply : {"type", "missing"})
    for (const char* field : {"ActiveGame", "ActiveGame/ID", "IsLoading", "CurrentBet", "JackpotErrorString",
                              "JackpotData", "JackpotData/0/CurrentPot", "JackpotData/0/Name", "ShowingPaytable",
                              "Instructions", "DemoMode", "IntegrityCheckData", "LanguageMessages"}) {
      SCOPED_TRACE(std::string(reply) + " " + field);
      const int before = mSimulator.calls("platform.state");
      mSimulator.apply(
        {{"do", "bad"}, {"method", "platform.state"}, {"reply", reply}, {"field", field}, {"calls", -1}});
      mSimulator.apply({{"do", "forget"}});
      EXPECT_TRUE(within(20000, [&] { return mSimulator.calls("platform.state") >= before + 2; }));
      EXPECT_EQ(shownPot(), 0);
      mSimulator.apply({{"do", "good"}});
    }
  EXPECT_TRUE(rollsTo(kPot));
}

TEST_F(Survival, NumbersAtTheEndsOfTheirRangesAreNumbers) {
  startWithPanel(Renderer::Software, 0);
  if (HasFatalFailure()) return;
  constexpr int64_t kI8[] = {INT64_MIN, -1, INT64_MAX}, kInt[] = {INT32_MIN, -1, INT32_MAX};
  for (size_t n = 0; n < std::size(kI8); ++n) {
    SCOPED_TRACE(kI8[n]);
    Json level{
      {"CurrentPot", kI8[n]}, {"MinPot", kI8[n]}, {"MaxPot", kI8[n]}, {"MinBet", kI8[n]}, {"MaxBet", kI8[n]}};
    mSimulator.apply({{"do", "level"}, {"id", 0}, {"set", level}});
    mSimulator.apply({{"do", "level"}, {"id", 0}, {"set", {{"Mode", kInt[n]}, {"NumWins", kInt[n]}}}});
    mSimulator.apply({{"do", "set"}, {"state", {{"CurrentBet", kI8[n]}, {"MinBet", kI8[n]}, {"MaxBet", kI8[n]}}}});
    mSimulator.apply({{"do", "event"}, {"id", 107}, {"raw", kInt[n]}});
    mSimulator.apply({{"do", "event"}, {"id", kInt[n]}, {"raw", nullptr}});
    EXPECT_TRUE(asksForEvents(3));
  }
  EXPECT_EQ(errors(), 0);
  EXPECT_TRUE(rollsTo(kPot));
}

// More than 512 KiB are no answer, however good; what fits is handed out event by event.
TEST_F(Survival, AHundredThousandEventsInOneAnswer) {
  startWithPanel(Renderer::Software, 0);
  if (HasFatalFailure()) return;
  for (const int count : {2000, 100000}) {
    SCOPED_TRACE(count);
    mSimulator.apply({{"do", "bad"}, {"method", "game.popEvents"}, {"reply", "flood"}, {"count", count}});
    EXPECT_TRUE(asksForEvents(3));
    EXPECT_TRUE(within(20000, [&] { return errors() == (count == 100000); })) << errors();
  }
  EXPECT_TRUE(rollsTo(kPot));
}

TEST_F(Survival, ServiceThatIsAnotherOneAfterwardsIsShownAsItIs) {
  startWithPanel(Renderer::Software, 111111);
  if (HasFatalFailure()) return;
  const int port = mSimulator.port();
  mSimulator.process().kill();
  ASSERT_TRUE(mSimulator.start(mFolder, port));
  mSimulator.apply({{"do", "set"}, {"state", {{"DemoMode", true}}}});
  mSimulator.apply({{"do", "add"}, {"level", {{"CurrentPot", 333333}, {"DecimalPlaces", 0}}}});
  EXPECT_TRUE(within(20000, [this] { return shownPot() == 333333; })) << shownPot();
  EXPECT_TRUE(within(20000, [this] { return alike(mX.pixel(5, 1075), TestSkin::kDemo); }));
}

TEST_F(Survival, StoppedAndContinuedItGoesOn) {
  startWithPanel(Renderer::Software, 0);
  if (HasFatalFailure()) return;
  mProgram.signal(SIGSTOP);
  mSimulator.apply({{"do", "pot"}, {"id", 0}, {"value", 111111}});
  const int calls = mSimulator.calls("game.popEvents");
  EXPECT_FALSE(within(1000, [&] { return mSimulator.calls("game.popEvents") > calls + 1; }))
    << "it was not stopped";
  EXPECT_EQ(shownPot(), 0);
  mProgram.signal(SIGCONT);
  EXPECT_TRUE(within(20000, [this] { return shownPot() == 111111; })) << shownPot();
  EXPECT_TRUE(rollsTo(kPot));
}

TEST_F(Survival, XServerThatIsKilledEndsItWith1) {
  startWithPanel(Renderer::Software, 0);
  if (HasFatalFailure()) return;
  mX.crash();
  EXPECT_TRUE(exitsWith(20000, 1));
}

class SpoiltLog : public Survival {
 protected:
  // What stands where the log of today belongs, or that of tomorrow, should midnight come.
  void startWith(const std::function<void(const std::string& file)>& make) {
    for (const int days : {0, 1}) {
      const std::time_t time = std::time(nullptr) + days * 86400;
      char date[16];
      std::strftime(date, sizeof date, "%F", std::localtime(&time));
      make(mFolder + "/top_" + date + ".log");
    }
    startWithPanel(Renderer::Software, 0);
  }
  void goesOnAndTells(const std::string& text) {
    EXPECT_TRUE(within(20000, [&] { return printed().find(text) != std::string::npos; }));
    EXPECT_TRUE(rollsTo(kPot));
    mProgram.signal(SIGTERM);
    EXPECT_TRUE(exitsWith(10000, SIGTERM));
  }
};

TEST_F(SpoiltLog, FullDiskIsToldOnTheConsoleAndTheScreenGoesOn) {
  startWith([](const std::string& file) { fs::create_symlink("/dev/full", file); });
  if (!HasFatalFailure()) goesOnAndTells("Can't write log file");
}

// As on a disk that nobody may write to; root may, so a folder stands in the way.
TEST_F(SpoiltLog, FileThatCannotBeOpenedIsToldOnTheConsoleAndTheScreenGoesOn) {
  startWith([](const std::string& file) { fs::create_directory(file); });
  if (!HasFatalFailure()) goesOnAndTells("Can't open log file");
}

// How the files of a skin are spoilt: what becomes of each one's content.
struct Spoilt {
  const char* name;
  bool isPicture;  // whether a picture is still one
  std::string (*become)(const std::string&);
};

std::string noise(size_t size) {
  std::mt19937 random(1);
  std::string text(size, '\0');
  for (char& byte : text) byte = static_cast<char>(random());
  return text;
}

const Spoilt kSpoilt[] = {
  {"Cut", false, [](const std::string& file) { return file.substr(0, file.size() / 2); }},
  {"Empty", false, [](const std::string&) { return std::string(); }},
  {"Random", false, [](const std::string& file) { return noise(file.size()); }},
  {"RandomBehindTheHead", false, [](const std::string& file) { return file.substr(0, 40) + noise(file.size()); }},
  {"Huge", true, [](const std::string& file) { return file + std::string(32 << 20, 'x'); }},
};

class SpoiltSkin : public SystemTest, public testing::WithParamInterface<Spoilt> {
 protected:
  // Every picture, font and description of the skin, but for the font without which nothing starts.
  void spoil() {
    for (const auto& entry : fs::recursive_directory_iterator(mFolder + "/terminal/VESPERA")) {
      if (!entry.is_regular_file() || entry.path().extension() == ".ttf") continue;
      const std::string path = entry.path().string(), content = contentOf(path);
      std::ofstream(path, std::ios::binary) << GetParam().become(content);
    }
  }
  // That this picture could not be loaded.
  bool isTold(const std::string& picture) const { return logged("/TOP_SKIN/" + picture) > 0; }
  int brokenFonts() const { return logged(" is not usable: "); }
  void endsWell() {
    EXPECT_EQ(logged("BACKTRACE"), 0);
    mProgram.signal(SIGTERM);
    EXPECT_TRUE(exitsWith(10000, SIGTERM));
  }
};

TEST_P(SpoiltSkin, FromTheStartLeavesOutWhatItWouldShow) {
  spoil();
  startSimulator();
  mSimulator.apply({{"do", "add"}, {"level", {{"CurrentPot", 5}}}});
  startProgram(mSimulator.address(), Renderer::Software, {});
  EXPECT_TRUE(within(30000, [this] { return logged("Creating jackpot panel with 1 levels.") == 1; }));
  EXPECT_TRUE(within(20000, [this] { return brokenFonts() > 0; }));
  EXPECT_TRUE(asksForEvents(3));
  EXPECT_TRUE(within(20000, [this] { return isTold("GOLD_RIGHT") != GetParam().isPicture; }));
  if (GetParam().isPicture)
    EXPECT_TRUE(within(20000, [this] { return panelShown(); }));
  else
    EXPECT_TRUE(alike(mX.pixel(5, 1075), {0, 0, 0}));
  endsWell();
}

// The levels are built anew; what they show has been loaded at the start, also what nobody has seen yet.
TEST_P(SpoiltSkin, ReplacedUnderTheRunningProgramChangesNothing) {
  startUntilPanel(Renderer::Software, 5);
  if (HasFatalFailure()) return;
  spoil();
  mSimulator.apply({{"do", "add"}, {"level", {{"CurrentPot", 5}}}});
  EXPECT_TRUE(within(30000, [this] { return logged("Creating jackpot panel with 2 levels.") == 1; }));
  EXPECT_TRUE(asksForEvents(5));
  // Of two levels the second one begins at 99, 687.
  EXPECT_TRUE(within(20000, [this] { return alike(mX.pixel(119, 697), TestSkin::kFrames[1]); }));
  for (const char* picture : {"GOLD_RIGHT", "SILVER_RIGHT", "JACKPOT", "bar"})
    EXPECT_FALSE(isTold(picture)) << picture;
  EXPECT_EQ(brokenFonts(), 0) << "a font that was there is read again";
  EXPECT_TRUE(panelShown());
  endsWell();
}

INSTANTIATE_TEST_SUITE_P(All, SpoiltSkin, testing::ValuesIn(kSpoilt),
                         [](const auto& info) { return std::string(info.param.name); });

TEST_F(Survival, SkinThatIsNotThereLeavesTheLinkAlive) {
  fs::remove_all(mFolder + "/terminal/VESPERA");
  startSimulator();
  startProgram(mSimulator.address(), Renderer::Software, {});
  EXPECT_TRUE(within(30000, [this] { return mSimulator.calls("game.popEvents") >= 3; }));
  EXPECT_NE(printed().find("Unable to load image file"), std::string::npos);
  EXPECT_TRUE(mProgram.running());
}

// Nobody may read its files; a folder stands in the place of each, for root may read everything.
TEST_F(Survival, SkinThatCannotBeReadLeavesTheLinkAlive) {
  std::vector<fs::path> files;
  for (const auto& entry : fs::recursive_directory_iterator(mFolder + "/terminal/VESPERA"))
    if (entry.is_regular_file() && entry.path().extension() != ".ttf") files.push_back(entry.path());
  for (const fs::path& file : files) {
    fs::remove(file);
    fs::create_directory(file);
  }
  startSimulator();
  mSimulator.apply({{"do", "add"}, {"level", {{"CurrentPot", 5}}}});
  startProgram(mSimulator.address(), Renderer::Software, {});
  EXPECT_TRUE(within(30000, [this] { return mSimulator.calls("game.popEvents") >= 3; }));
  EXPECT_NE(printed().find("Unable to load image file"), std::string::npos);
  EXPECT_TRUE(mProgram.running());
}

}  // namespace
}  // namespace systest
