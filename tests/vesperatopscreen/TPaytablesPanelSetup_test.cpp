// The prizes belong to the game's present setup.
#include "tests/vesperatopscreen/PaytablesFixture.h"

using namespace paytabletest;

namespace {

constexpr const char* kRefused = "4|The paytable setup of game 'Reels' is refused, what stands stays: ";

class PaytableSetups : public Paytables {
 protected:
  PaytableSetups() : Paytables("paytablesetups") {}

  // The setup with one line win and one scatter on the first page and one on the bonus page.
  static xmlrpc_c::cstruct wins(int line, int scatter, int bonus, int betCost = 20) {
    return setup({page("paytable", {text("A", "line", line, 3), text("S", "scatter", scatter, 3)}),
                  page("paytableBonus", {text("B", "line", bonus, 3)})},
                 -1, betCost);
  }
  // The state as the service would send it whole, with other data of the game.
  void replyWith(const xmlrpc_c::cstruct& extra, int paytable) {
    screen.status([&](PlatformState& state) {
      state.ActiveGame = paneldata::game("Reels");
      state.ShowingPaytable = paytable;
      state.ExtraData = extra;
    });
  }
  void expectPage(int number) {
    const bool first = number == 1;
    int w = 0;
    SDL_QueryTexture(texture(), nullptr, nullptr, &w, nullptr);
    EXPECT_EQ(first ? 700 : 600, w);
    EXPECT_EQ(first ? 610 : 660, screen.find("pPaytablesPanel/HelpScreen")->getX());
    EXPECT_TRUE(screen.visible("pPaytablesPanel"));
    EXPECT_FALSE(screen.visible("pJackpotsPanel"));
  }
};

// The library's values refuse to be assigned to.
xmlrpc_c::cstruct with(xmlrpc_c::cstruct record, const std::string& key, const xmlrpc_c::value& value) {
  record.erase(key);
  record.insert({key, value});
  return record;
}

xmlrpc_c::value with(const Text& text, const char* key, const xmlrpc_c::value& value) {
  return xmlrpc_c::value_struct(with(text.value().cvalue(), key, value));
}

xmlrpc_c::cstruct pageOf(const xmlrpc_c::value& name, const xmlrpc_c::value& texts) {
  const xmlrpc_c::value page = xmlrpc_c::value_struct({{"name", name}, {"texts", texts}});
  return {{"paytableSetup", xmlrpc_c::value_array(xmlrpc_c::carray{page})}};
}

xmlrpc_c::cstruct pageOf(const xmlrpc_c::value& text) {
  return pageOf(xmlrpc_c::value_string("paytable"), xmlrpc_c::value_array(xmlrpc_c::carray{text}));
}

struct Malformed {
  const char* what;
  xmlrpc_c::cstruct extra;
  const char* cause;
};

std::vector<Malformed> malformedSetups() {
  const xmlrpc_c::value word = xmlrpc_c::value_string("20"), number = value_int(7);
  const xmlrpc_c::cstruct good = setup({page("paytable", {text("N", "line", 7, 3)})}, 20, -1);
  return {{"no array", {{"paytableSetup", word}}, "\"paytableSetup\""},
          {"a page that is none", {{"paytableSetup", xmlrpc_c::value_array(xmlrpc_c::carray{number})}}, "a page"},
          {"a name that is none", pageOf(number, xmlrpc_c::value_array(xmlrpc_c::carray{})), "\"name\""},
          {"texts that are none", pageOf(word, number), "\"texts\""},
          {"a text that is none", pageOf(number), "a text"},
          {"a win in letters", pageOf(with(Text{}, "win", word)), "\"win\""},
          {"a win of 64 bits", pageOf(with(Text{}, "win", xmlrpc_c::value_i8(50))), "\"win\""},
          {"a symbol in digits", pageOf(with(Text{}, "symbol", number)), "\"symbol\""},
          {"a colour in letters", pageOf(with(Text{}, "altColor", word)), "\"altColor\""},
          {"lines in letters", with(good, "paylines", word), "\"paylines\""},
          {"a cost in letters", with(good, "betCost", word), "\"betCost\""}};
}

}  // namespace

TEST_F(PaytableSetups, OtherPrizesOfTheGameTakeThePlaceOfTheOldWithTheNextUpdate) {
  open(wins(50, 5, 10));
  EXPECT_EQ("250", shown("A_3"));
  sendExtra(wins(60, 7, 20));
  EXPECT_EQ("300", shown("A_3"));
  EXPECT_EQ("700", shown("S_3"));
  EXPECT_TRUE(screen.visible(kPage + "A_3"));
  EXPECT_TRUE(screen.visible(kPanel + "minBetLabel"));
  EXPECT_EQ("MIN: 20", screen.find<Tlabel>(kPanel + "minBetLabel")->GetText());
  turnTo(2);
  EXPECT_EQ("100", shown("B_3"));
  screen.send(T_BET_LIMITS, paneldata::bets(1000, 20, 2000));
  EXPECT_EQ("1.000", shown("B_3"));
  EXPECT_EQ(1u, loads("Reels")) << "the pages stay";
}

