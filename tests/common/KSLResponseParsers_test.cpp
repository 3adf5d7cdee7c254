#include "common/KSLResponseParsers.h"

#include <gtest/gtest.h>

#include "LinkTestSupport.h"

using linktest::arrayXml;
using linktest::eventXml;
using linktest::parseValue;

namespace {

struct Pop {
  int status = -1;
  PopResponseData* data = nullptr;

  explicit Pop(const std::string& xml) {
    data = static_cast<PopResponseData*>(parsePopEvents(parseValue(xml), status));
  }
  ~Pop() { destroyPopResponse(data); }
};

}  // namespace

TEST(KSLResponseParsers, PushTakesAnIntOnly) {
  int status = -1;
  auto* data = static_cast<PushResponseData*>(parsePushEvents(parseValue("<int>3</int>"), status));
  EXPECT_EQ(0, status);
  EXPECT_EQ(3, data->numPushedEvents);
  destroyPushResponse(data);

  data = static_cast<PushResponseData*>(parsePushEvents(parseValue("<i8>3</i8>"), status));
  EXPECT_EQ(1, status);
  EXPECT_EQ(-1, data->numPushedEvents);
  destroyPushResponse(data);

  data = static_cast<PushResponseData*>(parsePushEvents(xmlrpc_c::value(), status));
  EXPECT_EQ(2, status);
  ASSERT_NE(nullptr, data);
  EXPECT_EQ(-1, data->numPushedEvents);
  destroyPushResponse(data);
}

TEST(KSLResponseParsers, NilAndAnEmptyArrayAreNoEvents) {
  const Pop nil("<nil/>");
  EXPECT_EQ(0, nil.status);
  EXPECT_EQ(0, nil.data->numEvents);
  const Pop empty(arrayXml({}));
  EXPECT_EQ(0, empty.status);
  EXPECT_EQ(0, empty.data->numEvents);
}

TEST(KSLResponseParsers, EventsComeInTheOrderOfTheService) {
  const Pop pop(
    arrayXml({eventXml(108, "<string>a</string>"), eventXml(100, "<int>5</int>"), eventXml(105, "<nil/>")}));
  ASSERT_EQ(0, pop.status);
  ASSERT_EQ(3, pop.data->numEvents);
  EXPECT_EQ(108, pop.data->events[0]->id());
  EXPECT_EQ("a", pop.data->events[0]->asString());
  EXPECT_EQ(5, pop.data->events[1]->asInt());
  EXPECT_EQ(105, pop.data->events[2]->id());
}

TEST(KSLResponseParsers, FurtherKeysOfAnEventDoNotMatter) {
  const Pop pop(arrayXml({"<struct>" + linktest::memberXml("eventID", "<int>1</int>") +
                          linktest::memberXml("context", "<nil/>") + linktest::memberXml("more", "<int>1</int>") +
                          "</struct>"}));
  EXPECT_EQ(0, pop.status);
}

TEST(KSLResponseParsers, AReplyThatIsNoArrayIsRefused) {
  for (const char* xml : {"<int>1</int>", "<string>x</string>", "<boolean>1</boolean>"}) {
    const Pop pop(xml);
    EXPECT_EQ(1, pop.status) << xml;
    EXPECT_NE(nullptr, pop.data);
  }
}

TEST(KSLResponseParsers, OneBadItemSpoilsTheReply) {
  const std::string good = eventXml(1, "<nil/>");
  const std::string bad[] = {
    "<int>5</int>",
    "<struct>" + linktest::memberXml("eventID", "<int>1</int>") + "</struct>",
    "<struct>" + linktest::memberXml("context", "<nil/>") + "</struct>",
    "<struct>" + linktest::memberXml("eventID", "<string>1</string>") + linktest::memberXml("context", "<nil/>") +
      "</struct>",
    "<struct>" + linktest::memberXml("eventID", "<i8>1</i8>") + linktest::memberXml("context", "<nil/>") +
      "</struct>",
    "<struct></struct>",
  };
  for (const std::string& item : bad) {
    const Pop pop(arrayXml({good, good, item}));
    EXPECT_EQ(2, pop.status) << item;
    EXPECT_NE(nullptr, pop.data) << item;
  }
}

TEST(KSLResponseParsers, GetParamKeepsAnyValue) {
  int status = -1;
  auto* data = static_cast<GetParamResponseData*>(parseGetParam(parseValue("<string>v</string>"), status));
  ASSERT_NE(nullptr, data);
  EXPECT_EQ(0, status);
  EXPECT_EQ("v", static_cast<std::string>(xmlrpc_c::value_string(data->parameterValue)));
  destroyGetParamResponse(data);
}

TEST(KSLResponseParsers, ABadPlatformStateComesBackForDestruction) {
  int status = 0;
  void* data = parsePlatformState(parseValue("<int>1</int>"), status);
  EXPECT_EQ(1, status);
  EXPECT_NE(nullptr, data);
  destroyPlatformState(data);
  PlatformState state;
  status = -1;
  data = parsePlatformState(state.toXml(), status);
  EXPECT_EQ(0, status);
  EXPECT_EQ(GAME_NULL, static_cast<PlatformState*>(data)->ActiveGame);
  destroyPlatformState(data);
}

TEST(KSLResponseParsers, SevenParsersMakeNothingAndLeaveTheStatus) {
  const ResponseParser parsers[] = {parseSetParam, parseGetCounter, parseSetCounter,  parseShiftCounter,
                                    parseBye,      parseVolume,     parseDenomination};
  for (const ResponseParser parser : parsers) {
    int status = 17;
    EXPECT_EQ(nullptr, parser(parseValue("<string>any</string>"), status));
    EXPECT_EQ(17, status);
  }
}

TEST(KSLResponseParsers, DestroyersTakeNullAndTheSevenTakeBareMemory) {
  const DestroyDataObjectFunction destroyers[] = {
    destroySetParamResponse, destroyGetCounterResponse, destroySetCounterResponse,  destroyShiftCounterResponse,
    destroyByeResponse,      destroyVolumeResponse,     destroyDenominationResponse};
  for (const DestroyDataObjectFunction destroyer : destroyers) {
    destroyer(nullptr);
    destroyer(operator new(8));
  }
  destroyPushResponse(nullptr);
  destroyPopResponse(nullptr);
  destroyGetParamResponse(nullptr);
  destroyPlatformState(nullptr);
}
