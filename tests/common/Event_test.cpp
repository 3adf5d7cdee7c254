#include "common/Event.h"

#include <gtest/gtest.h>

#include <cmath>
#include <xmlrpc-c/girerr.hpp>

#include "LinkTestSupport.h"

using linktest::parseValue;

TEST(Event, KeepsItsNumberUnderThreeTypes) {
  const Event event(100, static_cast<xmlrpc_value*>(nullptr));
  EXPECT_EQ(100, event.id());
  EXPECT_EQ(G_BUTTON_FULLSCREEN, event.gameEventID());
  EXPECT_EQ(static_cast<PlatformEvent>(100), event.platformEventID());
  EXPECT_EQ(nullptr, event.context());
}

TEST(Event, ReadsEachTypeOfContext) {
  EXPECT_TRUE(Event(1, "b", static_cast<xmlrpc_bool>(1)).asBool());
  EXPECT_EQ(-42, Event(1, "i", -42).asInt());
  EXPECT_EQ(2.5, Event(1, "d", 2.5).asDouble());
  EXPECT_EQ(9000000000LL, Event(1, "I", static_cast<xmlrpc_int64>(9000000000LL)).asLong());
  EXPECT_EQ("text", Event(1, "s", "text").asString());
}

TEST(Event, AnIntIsNoLong) {
  EXPECT_EQ(0, Event(1, "i", 42).asLong());
  EXPECT_EQ(42, Event(1, "i", 42).asInt());
}

TEST(Event, ANilContextIsThereAndReadsAsNothing) {
  const Event event(1, "n");
  ASSERT_NE(nullptr, event.context());
  EXPECT_EQ(XMLRPC_TYPE_NIL, xmlrpc_value_type(event.context()));
  EXPECT_FALSE(event.asBool());
  EXPECT_EQ(0, event.asInt());
  EXPECT_EQ(0.0, event.asDouble());
  EXPECT_EQ(0, event.asLong());
  EXPECT_EQ("", event.asString());
}

TEST(Event, WithoutAContextEveryReaderAnswersNothing) {
  const Event event(1, static_cast<xmlrpc_value*>(nullptr));
  EXPECT_FALSE(event.asBool());
  EXPECT_EQ(0, event.asInt());
  EXPECT_EQ(0.0, event.asDouble());
  EXPECT_EQ(0, event.asLong());
  EXPECT_EQ("", event.asString());
  int number = 5;
  event.readEventIntoVariables("i", &number);
  EXPECT_EQ(5, number);
  XmlRpcEnv env;
  event.readEventIntoVariables(env.get(), "i", &number);
  EXPECT_TRUE(env.failed());
}

TEST(Event, ABrokenFormatLeavesNoContextAndRaisesNothing) {
  EXPECT_EQ(nullptr, Event(1, "{s:i", "a", 1).context());
  EXPECT_EQ(nullptr, Event(1, "", 1).context());
  EXPECT_EQ(nullptr, Event(1, "q").context());
}

TEST(Event, AFormatOfTwoValuesLeavesNoContext) { EXPECT_EQ(nullptr, Event(1, "ii", 1, 2).context()); }

TEST(Event, TheRestOfAFormatIsNamedInTheFault) {
  const auto build = [](xmlrpc_env* env, const char* format, ...) {
    va_list params;
    va_start(params, format);
    xmlrpc_value* value = buildXmlRpcValue(env, format, params);
    va_end(params);
    return value;
  };
  XmlRpcEnv env;
  EXPECT_EQ(nullptr, build(env.get(), "iX", 1));
  ASSERT_TRUE(env.failed());
  EXPECT_STREQ(
    "Junk after the format specifier: 'X'.  The format string must describe exactly one XML-RPC value "
    "(but it might be a compound value such as an array)",
    env.get()->fault_string);
}

