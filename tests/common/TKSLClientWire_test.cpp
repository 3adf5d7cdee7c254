// What travels: each request letter by letter, and what each kind of reply is taken for.
#include <gtest/gtest.h>

#include <xmlrpc-c/girerr.hpp>

#include "LinkTestSupport.h"
#include "tests/support/FakeClock.h"

using linktest::arrayXml;
using linktest::errorStruct;
using linktest::eventXml;
using linktest::faultXml;
using linktest::initReply;
using linktest::memberXml;
using linktest::replyXml;
using linktest::requestXml;
using linktest::TestClient;

namespace {

// The outcome of one call on the calling thread.
struct Outcome {
  int code = 0;
  std::string text;
  bool record = false;
};

Outcome take(const TestClient& client, MethodType method, void* data, int code) {
  Outcome outcome;
  outcome.code = code;
  if (code != 0) {
    auto* error = static_cast<KSLError*>(data);
    EXPECT_EQ(code, error->errorCode);
    outcome.text = *error->errorDescription;
    delete error;
  } else if (data != nullptr) {
    outcome.record = true;
    client.getMethodInfo(method).DestroyData(data);
  }
  return outcome;
}

Outcome call(TestClient& client, MethodType method) {
  uint64_t uid = 0;
  int code = 0;
  void* data = client.SendRequestSyncRaw(method, KSLCallback(), uid, code, "()");
  return take(client, method, data, code);
}

Outcome callWithReply(MethodType method, const std::string& reply) {
  TestClient client(0);
  client.wire.answer(client.getMethodInfo(method).Address, reply);
  return call(client, method);
}

}  // namespace

TEST(TKSLClientWire, TheMethodTable) {
  const char* names[] = {"game.pushEvents", "game.popEvents",  "game.getParam",     "game.setParam",
                         "game.getCounter", "game.setCounter", "game.shiftCounter", "",
                         "game.bye",        "platform.state",  "system.volume",     "system.denomination"};
  TKSLClient client("TopScreen", "http://127.0.0.1:1/KSL", 0);
  for (int n = 0; n < M_NULL; ++n) {
    const TKSLClient::MethodInfo& row = client.getMethodInfo(static_cast<MethodType>(n));
    EXPECT_STREQ(names[n], row.Address);
    EXPECT_EQ(n == M_INIT, row.ResponseParser == nullptr) << n;
    EXPECT_EQ(n == M_INIT, row.DestroyData == nullptr) << n;
  }
  EXPECT_STREQ("", client.getMethodInfo(M_NULL).Address);
  EXPECT_STREQ("", client.getMethodInfo(static_cast<MethodType>(-1)).Address);
}

TEST(TKSLClientWire, RegistrationCarriesNameAndVersionAndNoIdentifier) {
  TestClient client(0);
  ASSERT_EQ(0, client.Start(true, 0));
  client.Stop();
  EXPECT_EQ(requestXml("topscreen.init", {"<string>TopScreen</string>", "<string>1.5.0</string>"}),
            client.wire.requests().at(0));
}

TEST(TKSLClientWire, RequestsForEventsCarryTheIdentifierAlone) {
  TestClient client(0);
  client.RegisterID(42);
  call(client, M_POPEVENTS);
  EXPECT_EQ(requestXml("game.popEvents", {"<i4>42</i4>"}), client.wire.requests().at(0));
}

TEST(TKSLClientWire, OnlyFourMethodsAreAnonymous) {
  for (int n = 0; n < M_NULL; ++n) {
    const auto method = static_cast<MethodType>(n);
    TestClient client(0);
    client.RegisterID(42);
    uint64_t uid = 0;
    int code = 0;
    void* data = client.SendRequestSyncRaw(method, KSLCallback(), uid, code, "(is)", 5, "five");
    take(client, method, data, code);
    std::vector<std::string> params = {"<i4>5</i4>", "<string>five</string>"};
    if (method == M_PUSHEVENTS) {
      params = {"<i4>42</i4>", "<i4>0</i4>",
                "<array><data>\r\n<value><i4>5</i4></value>\r\n<value><string>five</string></value>\r\n"
                "</data></array>"};
    } else if (method != M_INIT && method != M_PLATFORM_STATUS && method != M_VOLUME && method != M_DENOMINATION) {
      params.insert(params.begin(), "<i4>42</i4>");
    }
    EXPECT_EQ(requestXml(client.getMethodInfo(method).Address, params), client.wire.requests().at(0));
  }
}

