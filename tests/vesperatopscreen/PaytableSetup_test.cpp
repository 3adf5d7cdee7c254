#include "src/vesperatopscreen/PaytableSetup.h"

#include <gtest/gtest.h>

#include "tests/support/TopScreenHarness.h"

using paneldata::page;
using paneldata::setup;
using paneldata::Text;
using xmlrpc_c::value_int;
using xmlrpc_c::value_string;

namespace {

TPaytableText read(const Text& text) {
  return TPaytableSetup(setup({page("paytable", {text})}, -1, -1)).pages.at(0).texts.at(0);
}

int rgb(SDL_Color colour) { return colour.r << 16 | colour.g << 8 | colour.b; }

std::string content(const xmlrpc_c::value& value) { return TPaytableSetup::contentOf({{"paytableSetup", value}}); }

xmlrpc_c::value array(const std::vector<xmlrpc_c::value>& items) {
  return xmlrpc_c::value_array(xmlrpc_c::carray(items.begin(), items.end()));
}

std::string causeOf(const xmlrpc_c::cstruct& extra) {
  try {
    const TPaytableSetup setup(extra);
    return "nothing was thrown";
  } catch (const std::exception& error) {
    return error.what();
  }
}

}  // namespace

TEST(PaytableSetup, HasOneTextForEachRecord) {
  Text entry;
  entry.symbol = "SEVEN";
  entry.mode = "scatter";
  entry.win = 17;
  entry.font = "gold";
  entry.fontSize = 31;
  entry.occurs = 5;
  entry.alignedLeft = 1;
  entry.color = 0x123456;
  entry.x = 11, entry.y = -12, entry.w = 13, entry.h = 14;
  const TPaytableText text = read(entry);
  EXPECT_EQ("SEVEN_5", text.symbol);
  EXPECT_EQ("scatter", text.prize.Mode);
  EXPECT_EQ(17, text.prize.Win);
  EXPECT_EQ("gold", text.font);
  EXPECT_EQ(31, text.fontSize);
  EXPECT_TRUE(text.alignedLeft);
  EXPECT_EQ(0x123456, rgb(text.sdlColor));
  EXPECT_EQ(255, text.sdlColor.a);
  EXPECT_EQ(11, text.pos.x);
  EXPECT_EQ(-12, text.pos.y);
  EXPECT_EQ(13, text.w);
  EXPECT_EQ(14, text.h);
}

TEST(PaytableSetup, OnlyTheOneIsAlignedToTheLeft) {
  for (int value : {-1, 0, 1, 2, 255, 256, 257}) {
    Text entry;
    entry.alignedLeft = value;
    EXPECT_EQ(value == 1, read(entry).alignedLeft) << value;
  }
}

TEST(PaytableSetup, OnlyPureWhiteGivesWayToAColourWithoutAFullChannel) {
  const struct {
    int color, altColor, seen;
  } rows[] = {{0xFFFFFF, 0x10C020, 0x10C020},  {0xFFFFFF, 0, 0},
              {0xFFFFFF, 0xFEFEFE, 0xFEFEFE},  {0xFFFFFF, -1, 0xFFFFFF},
              {0xFFFFFF, 0xFF0000, 0xFFFFFF},  {0xFFFFFF, 0x00FF00, 0xFFFFFF},
              {0xFFFFFF, 0x0000FF, 0xFFFFFF},  {0xFFFFFE, 0x10C020, 0xFFFFFE},
              {0xFFFEFF, 0x10C020, 0xFFFEFF},  {0xFEFFFF, 0x10C020, 0xFEFFFF},
              {0x000000, 0x10C020, 0},         {0x7FFFFFFF, 0x10C020, 0x10C020},
              {0x12000001, 0x10C020, 0x000001}};
  for (const auto& row : rows) {
    Text entry;
    entry.color = row.color;
    entry.altColor = row.altColor;
    EXPECT_EQ(row.seen, rgb(read(entry).sdlColor)) << std::hex << row.color << " " << row.altColor;
    EXPECT_EQ(255, read(entry).sdlColor.a);
  }
}

TEST(PaytableSetup, TheShadowIsGreyBelowALuminanceOfOneHalf) {
  const struct {
    int color;
    bool black;
  } rows[] = {{0x323232, true},  {0x313232, false}, {0x323132, false}, {0x323231, false}, {0xA60000, false},
              {0xA70000, true},  {0x005400, false}, {0x005500, true},  {0x0000FF, false}, {0x4A00FF, true},
              {0x4900FF, false}, {0x000000, false}, {0xFFFFFF, true},  {0xFFC000, true}};
  for (const auto& row : rows) {
    Text entry;
    entry.color = row.color;
    const TPaytableText text = read(entry);
    EXPECT_EQ(row.black ? 0 : 0x808080, rgb(text.shadowColor)) << std::hex << row.color;
    EXPECT_EQ(255, text.shadowColor.a);
  }
  Text entry;
  entry.color = 0xFFFFFF;
  entry.altColor = 0x100020;
  EXPECT_EQ(0x808080, rgb(read(entry).shadowColor)) << "of the colour that is drawn";
}

TEST(PaytableSetup, KeepsTheTwoPagesWithTextsInTheirOrder) {
  const TPaytableSetup read(setup(
    {page("rules", {Text{}}), page("paytableBonus", {}), page("paytable", {Text{}, Text{}}), page("Paytable", {})},
    -1, -1));
  ASSERT_EQ(2u, read.pages.size());
  EXPECT_EQ("paytableBonus", read.pages[0].name);
  EXPECT_EQ("paytable", read.pages[1].name);
  EXPECT_EQ(2u, read.pages[1].texts.size());
  EXPECT_FALSE(read.isEmpty);
}

