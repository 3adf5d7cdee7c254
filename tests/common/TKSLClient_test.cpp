// The life of the client: registration, sending, retries, stopping, with its thread and a transport of the test's.
#include "common/TKSLClient.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <xmlrpc-c/girerr.hpp>

#include "LinkTestSupport.h"
#include "tests/support/FakeClock.h"

using linktest::errorStruct;
using linktest::faultXml;
using linktest::Gate;
using linktest::initReply;
using linktest::Note;
using linktest::replyXml;
using linktest::TestClient;
using linktest::waitFor;

namespace {

const Note Stopped{M_INIT, E_COMMUNICATION_ERROR, "Client timed out and stopped!"};

linktest::FakeTransport::Answer failing() {
  return [](const std::string&) -> std::string { throw girerr::error("refused"); };
}

}  // namespace

TEST(TKSLClient, StartsUnregistered) {
  TestClient client(0);
  EXPECT_EQ("TopScreen", client.Name());
  EXPECT_EQ("http://127.0.0.1:1/KSL", client.Address());
  EXPECT_EQ(-1, client.ID());
  EXPECT_FALSE(client.Running());
  EXPECT_FALSE(client.IsRegistered());
  EXPECT_FALSE(client.IsTimedOut());
  EXPECT_FALSE(client.CommunicationEnabled());
  EXPECT_EQ(-1, client.Stop());
  EXPECT_EQ(9, TKSLClient::NUM_BASE_METHODS);
  EXPECT_EQ(100, TKSLClient::TOP_PRIORITY);
}

TEST(TKSLClient, ABlockingStartRegistersAndTellsTheListener) {
  TestClient client(0);
  EXPECT_EQ(0, client.Start(true, 0));
  EXPECT_EQ(7, client.ID());
  EXPECT_TRUE(client.Running());
  EXPECT_TRUE(client.IsRegistered());
  EXPECT_TRUE(client.CommunicationEnabled());
  EXPECT_EQ((std::vector<Note>{{M_INIT, 0, ""}}), client.listener.inits);
  EXPECT_EQ(1, client.Start(true, 0));
  EXPECT_EQ(0, client.Stop());
  EXPECT_FALSE(client.Running());
  EXPECT_FALSE(client.IsRegistered());
}

TEST(TKSLClient, ADeadServiceGetsOneAttemptMoreThanRetries) {
  TestClient client(0);
  client.wire.answer("topscreen.init", failing());
  EXPECT_EQ(-1, client.Start(true, 3));
  EXPECT_FALSE(client.Running());
  EXPECT_EQ(-1, client.ID());
  const Note failed{M_INIT, 1, "sendInternal(): Connection failed"};
  client.Poll(0);
  ASSERT_LE(5U, client.listener.inits.size());
  EXPECT_EQ((std::vector<Note>{failed, failed, failed, failed, Stopped}),
            (std::vector<Note>(client.listener.inits.begin(), client.listener.inits.begin() + 5)));
  EXPECT_EQ((std::vector<Uint32>(client.pausesSoFar().size(), 1000)), client.pausesSoFar());
}

// The thread may begin a new series before it is stopped; but what a blocking start delivers is one whole series.
TEST(TKSLClient, ABlockingStartHasHeardTheEndOfTheSeriesWhenItReturns) {
  for (int n = 0; n < 20; ++n) {
    TestClient client(0);
    client.wire.answer("topscreen.init", failing());
    EXPECT_EQ(-1, client.Start(true, 0));
    ASSERT_LE(2U, client.listener.inits.size());
    EXPECT_EQ(Stopped, client.listener.inits[1]);
  }
}

TEST(TKSLClient, AfterASeriesOfFailuresANewOneBegins) {
  TestClient client(0);
  client.wire.answer("topscreen.init", failing());
  EXPECT_EQ(0, client.Start(false, 0));
  ASSERT_TRUE(client.pollUntil(
    [&] { return std::count(client.listener.inits.begin(), client.listener.inits.end(), Stopped) >= 2; }));
  client.wire.answer("topscreen.init", initReply(9));
  EXPECT_TRUE(client.pollUntil([&] { return client.ID() == 9; }));
}