TEST_F(PaytableSetups, AWinThatTheNewSetupDoesNotHaveGoes) {
  open(wins(50, 5, 10));
  sendExtra(setup({page("paytable", {text("C", "line", 50, 4)})}, 20, -1));
  EXPECT_EQ("no label", shown("A_3"));
  EXPECT_EQ("no label", shown("B_3"));
  EXPECT_EQ("250", shown("C_4"));
}

TEST_F(PaytableSetups, AStatusReplyBringsOtherPrizesTheSameWay) {
  replyWith(wins(50, 5, 10), 1);
  ASSERT_TRUE(screen.until([this] { return screen.visible("pPaytablesPanel"); }));
  replyWith(wins(60, 7, 20), 1);
  EXPECT_EQ("300", shown("A_3"));
  EXPECT_EQ("700", shown("S_3"));
}

TEST_F(PaytableSetups, TheSameSetupAgainChangesNothing) {
  open(wins(50, 5, 10));
  // A new label may stand at the old one's address; what the tree says of its end is certain.
  testing::internal::CaptureStdout();
  sendExtra(wins(50, 5, 10));
  replyWith(wins(50, 5, 10), 1);
  sendExtra(wins(50, 5, 10, 50));  // another cost of a bet is no other setup
  EXPECT_EQ(std::string::npos, testing::internal::GetCapturedStdout().find("Dropping component"));
  EXPECT_EQ("100", shown("A_3"));
}

TEST_F(PaytableSetups, AnyDifferenceMakesTheTextsAnew) {
  const auto one = [](const Text& text) { return setup({page("paytable", {text})}, 20, -1); };
  const Text first;
  const struct {
    const char* key;
    xmlrpc_c::value value;
  } rows[] = {{"win", value_int(51)},
              {"mode", xmlrpc_c::value_string("scatter")},
              {"x", value_int(101)},
              {"y", value_int(101)},
              {"w", value_int(161)},
              {"h", value_int(31)},
              {"color", value_int(1)},
              {"altColor", value_int(2)},
              {"alignedLeft", value_int(1)},
              {"fontSize", value_int(25)},
              {"occurs", value_int(4)},
              {"symbol", xmlrpc_c::value_string("B")},
              {"font", xmlrpc_c::value_string("other")}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.key);
    open(one(first));
    ASSERT_NE(nullptr, label("A_3"));
    const xmlrpc_c::cstruct extra = with(pageOf(with(first, row.key, row.value)), "paylines", value_int(20));
    screen.app().deliver({{T_EXTRA_DATA, xmlrpc_c::value_struct(extra)}});
    testing::internal::CaptureStdout();
    screen.frame();
    EXPECT_NE(std::string::npos, testing::internal::GetCapturedStdout().find("Dropping component A_3"));
  }
}

TEST_F(PaytableSetups, ASetupThatComesBehindAClosedPaytableWaitsForTheNextUpdate) {
  open(wins(50, 5, 10));
  turnTo(0);
  TGlyphLabel* const before = label("A_3");
  sendExtra(wins(60, 7, 20));
  EXPECT_EQ(before, label("A_3"));
  EXPECT_EQ("250", shown("A_3"));
  screen.skip(600);
  turnTo(1);
  EXPECT_EQ("300", shown("A_3"));
  screen.send(T_BET_LIMITS, paneldata::bets(200, 20, 2000));
  EXPECT_EQ("600", shown("A_3"));
}

TEST_F(PaytableSetups, ASetupThatGoesTakesItsTextsAlong) {
  for (const bool emptied : {false, true}) {
    SCOPED_TRACE(emptied);
    open(wins(50, 5, 10));
    testing::internal::CaptureStdout();
    sendExtra(emptied ? setup({}, 20, -1) : xmlrpc_c::cstruct{});
    EXPECT_NE(std::string::npos,
              testing::internal::GetCapturedStdout().find(
                "WARNING: Could not create paytable because no paytable setup data was recieved!\n"));
    EXPECT_EQ("no label", shown("A_3"));
    for (const char* name : {"prizeLabel", "minBetLabel", "maxBetLabel"})
      EXPECT_EQ(nullptr, screen.find(kPanel + name)) << name;
    expectPage(1);
  }
}

TEST_F(PaytableSetups, TheNextGameDoesNotKeepThePrizesOfTheOneBefore) {
  open(wins(50, 5, 10));
  enter("Wheels");  // its own data come later
  ASSERT_TRUE(screen.until([this] { return texture() != nullptr; }));
  sendExtra(setup({page("paytable", {text("A", "line", 8, 3)})}, 20, -1));
  EXPECT_EQ("40", shown("A_3"));
  EXPECT_EQ("no label", shown("S_3"));
}