TEST(TKSLClientWire, TheStatusRequestIsBare) {
  TestClient client(0);
  client.RegisterID(42);
  call(client, M_PLATFORM_STATUS);
  EXPECT_EQ(requestXml("platform.state", {}), client.wire.requests().at(0));
}

TEST(TKSLClientWire, EveryTypeOfParameterHasItsElement) {
  TestClient client(0);
  uint64_t uid = 0;
  int code = 0;
  client.SendRequestSyncRaw(M_VOLUME, KSLCallback(), uid, code, "(iIdbns)", -1,
                            static_cast<xmlrpc_int64>(5000000000), 1.5, static_cast<xmlrpc_bool>(1), "<&>");
  EXPECT_EQ(requestXml("system.volume", {"<i4>-1</i4>", "<i8>5000000000</i8>", "<double>1.5</double>",
                                         "<boolean>1</boolean>", "<nil/>", "<string>&lt;&amp;&gt;</string>"}),
            client.wire.requests().at(0));
}

TEST(TKSLClientWire, AParameterThatIsNoArrayIsTheOneParameter) {
  TestClient client(0);
  uint64_t uid = 0;
  int code = 0;
  client.SendRequestSyncRaw(M_VOLUME, KSLCallback(), uid, code, "i", 5);
  EXPECT_EQ(requestXml("system.volume", {"<i4>5</i4>"}), client.wire.requests().at(0));
  void* data = client.SendRequestSyncRaw(M_PUSHEVENTS, KSLCallback(), uid, code, "i", 5);
  take(client, M_PUSHEVENTS, data, code);
  EXPECT_EQ(requestXml("game.pushEvents", {"<i4>-1</i4>", "<i4>0</i4>",
                                           "<array><data>\r\n<value><i4>5</i4></value>\r\n</data></array>"}),
            client.wire.requests().at(1));
}

TEST(TKSLClientWire, APackageOfEventsIsAnArrayOfStructs) {
  TestClient client(0);
  ASSERT_TRUE(client.startRegistered());
  client.wire.answer("game.pushEvents", replyXml("<int>3</int>"));
  client.BeginEventStack();
  client.PushEvent(G_GAME_START, "");
  client.PushEvent(G_BET_CHANGED, "I", static_cast<xmlrpc_int64>(250));
  client.PushEvent(G_LOG, nullptr);
  client.EndEventStack();
  ASSERT_TRUE(linktest::waitFor([&] { return client.wire.requests("game.pushEvents").size() == 1; }));
  client.Stop();
  const auto item = [](int id, const std::string& context) {
    return "<value><struct>\r\n<member><name>eventID</name>\r\n<value><i4>" + std::to_string(id) +
           "</i4></value></member>\r\n<member><name>context</name>\r\n<value>" + context +
           "</value></member>\r\n</struct></value>\r\n";
  };
  EXPECT_EQ((std::vector<std::string>{
              requestXml("game.pushEvents", {"<i4>7</i4>", "<i4>0</i4>",
                                             "<array><data>\r\n" + item(1, "<nil/>") + item(6, "<i8>250</i8>") +
                                               item(205, "<nil/>") + "</data></array>"})}),
            client.wire.requests("game.pushEvents"));
}

TEST(TKSLClientWire, PackagesAreNumberedByAcknowledgement) {
  TestClient client(0);
  const auto push = [&client](const std::string& reply) {
    client.wire.answer("game.pushEvents", reply);
    return call(client, M_PUSHEVENTS).code;
  };
  EXPECT_EQ(0, push(replyXml("<int>0</int>")));
  EXPECT_EQ(E_INTERNAL_ERROR, push(replyXml("<i8>1</i8>")));
  EXPECT_EQ(E_UNSYNC, push(replyXml(errorStruct(E_UNSYNC, ""))));
  EXPECT_EQ(E_NOT_REGISTERED, push(replyXml(errorStruct(E_NOT_REGISTERED, ""))));
  EXPECT_EQ(0, push(replyXml("<int>0</int>")));
  EXPECT_EQ(0, push(replyXml("<int>0</int>")));
  std::vector<std::string> expected;
  for (const char* number : {"0", "1", "1", "1", "1", "2"}) {
    expected.push_back(requestXml("game.pushEvents", {"<i4>-1</i4>", std::string("<i4>") + number + "</i4>",
                                                      "<array><data>\r\n</data></array>"}));
  }
  EXPECT_EQ(expected, client.wire.requests());
}