TEST(Event, OnlyAsStringTurnsEntitiesIntoCharacters) {
  const Event event(103, "s", "a &lt;b&gt; &quot;c&quot;");
  EXPECT_EQ("a <b> \"c\"", event.asString());
  char* text = nullptr;
  event.readEventIntoVariables("s", &text);
  ASSERT_NE(nullptr, text);
  EXPECT_STREQ("a &lt;b&gt; &quot;c&quot;", text);
  std::free(text);
}

TEST(Event, AWrongTypeReadsAsAnEmptyText) { EXPECT_EQ("", Event(1, "i", 5).asString()); }

TEST(Event, DecomposesAStruct) {
  const Event event(104,
                    parseValue("<struct>" + linktest::memberXml("current", "<i8>1</i8>") +
                               linktest::memberXml("min", "<i8>2</i8>") + linktest::memberXml("max", "<i8>3</i8>") +
                               linktest::memberXml("more", "<int>4</int>") + "</struct>"));
  xmlrpc_int64 current = 0;
  xmlrpc_int64 min = 0;
  xmlrpc_int64 max = 0;
  event.readEventIntoVariables("{s:I,s:I,s:I,*}", "current", &current, "min", &min, "max", &max);
  EXPECT_EQ(1, current);
  EXPECT_EQ(2, min);
  EXPECT_EQ(3, max);
}

TEST(Event, VariablesBehindAFaultKeepTheirValues) {
  const Event event(104, parseValue("<struct>" + linktest::memberXml("current", "<i8>1</i8>") +
                                    linktest::memberXml("min", "<int>2</int>") +
                                    linktest::memberXml("max", "<i8>3</i8>") + "</struct>"));
  xmlrpc_int64 current = 10;
  xmlrpc_int64 min = 20;
  xmlrpc_int64 max = 30;
  event.readEventIntoVariables("{s:I,s:I,s:I,*}", "current", &current, "min", &min, "max", &max);
  EXPECT_EQ(1, current);
  EXPECT_EQ(20, min);
  EXPECT_EQ(30, max);
  XmlRpcEnv env;
  event.readEventIntoVariables(env.get(), "{s:I,s:I,s:I,*}", "current", &current, "min", &min, "max", &max);
  EXPECT_TRUE(env.failed());
}

TEST(Event, TakesAReferenceOfItsOwn) {
  xmlrpc_value* value = nullptr;
  {
    XmlRpcEnv env;
    value = xmlrpc_int_new(env.get(), 77);
  }
  const Event event(1, value);
  xmlrpc_DECREF(value);
  EXPECT_EQ(77, event.asInt());
}

TEST(Event, AnEmptyValueIsRefused) { EXPECT_THROW(Event(1, xmlrpc_c::value()), girerr::error); }

TEST(Event, NumbersOfTheProtocol) {
  EXPECT_EQ(-10, E_UNNKNOWN_PARAMETER);
  EXPECT_EQ(-101, E_NO_ACTIVE_GAME);
  EXPECT_EQ(-500, E_INTERNAL_ERROR);
  EXPECT_EQ(-501, E_COMMUNICATION_ERROR);
  EXPECT_EQ(-1, E_NOT_REGISTERED);
  EXPECT_EQ(16, P_GAMEROUND_PROCESSED);
  EXPECT_EQ(100, T_GAME_LOADING);
  EXPECT_EQ(112, T_LANGUAGE);
  EXPECT_EQ(-2, G_GAME_TIMEOUT);
  EXPECT_EQ(300, G_GAME_CLOSING);
  EXPECT_EQ(301, G_GAME_CLOSE_CANCELED);
  EXPECT_EQ(4, G_BUTTON_LIGHTS_UPDATE);
  EXPECT_EQ(81, G_BUTTON_STOP_WIN_SCROLL);
  EXPECT_EQ(92, G_BUTTON_BET_MP_PLUS);
  EXPECT_EQ(141, G_AFT_JACKPOT_DIALOG_HIDDEN);
  EXPECT_EQ(200, G_BET);
  EXPECT_EQ(206, G_WIN_NUMBER_KNOWN);
}