TEST(TKSLClient, RegistrationIsTriedForEver) {
  TestClient client(0);
  client.wire.answer("topscreen.init", failing());
  EXPECT_EQ(0, client.Start(false, -1));
  ASSERT_TRUE(client.pollUntil([&] { return client.wire.requests().size() > 20; }));
  EXPECT_EQ(0, std::count(client.listener.inits.begin(), client.listener.inits.end(), Stopped));
  EXPECT_FALSE(client.IsRegistered());
  client.wire.answer("topscreen.init", initReply(9));  // without an answer Stop would not return
  EXPECT_TRUE(client.pollUntil([&] { return client.IsRegistered(); }));
}

TEST(TKSLClient, ARejectedRegistrationIsTriedAgainAfterASecond) {
  struct Reply {
    std::string xml;
    Note note;
  };
  const Reply replies[] = {
    {replyXml(errorStruct(E_INIT_REJECTED, "no")), {M_INIT, E_INIT_REJECTED, "no"}},
    {faultXml(-504, "down"), {M_INIT, E_COMMUNICATION_ERROR, "down"}},
    {replyXml("<int>1</int>"), {M_INIT, E_INTERNAL_ERROR, "Parsing of topscreen.init response failed."}},
    {initReply(0), {M_INIT, 0, ""}},
    {initReply(-5), {M_INIT, 0, ""}},
  };
  for (const Reply& reply : replies) {
    TestClient client(0);
    client.wire.answer("topscreen.init", reply.xml);
    client.Start(false, -1);
    ASSERT_TRUE(client.pollUntil([&] { return client.listener.inits.size() >= 2; }));
    EXPECT_EQ(reply.note, client.listener.inits[0]);
    EXPECT_EQ(reply.note, client.listener.inits[1]);
    EXPECT_EQ(1000U, client.pausesSoFar().at(0));
    EXPECT_EQ(-1, client.ID());
    client.wire.answer("topscreen.init", initReply(9));
    ASSERT_TRUE(client.pollUntil([&] { return client.ID() == 9; }));
  }
}

TEST(TKSLClient, IsRegisteredTellsTheEndOfANonBlockingStart) {
  Gate gate;
  TestClient client(0);
  client.wire.answer("topscreen.init", [&gate](const std::string&) {
    gate.pass();
    return initReply(7);
  });
  EXPECT_EQ(0, client.Start(false, 0));
  ASSERT_TRUE(waitFor([&] { return gate.arrived() == 1; }));
  EXPECT_FALSE(client.IsRegistered());
  gate.open();
  EXPECT_TRUE(waitFor([&] { return client.IsRegistered(); }));
  EXPECT_TRUE(client.IsRegistered());
}

TEST(TKSLClient, IsRegisteredStopsAClientThatFailed) {
  TestClient client(0);
  client.wire.answer("topscreen.init", failing());
  EXPECT_EQ(0, client.Start(false, 0));
  EXPECT_TRUE(waitFor([&] { return !client.IsRegistered() && !client.Running(); }));
}

TEST(TKSLClient, ANewAddressRestarts) {
  TestClient client(0);
  ASSERT_TRUE(client.startRegistered());
  client.SetAddress("http://127.0.0.1:2/KSL");
  EXPECT_EQ("http://127.0.0.1:2/KSL", client.Address());
  EXPECT_TRUE(client.IsRegistered());
  EXPECT_EQ(2U, client.wire.requests("topscreen.init").size());
}

TEST(TKSLClient, WithoutRegistrationABlockingStartWaitsForTheFirstCall) {
  TestClient client(0);
  client.SetRegisterRequired(false);
  client.SendRequest(M_VOLUME, 0, KSLCallback(), "");
  EXPECT_EQ(0, client.Start(true, 0));
  EXPECT_TRUE(waitFor([&] { return client.wire.requests().size() == 1; }));
  EXPECT_TRUE(client.wire.requests("topscreen.init").empty());
}

TEST(TKSLClient, QueuedCallsWaitForTheRegistrationAndCarryItsIdentifier) {
  Gate gate;
  TestClient client(0);
  client.wire.answer("topscreen.init", [&gate](const std::string&) {
    gate.pass();
    return initReply(33);
  });
  client.Start(false, -1);
  ASSERT_TRUE(waitFor([&] { return gate.arrived() == 1; }));
  client.SendRequest(M_BYE, 0, KSLCallback(), "");
  client.SendRequest(M_GETPARAM, 5, KSLCallback(), "(s)", "name");
  EXPECT_EQ(1U, client.wire.requests().size());
  gate.open();
  ASSERT_TRUE(waitFor([&] { return client.wire.requests().size() == 3; }));
  EXPECT_EQ(linktest::requestXml("game.getParam", {"<i4>33</i4>", "<string>name</string>"}),
            client.wire.requests()[1]);
  EXPECT_EQ(linktest::requestXml("game.bye", {"<i4>33</i4>"}), client.wire.requests()[2]);
}