TEST(TKSLClientWire, AFaultStructIsAnErrorWithItsCodeAndText) {
  const Outcome outcome = callWithReply(M_VOLUME, replyXml(errorStruct(-6, "full &amp; closed")));
  EXPECT_EQ(E_SERVER_FULL, outcome.code);
  EXPECT_EQ("full & closed", outcome.text);
}

TEST(TKSLClientWire, AStructThatIsNoErrorReportGoesToTheParser) {
  const std::string structs[] = {
    errorStruct(0, "fine"),
    "<struct>" + memberXml("faultCode", "<int>-6</int>") + "</struct>",
    "<struct>" + memberXml("faultString", "<string>x</string>") + "</struct>",
    "<struct>" + memberXml("faultCode", "<i8>-6</i8>") + memberXml("faultString", "<string>x</string>") +
      "</struct>",
    "<struct>" + memberXml("faultCode", "<int>-6</int>") + memberXml("faultString", "<int>5</int>") + "</struct>",
    "<struct></struct>",
  };
  for (const std::string& xml : structs) {
    const Outcome outcome = callWithReply(M_GETPARAM, replyXml(xml));
    EXPECT_EQ(0, outcome.code) << xml;
    EXPECT_TRUE(outcome.record) << xml;
  }
}

TEST(TKSLClientWire, AFullStatusWithoutFaultCodeReachesItsParser) {
  PlatformState state;
  state.ActiveGame = GAME_MENU;
  const std::string text = linktest::textOf(state.toXml());
  const std::string inner = text.substr(text.find("<struct>"), text.rfind("</value>") - text.find("<struct>"));
  const Outcome outcome = callWithReply(M_PLATFORM_STATUS, replyXml(inner));
  EXPECT_EQ(0, outcome.code) << outcome.text;
  EXPECT_TRUE(outcome.record);
}

TEST(TKSLClientWire, FaultsOfTheServiceLoseTheirCode) {
  const Outcome outcome = callWithReply(M_POPEVENTS, faultXml(-1, "no such client"));
  EXPECT_EQ(E_INTERNAL_ERROR, outcome.code);
  EXPECT_EQ("no such client", outcome.text);
}

TEST(TKSLClientWire, NetworkAndTimeoutFaultsAreCommunicationErrors) {
  for (const int code : {-504, -505}) {
    const Outcome outcome = callWithReply(M_POPEVENTS, faultXml(code, "down"));
    EXPECT_EQ(E_COMMUNICATION_ERROR, outcome.code);
    EXPECT_EQ("down", outcome.text);
  }
}

TEST(TKSLClientWire, ARefusedReplyIsNamedByItsMethod) {
  const Outcome outcome = callWithReply(
    M_POPEVENTS, replyXml(arrayXml({eventXml(1, "<nil/>"), eventXml(2, "<nil/>"),
                                    "<struct>" + memberXml("eventID", "<int>3</int>") + "</struct>"})));
  EXPECT_EQ(E_INTERNAL_ERROR, outcome.code);
  EXPECT_EQ("Parsing of game.popEvents response failed.", outcome.text);
  EXPECT_EQ("Parsing of platform.state response failed.",
            callWithReply(M_PLATFORM_STATUS, replyXml("<int>1</int>")).text);
  EXPECT_EQ("Parsing of topscreen.init response failed.", callWithReply(M_INIT, replyXml("<int>1</int>")).text);
  EXPECT_EQ("Parsing of game.pushEvents response failed.", callWithReply(M_PUSHEVENTS, replyXml("<nil/>")).text);
}

TEST(TKSLClientWire, AnythingThrownByTheTransportIsAFailedConnection) {
  const auto failWith = [](const linktest::FakeTransport::Answer& answer) {
    TestClient client(0);
    client.RegisterID(7);
    client.wire.answer("game.popEvents", answer);
    const Outcome outcome = call(client, M_POPEVENTS);
    EXPECT_EQ(1, outcome.code);
    EXPECT_EQ(7, client.ID());
    return outcome.text;
  };
  EXPECT_EQ("sendInternal(): Connection failed",
            failWith([](const std::string&) -> std::string { throw girerr::error("refused"); }));
  EXPECT_EQ("sendInternal(): Connection failed", failWith([](const std::string&) -> std::string { throw 5; }));
  static girerr::error thrownByPointer("by pointer");
  EXPECT_EQ("by pointer", failWith([](const std::string&) -> std::string { throw &thrownByPointer; }));
  for (const char* body : {"", "<html><body>hello</body></html>", "no xml at all", "<?xml version=\"1.0\"?>"})
    EXPECT_EQ("sendInternal(): Connection failed", failWith([body](const std::string&) { return body; })) << body;
}