TEST(PaytableSetup, IsEmptyWithoutAnyPage) {
  EXPECT_TRUE(TPaytableSetup({}).isEmpty);
  EXPECT_TRUE(TPaytableSetup(setup({}, 20, 20)).isEmpty);
  EXPECT_FALSE(TPaytableSetup(setup({page("rules", {})}, -1, -1)).isEmpty) << "a page that is left out counts";
}

TEST(PaytableSetup, TheCostOfABetIsTheNumberOfLinesAndThatIsOne) {
  const struct {
    int paylines, betCost, cost;
  } rows[] = {{-1, -1, 1}, {10, -1, 10}, {10, 25, 25}, {-1, 50, 50}, {0, -1, 0}, {10, 0, 0}};
  for (const auto& row : rows) {
    EXPECT_EQ(row.cost, TPaytableSetup::betCostOf(setup({}, row.paylines, row.betCost)));
    EXPECT_EQ(row.cost, TPaytableSetup(setup({page("paytable", {})}, row.paylines, row.betCost)).betCost);
  }
}

TEST(PaytableSetup, AMissingKeyIsTheCause) {
  for (const char* key :
       {"symbol", "mode", "win", "font", "fontSize", "occurs", "alignedLeft", "color", "x", "y", "w", "h"}) {
    xmlrpc_c::cstruct broken = Text{}.value().cvalue();
    broken.erase(key);
    const xmlrpc_c::value record = xmlrpc_c::value_struct(
      {{"name", value_string("paytable")}, {"texts", array({xmlrpc_c::value_struct(broken)})}});
    EXPECT_EQ(std::string("there is no \"") + key + "\"", causeOf({{"paytableSetup", array({record})}}));
  }
  for (const char* key : {"name", "texts"}) {
    xmlrpc_c::cstruct broken{{"name", value_string("rules")}, {"texts", array({})}};
    broken.erase(key);
    EXPECT_EQ(std::string("there is no \"") + key + "\"",
              causeOf({{"paytableSetup", array({xmlrpc_c::value_struct(broken)})}}));
  }
}

TEST(PaytableSetup, ThePagesThatAreLeftOutAreNotReadFarther) {
  const xmlrpc_c::value record =
    xmlrpc_c::value_struct({{"name", value_string("rules")}, {"texts", array({value_int(1)})}});
  EXPECT_EQ("nothing was thrown", causeOf({{"paytableSetup", array({record})}}));
}

TEST(PaytableSetup, EqualContentsAreEqualAndAllOthersAreNot) {
  const std::vector<xmlrpc_c::value> values = {value_int(1),
                                               value_int(2),
                                               xmlrpc_c::value_i8(1),
                                               xmlrpc_c::value_i8(2),
                                               xmlrpc_c::value_boolean(true),
                                               xmlrpc_c::value_boolean(false),
                                               xmlrpc_c::value_double(1.0),
                                               xmlrpc_c::value_double(1.0 + 1e-15),
                                               value_string("1"),
                                               value_string(""),
                                               value_string("a;b"),
                                               xmlrpc_c::value_nil(),
                                               array({}),
                                               array({value_int(1)}),
                                               array({value_int(1), value_int(1)}),
                                               array({value_int(11)}),
                                               array({array({value_int(1)})}),
                                               array({array({}), value_int(1)}),
                                               array({value_string("a"), value_string("b")}),
                                               array({value_string("ab")}),
                                               xmlrpc_c::value_struct(xmlrpc_c::cstruct{}),
                                               xmlrpc_c::value_struct({{"a", value_int(1)}}),
                                               xmlrpc_c::value_struct({{"b", value_int(1)}}),
                                               xmlrpc_c::value_struct({{"a", value_int(2)}}),
                                               xmlrpc_c::value_struct({{"a", value_int(1)}, {"b", value_int(1)}})};
  for (size_t i = 0; i < values.size(); ++i)
    for (size_t j = 0; j < values.size(); ++j)
      EXPECT_EQ(i == j, content(values[i]) == content(values[j])) << i << " " << j;
  EXPECT_EQ("", TPaytableSetup::contentOf({}));
  const auto whole = [] { return TPaytableSetup::contentOf(setup({page("paytable", {Text{}})}, 20, 20)); };
  EXPECT_EQ(whole(), whole());
  EXPECT_EQ(whole(), TPaytableSetup::contentOf(setup({page("paytable", {Text{}})}, 10, 5))) << "of the pages alone";
}

TEST(PaytableSetup, TheCauseBeginsWithWhatHasTheWrongType) {
  const xmlrpc_c::value_int number(5);
  const auto begins = [](const std::string& with, const xmlrpc_c::cstruct& extra) {
    const std::string cause = causeOf(extra);
    EXPECT_EQ(0u, cause.find(with + ": ")) << cause;
    EXPECT_GT(cause.size(), with.size() + 2) << "and the library's own text follows";
  };
  begins("\"paytableSetup\"", {{"paytableSetup", number}});
  begins("a page", {{"paytableSetup", array({number})}});
  begins("a text",
         {{"paytableSetup", array({xmlrpc_c::value_struct(xmlrpc_c::cstruct{
                              {"name", xmlrpc_c::value_string("paytable")}, {"texts", array({number})}})})}});
}