TEST_F(PaytableSetups, AMalformedSetupLeavesTheTextsThatStand) {
  for (const Malformed& row : malformedSetups()) {
    SCOPED_TRACE(row.what);
    open(wins(50, 5, 10));
    screen.app().forgetLines();
    TGlyphLabel* const before = label("A_3");
    xmlrpc_c::cstruct extra = row.extra;
    if (std::string(row.cause) != "\"betCost\"" && std::string(row.cause) != "\"paylines\"")
      extra["paylines"] = value_int(20);
    sendExtra(extra);
    EXPECT_EQ(before, label("A_3"));
    EXPECT_EQ("250", shown("A_3"));
    turnTo(2);
    expectPage(2);
    EXPECT_EQ("50", shown("B_3"));
    EXPECT_TRUE(screen.visible(kPage + "B_3"));
    EXPECT_FALSE(screen.visible(kPage + "A_3"));
    screen.send(T_BET_LIMITS, paneldata::bets(200, 40, 2000));
    EXPECT_EQ("500", shown("A_3")) << "the prizes follow the bet";
    EXPECT_EQ("MIN: 40", screen.find<Tlabel>(kPanel + "minBetLabel")->GetText());
    turnTo(1);
    expectPage(1);
    sendExtra(extra);
    EXPECT_EQ(1u, screen.app().linesWith(kRefused));
    EXPECT_EQ(1u, screen.app().linesWith(row.cause)) << "the line tells the cause";
    EXPECT_EQ(0u, screen.app().linesWith("unhandled exception"));
    screen.send(T_BET_LIMITS, paneldata::bets(100, 20, 2000));
  }
}

TEST_F(PaytableSetups, AMalformedSetupFromTheBeginningShowsThePagesAlone) {
  for (const Malformed& row : malformedSetups()) {
    SCOPED_TRACE(row.what);
    panel()->clearPaytable();
    turnTo(0);
    screen.skip(600);
    screen.app().forgetLines();
    open(row.extra);  // faded in
    expectPage(1);
    EXPECT_NE(nullptr, screen.find("pPaytablesPanel/Background")->GetTargetTexture());
    turnTo(2);
    expectPage(2);
    for (const char* name : {"HelpScreen/A_3", "HelpScreen/N_3", "prizeLabel", "minBetLabel", "maxBetLabel"})
      EXPECT_EQ(nullptr, screen.find(kPanel + name)) << name;
    EXPECT_EQ(1u, screen.app().linesWith(kRefused));
    EXPECT_EQ(1u, screen.app().linesWith(row.cause));
    EXPECT_EQ(0u, screen.app().linesWith("The bet cost")) << "one that nobody has read is not 0";
    EXPECT_EQ(0u, screen.app().linesWith("unhandled exception"));
    sendExtra(wins(50, 5, 10));
    EXPECT_EQ("250", shown("A_3")) << "the next setup makes its texts";
    EXPECT_TRUE(screen.visible(kPage + "B_3"));
  }
}

TEST_F(PaytableSetups, AnotherMalformedSetupHasALineOfItsOwn) {
  open(wins(50, 5, 10));
  for (const char* win : {"1", "2"}) sendExtra(pageOf(with(Text{}, "win", xmlrpc_c::value_string(win))));
  EXPECT_EQ(2u, screen.app().linesWith(kRefused));
  sendExtra(wins(60, 5, 10));
  sendExtra(pageOf(with(Text{}, "win", xmlrpc_c::value_string("2"))));
  EXPECT_EQ(3u, screen.app().linesWith(kRefused));
}

TEST_F(PaytableSetups, TheCostOfABetIsReadBesideAMalformedSetup) {
  open(wins(50, 5, 10));
  sendExtra({{"paytableSetup", value_int(1)}, {"betCost", value_int(10)}});
  EXPECT_EQ("500", shown("A_3"));
  EXPECT_EQ(0, panel()->updatePaytable());
  EXPECT_EQ(1u, screen.app().linesWith(kRefused));
}

TEST_F(PaytableSetups, AMistypedCostBesideTheTextsThatStandIsRefusedToo) {
  open(wins(50, 5, 10));
  xmlrpc_c::cstruct extra = wins(50, 5, 10);
  extra.erase("betCost");
  extra.insert({"betCost", xmlrpc_c::value_string("dear")});
  sendExtra(extra);
  EXPECT_EQ(1u, screen.app().linesWith(kRefused));
  EXPECT_EQ("250", shown("A_3")) << "the prizes go on with the last cost";
}

TEST_F(PaytableSetups, ARefusedSetupThrowsItsCause) {
  open(wins(50, 5, 10));
  sendExtra(pageOf(with(Text{}, "win", xmlrpc_c::value_string("50"))));
  try {
    panel()->createPaytable("Reels");
    ADD_FAILURE() << "nothing was thrown";
  } catch (const std::exception& error) {
    EXPECT_NE(std::string::npos, std::string(error.what()).find("\"win\": ")) << error.what();
    EXPECT_EQ(1u, screen.app().linesOf(std::string(kRefused) + error.what())) << "that is what the log has told";
  }
}