TEST(TKSLClientWire, NotRegisteredEndsRegistrationAndCommunication) {
  const FakeClock clock(20000);
  linktest::Gate gate;
  TestClient client(0);
  client.SetPopRequestFrequency(3600000);
  ASSERT_TRUE(client.startRegistered());
  client.wire.answer("system.volume", replyXml(errorStruct(E_ALREADY_REGISTERED, "")));
  call(client, M_VOLUME);
  EXPECT_EQ(7, client.ID());
  EXPECT_TRUE(client.CommunicationEnabled() && client.asksForEvents());
  client.SendRequest(M_BYE, 0, KSLCallback(), "");
  ASSERT_TRUE(linktest::waitFor([&] { return client.wire.requests("game.bye").size() == 1; }));
  EXPECT_EQ(1U, client.wire.requests("topscreen.init").size());

  client.wire.answer("system.volume", replyXml(errorStruct(E_NOT_REGISTERED, "who are you")));
  client.wire.answer("topscreen.init", [&gate](const std::string&) {
    gate.pass();
    return initReply(8);
  });
  EXPECT_EQ("who are you", call(client, M_VOLUME).text);
  EXPECT_EQ(-1, client.ID());
  EXPECT_FALSE(client.CommunicationEnabled());
  EXPECT_FALSE(client.asksForEvents());
  EXPECT_TRUE(linktest::waitFor([&] { return gate.arrived() == 1; })) << "it does not register anew";
  gate.open();
}

TEST(TKSLClientWire, TheTimeOfAGoodReplyIsKeptThoughItsParserRefusesIt) {
  const FakeClock clock(1000);
  TestClient client(0);
  client.wire.answer("game.popEvents", replyXml(errorStruct(-6, "")));
  call(client, M_POPEVENTS);
  EXPECT_EQ(std::nullopt, client.SinceGoodAnswer());
  client.wire.answer("game.popEvents", replyXml("<int>1</int>"));
  EXPECT_EQ(E_INTERNAL_ERROR, call(client, M_POPEVENTS).code);
  EXPECT_EQ(0U, client.SinceGoodAnswer());
}

TEST(TKSLClientWire, AMethodOutOfTheTableOrWithoutAParserIsAnErrorThatIsNotSent) {
  TestClient client(0);
  EXPECT_EQ(E_INTERNAL_ERROR, call(client, M_NULL).code);
  EXPECT_EQ(E_INTERNAL_ERROR, call(client, static_cast<MethodType>(-1)).code);
  client.SetInitMethod("", nullptr, nullptr);
  EXPECT_EQ("Parsing of  response failed.", call(client, M_INIT).text);
  EXPECT_TRUE(client.wire.requests().empty());
}

TEST(TKSLClientWire, ExtraMethodsTakeFreeRowsOnly) {
  EXPECT_FALSE(TestClient(0).AddMethod(M_NULL, "extra.call", linktest::parseTestInit, linktest::destroyTestInit));
  TestClient client(2);
  const auto add = [&client](int id) {
    return client.AddMethod(static_cast<MethodType>(id), "extra.call", linktest::parseTestInit,
                            linktest::destroyTestInit);
  };
  EXPECT_FALSE(add(0));
  EXPECT_FALSE(add(-1));
  EXPECT_FALSE(add(M_BYE));
  EXPECT_FALSE(add(M_INIT));
  EXPECT_FALSE(add(14));
  EXPECT_EQ(nullptr, client.getMethodInfo(static_cast<MethodType>(13)).Address);
  EXPECT_TRUE(add(13));
  EXPECT_FALSE(add(13));
  EXPECT_TRUE(add(12));
  client.RegisterID(7);
  client.wire.answer("extra.call", initReply(3));
  const Outcome outcome = call(client, static_cast<MethodType>(13));
  EXPECT_EQ(0, outcome.code);
  EXPECT_TRUE(outcome.record);
  EXPECT_EQ(requestXml("extra.call", {"<i4>7</i4>"}), client.wire.requests().at(0));
}

TEST(TKSLClientWire, TheAverageCountsFailedCallsToo) {
  FakeClock clock(1000);
  TestClient client(0);
  Uint32 duration = 0;
  client.wire.answer("system.volume", [&](const std::string&) -> std::string {
    clock.advance(duration);
    throw 1;
  });
  for (const Uint32 each : {10, 20, 60}) {
    duration = each;
    call(client, M_VOLUME);
  }
  EXPECT_EQ(30U, client.averageOf(M_VOLUME));
}