TEST(TKSLClient, TheMainThreadNeverWaitsForTheNetwork) {
  Gate gate;
  TestClient client(0);
  client.wire.answer("system.volume", [&gate](const std::string&) {
    gate.pass();
    return replyXml("<nil/>");
  });
  ASSERT_TRUE(client.startRegistered());
  client.SendRequest(M_VOLUME, 9, KSLCallback(), "");
  ASSERT_TRUE(waitFor([&] { return gate.arrived() == 1; }));
  // The thread is held in the network; all of this returns.
  for (int n = 0; n < 100; ++n) {
    EXPECT_EQ(0, client.SendRequest(M_PLATFORM_STATUS, 0, KSLCallback(), ""));
    EXPECT_EQ(0, client.Poll(0));
  }
  client.PushEvent(G_GAME_START, "");
  client.calculateApproximateWaitTime(-1);
  EXPECT_TRUE(client.IsRegistered());
  EXPECT_TRUE(client.CommunicationEnabled());
  EXPECT_EQ(1, gate.arrived());
  gate.open();
}

TEST(TKSLClient, ACallSentWithCommunicationDisabledLosesOnePassOnly) {
  TestClient client(0);
  ASSERT_TRUE(client.startRegistered());
  client.DisableCommunication();
  client.SendRequest(M_VOLUME, 0, KSLCallback(), "");
  EXPECT_TRUE(waitFor([&] { return client.wire.requests("system.volume").size() == 1; }));
  EXPECT_FALSE(client.CommunicationEnabled());
}

TEST(TKSLClient, AFailingPackageIsSentThreeTimesWithOneNumber) {
  TestClient client(0);
  client.wire.answer("game.pushEvents", replyXml(errorStruct(E_UNSYNC, "out of step")));
  ASSERT_TRUE(client.startRegistered());
  client.PushEvent(G_GAME_START, "");
  const Note note{M_PUSHEVENTS, E_UNSYNC, "out of step"};
  ASSERT_TRUE(client.pollUntil([&] { return client.listener.errors.size() == 3; }));
  EXPECT_EQ((std::vector<Note>{note, note, note}), client.listener.errors);
  client.wire.answer("game.pushEvents", replyXml("<int>1</int>"));
  client.PushEvent(G_GAME_END, "");
  ASSERT_TRUE(waitFor([&] { return client.wire.requests("game.pushEvents").size() == 4; }));
  client.Stop();
  const std::vector<std::string> requests = client.wire.requests("game.pushEvents");
  ASSERT_EQ(4U, requests.size());
  EXPECT_EQ(requests[0], requests[1]);
  EXPECT_EQ(requests[0], requests[2]);
  EXPECT_NE(requests[0], requests[3]);
  EXPECT_NE(std::string::npos, requests[3].find("<i4>0</i4>"));
}

TEST(TKSLClient, NoOtherMethodIsRetried) {
  TestClient client(0);
  client.wire.answer("system.volume", failing());
  ASSERT_TRUE(client.startRegistered());
  client.SendRequest(M_VOLUME, 0, KSLCallback(), "");
  client.SendRequest(M_BYE, 0, KSLCallback(), "");
  ASSERT_TRUE(waitFor([&] { return client.wire.requests("game.bye").size() == 1; }));
  client.Stop();
  client.Poll(0);
  EXPECT_EQ(1U, client.wire.requests("system.volume").size());
  EXPECT_EQ((std::vector<Note>{{M_VOLUME, 1, "sendInternal(): Connection failed"}}), client.listener.errors);
  EXPECT_EQ(7, client.ID());
}

