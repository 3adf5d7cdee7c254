#include "vesperatopscreen/InitData.h"

#include <gtest/gtest.h>
#include <limits>
#include <map>
#include <memory>

namespace {

std::map<std::string, xmlrpc_c::value> completeReply() {
  return {{"ID", xmlrpc_c::value_int(42)},
          {"Locale", xmlrpc_c::value_string("sl_SI.UTF-8")},
          {"DecimalSeparator", xmlrpc_c::value_string(",")},
          {"ThousandSeparator", xmlrpc_c::value_string(".")},
          {"ThousandGrouping", xmlrpc_c::value_int(3)},
          {"Language", xmlrpc_c::value_string("sl")},
          {"More", xmlrpc_c::value_string("ignored")}};
}

struct Parsed {
  int errorCode = 0;
  std::unique_ptr<InitData, void (*)(void*)> data{nullptr, DestroyInitObject};

  explicit Parsed(const xmlrpc_c::value& reply) {
    data.reset(static_cast<InitData*>(ParseInitResponse(reply, errorCode)));
  }
};

}  // namespace

TEST(InitData, ReadsEveryKeyOfAReply) {
  Parsed parsed{xmlrpc_c::value_struct(completeReply())};
  EXPECT_EQ(0, parsed.errorCode);
  EXPECT_EQ(42, parsed.data->ID);
  EXPECT_STREQ("sl_SI.UTF-8", parsed.data->Locale);
  EXPECT_STREQ(",", parsed.data->DecimalSeparator);
  EXPECT_STREQ(".", parsed.data->ThousandSeparator);
  EXPECT_EQ(3, parsed.data->ThousandGrouping);
  EXPECT_STREQ("sl", parsed.data->Language);
}

TEST(InitData, AMissingOrMistypedKeyGivesCodeOneAndNullTexts) {
  for (const char* key : {"ID", "Locale", "DecimalSeparator", "ThousandSeparator", "ThousandGrouping", "Language"})
    for (bool mistyped : {false, true}) {
      SCOPED_TRACE(std::string(key) + (mistyped ? " mistyped" : " missing"));
      auto reply = completeReply();
      reply.erase(key);
      if (mistyped) reply.emplace(key, xmlrpc_c::value_double(1.5));
      Parsed parsed{xmlrpc_c::value_struct(reply)};
      EXPECT_EQ(1, parsed.errorCode);
      ASSERT_TRUE(parsed.data);
      EXPECT_EQ(nullptr, parsed.data->Locale);
      EXPECT_EQ(nullptr, parsed.data->DecimalSeparator);
      EXPECT_EQ(nullptr, parsed.data->ThousandSeparator);
      EXPECT_EQ(nullptr, parsed.data->Language);
    }
}

TEST(InitData, AReplyThatIsNoStructGivesCodeOne) {
  Parsed parsed{xmlrpc_c::value_string("welcome")};
  EXPECT_EQ(1, parsed.errorCode);
  ASSERT_TRUE(parsed.data);
}

TEST(InitData, NumbersAtTheEndsOfTheirRangeAreKept) {
  for (int number : {std::numeric_limits<int>::min(), -1, 0, std::numeric_limits<int>::max()}) {
    auto reply = completeReply();
    for (const char* key : {"ID", "ThousandGrouping"}) {
      reply.erase(key);
      reply.emplace(key, xmlrpc_c::value_int(number));
    }
    Parsed parsed{xmlrpc_c::value_struct(reply)};
    EXPECT_EQ(0, parsed.errorCode);
    EXPECT_EQ(number, parsed.data->ID);
    EXPECT_EQ(number, parsed.data->ThousandGrouping);
  }
}

TEST(InitData, NumbersOfSixtyFourBitsAreOfAWrongType) {
  for (const char* key : {"ID", "ThousandGrouping"}) {
    auto reply = completeReply();
    reply.erase(key);
    reply.emplace(key, xmlrpc_c::value_i8(1));
    EXPECT_EQ(1, Parsed(xmlrpc_c::value_struct(reply)).errorCode) << key;
  }
}

TEST(InitData, NullMayBeDestroyed) { DestroyInitObject(nullptr); }