TEST(TKSLClient, ACommunicationErrorRegistersAgainAndLeavesCommunicationEnabled) {
  const FakeClock clock(20000);
  Gate gate;
  TestClient client(0);
  client.SetPopRequestFrequency(3600000);
  ASSERT_TRUE(client.startRegistered());
  EXPECT_TRUE(client.asksForEvents());
  client.wire.answer("system.volume", faultXml(-505, "slow"));
  client.wire.answer("topscreen.init", [&gate](const std::string&) {
    gate.pass();
    return initReply(8);
  });
  client.SendRequest(M_VOLUME, 0, KSLCallback(), "");
  ASSERT_TRUE(waitFor([&] { return gate.arrived() == 1; }));
  EXPECT_EQ(-1, client.ID());
  EXPECT_FALSE(client.asksForEvents());
  EXPECT_TRUE(client.CommunicationEnabled());
  gate.open();
  ASSERT_TRUE(client.pollUntil([&] { return client.ID() == 8 && client.listener.inits.size() == 1; }));
  EXPECT_EQ((std::vector<Note>{{M_VOLUME, E_COMMUNICATION_ERROR, "slow"}}), client.listener.errors);
  EXPECT_TRUE(client.asksForEvents());
}

TEST(TKSLClient, NotRegisteredRegistersAgainAndDisablesCommunicationMeanwhile) {
  const FakeClock clock(20000);
  Gate gate;
  TestClient client(0);
  client.SetPopRequestFrequency(3600000);
  ASSERT_TRUE(client.startRegistered());
  EXPECT_TRUE(client.asksForEvents());
  client.wire.answer("system.volume", replyXml(errorStruct(E_NOT_REGISTERED, "who")));
  client.wire.answer("topscreen.init", [&gate](const std::string&) {
    gate.pass();
    return initReply(8);
  });
  client.SendRequest(M_VOLUME, 0, KSLCallback(), "");
  ASSERT_TRUE(waitFor([&] { return gate.arrived() == 1; }));
  EXPECT_FALSE(client.CommunicationEnabled());
  EXPECT_FALSE(client.asksForEvents());
  gate.open();
  EXPECT_TRUE(waitFor([&] { return client.ID() == 8 && client.CommunicationEnabled(); }));
}

TEST(TKSLClient, AThrowingParserCostsItsCallOnly) {
  TestClient client(2);
  client.AddMethod(
    static_cast<MethodType>(13), "extra.call", [](const xmlrpc_c::value&, int&) -> void* { throw 5; }, nullptr);
  ASSERT_TRUE(client.startRegistered());
  client.SendRequest(static_cast<MethodType>(13), 0, KSLCallback(), "");
  client.SendRequest(M_BYE, 0, KSLCallback(), "");
  ASSERT_TRUE(client.pollUntil([&] { return client.wire.requests("game.bye").size() == 1; }));
  EXPECT_EQ(1U, client.wire.requests("extra.call").size());
  EXPECT_EQ((std::vector<Note>{Stopped}), client.listener.inits);
}

TEST(TKSLClient, PopsBringEventsToTheListener) {
  TestClient client(0);
  client.SetPopRequestFrequency(1);
  client.wire.answer("game.popEvents", replyXml(linktest::arrayXml({linktest::eventXml(105, "<nil/>")})));
  ASSERT_TRUE(client.startRegistered());
  ASSERT_TRUE(client.pollUntil([&] { return client.listener.events.size() >= 3; }));
  EXPECT_EQ(105, client.listener.events[0]);
  EXPECT_TRUE(client.listener.errors.empty());
}

TEST(TKSLClient, ASynchronousCallAnswersOnTheCallingThread) {
  TestClient client(0);
  client.wire.answer("game.getParam", replyXml("<string>value</string>"));
  std::string text;
  const KSLCallback callback = [&text](void* data, bool isError) {
    EXPECT_FALSE(isError);
    text =
      static_cast<std::string>(xmlrpc_c::value_string(static_cast<GetParamResponseData*>(data)->parameterValue));
    return 17;
  };
  EXPECT_EQ(17, client.SendRequestSync(M_GETPARAM, callback, "(s)", "name"));
  EXPECT_EQ("value", text);
  client.wire.answer("game.getParam", failing());
  EXPECT_EQ(0, client.SendRequestSync(M_GETPARAM, KSLCallback(), "(s)", "name"));
  EXPECT_EQ((std::vector<Note>{{M_GETPARAM, 1, "sendInternal(): Connection failed"}}), client.listener.errors);
}

TEST(TKSLClient, ASynchronousCallWithoutARecordIsMinusOneThoughItWentWell) {
  TestClient client(0);
  bool called = false;
  const KSLCallback callback = [&called](void*, bool) {
    called = true;
    return 0;
  };
  EXPECT_EQ(-1, client.SendRequestSync(M_SETPARAM, callback, "(s)", "x"));
  EXPECT_EQ(1U, client.wire.requests().size());
  EXPECT_FALSE(called);
}

TEST(TKSLClient, ASynchronousCallHasNoEmptyFormat) {
  TestClient client(0);
  uint64_t uid = 99;
  int code = 77;
  EXPECT_EQ(nullptr, client.SendRequestSyncRaw(M_VOLUME, KSLCallback(), uid, code, ""));
  EXPECT_EQ(77, code);
  EXPECT_EQ(99U, uid);
  EXPECT_EQ(-1, client.SendRequestSync(M_VOLUME, KSLCallback(), ""));
  EXPECT_TRUE(client.wire.requests().empty());
  client.SendRequestSyncRaw(M_VOLUME, KSLCallback(), uid, code, "()");
  EXPECT_EQ(1U, uid);
  EXPECT_EQ(0, code);
}

TEST(TKSLClient, AQueuedSynchronousCallReturnsWithItsAnswer) {
  TestClient client(0);
  ASSERT_TRUE(client.startRegistered());
  int answers = 0;
  const KSLCallback callback = [&answers](void*, bool) { return ++answers; };
  EXPECT_EQ(0, client.SendRequestSyncQueued(10000, M_VOLUME, 0, callback, ""));
  EXPECT_EQ(1, answers);
  EXPECT_EQ(0, client.SendRequestSyncQueued(10000, M_VOLUME, 0, KSLCallback(), ""));
  EXPECT_EQ(-1, client.SendRequestSyncQueued(10000, M_VOLUME, 0, KSLCallback(), "(i", 1));
}

TEST(TKSLClient, ALateAnswerDoesNotEndTheNextWait) {
  Gate first;
  Gate second;
  TestClient client(0);
  ASSERT_TRUE(client.startRegistered());
  client.wire.answer("system.volume", [&first](const std::string&) {
    first.pass();
    return replyXml("<nil/>");
  });
  client.wire.answer("game.bye", [&second](const std::string&) {
    second.pass();
    return replyXml("<nil/>");
  });
  int late = 0;
  const KSLCallback onLate = [&late](void*, bool) { return ++late; };
  EXPECT_EQ(1, client.SendRequestSyncQueued(3, M_VOLUME, 9, onLate, ""));
  EXPECT_EQ(0, late);
  first.open();
  EXPECT_TRUE(waitFor([&] { return client.wire.requests("system.volume").size() == 1; }));
  // The late answer arrives while this call waits; it must run into its own time-out.
  EXPECT_EQ(1, client.SendRequestSyncQueued(200, M_BYE, 9, KSLCallback(), ""));
  EXPECT_EQ(1, late);
  second.open();
}

TEST(TKSLClient, WhatIsLeftInTheQueuesIsFreed) {
  static int destroyed;
  destroyed = 0;
  {
    TestClient client(0);
    client.SetInitMethod("topscreen.init", linktest::parseTestInit, [](void* data) {
      ++destroyed;
      linktest::destroyTestInit(data);
    });
    client.wire.answer("system.volume", replyXml(errorStruct(E_DUPLICATE, "never told")));
    client.SendRequest(M_VOLUME, 2, KSLCallback(), "");
    client.SendRequest(M_INIT, 1, KSLCallback(), "");
    client.SendRequest(M_INIT, 1, KSLCallback(), "");
    client.sendAll();
    client.SendRequest(M_GETPARAM, 0, KSLCallback(), "(s)", "never sent");
    EXPECT_EQ(0, destroyed);
  }
  EXPECT_EQ(2, destroyed);
}

TEST(TKSLClient, TheAverageIsTheMeanOfAllCalls) {
  FakeClock clock(1000);
  TestClient client(0);
  const Uint32 durations[] = {10, 20, 60};
  size_t n = 0;
  client.wire.answer("system.volume", [&](const std::string&) {
    clock.advance(durations[n++]);
    return replyXml("<nil/>");
  });
  const unsigned int means[] = {10, 15, 30};
  for (const unsigned int mean : means) {
    client.SendRequestSync(M_VOLUME, KSLCallback(), "()");
    EXPECT_EQ(mean, client.averageOf(M_VOLUME));
  }
}
