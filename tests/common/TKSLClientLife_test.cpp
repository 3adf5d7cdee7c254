// Details of starting, registering and stopping that TKSLClient_test.cpp does not need.
#include <gtest/gtest.h>
#include <pthread.h>

#include <algorithm>
#include <atomic>
#include <limits>
#include <thread>
#include <xmlrpc-c/girerr.hpp>

#include "LinkTestSupport.h"
#include "tests/support/FakeClock.h"

using linktest::Beside;
using linktest::Gate;
using linktest::initReply;
using linktest::Note;
using linktest::TestClient;
using linktest::waitFor;

namespace {

const Note Failed{M_INIT, 1, "sendInternal(): Connection failed"};
const Note Stopped{M_INIT, E_COMMUNICATION_ERROR, "Client timed out and stopped!"};

linktest::FakeTransport::Answer failing() {
  return [](const std::string&) -> std::string { throw girerr::error("refused"); };
}

}  // namespace

TEST(TKSLClientLife, TheThreadHasItsName) {
  TestClient client(0);
  std::string name;
  client.wire.answer("topscreen.init", [&name](const std::string&) {
    char text[16];
    EXPECT_EQ(0, pthread_getname_np(pthread_self(), text, sizeof text));
    name = text;
    return initReply(7);
  });
  ASSERT_EQ(0, client.Start(true, 0));
  EXPECT_EQ("KSLClient:RPC", name);
}

TEST(TKSLClientLife, EveryFailedAttemptIsFollowedByItsPause) {
  TestClient client(0);
  client.wire.answer("topscreen.init", failing());
  EXPECT_EQ(-1, client.Start(true, 2));
  EXPECT_EQ(client.wire.requests().size(), client.pausesSoFar().size());
  TestClient good(0);
  ASSERT_EQ(0, good.Start(true, 2));
  EXPECT_TRUE(good.pausesSoFar().empty());
}

// A synchronous call waits through all of it.
TEST(TKSLClientLife, ThePauseIsSpentWithTheNetworkHeld) {
  Gate gate;
  TestClient client(0);
  client.wire.answer("topscreen.init", failing());
  client.mDelay = [&gate](Uint32) { gate.pass(); };
  ASSERT_EQ(0, client.Start(false, -1));
  ASSERT_TRUE(waitFor([&] { return gate.arrived() == 1; }));
  const Beside synchronous([&client] { client.SendRequestSync(M_VOLUME, KSLCallback(), "()"); });
  const Beside queued([&client] {
    client.Poll(0);
    client.SendRequest(M_BYE, 9, KSLCallback(), "");
  });
  EXPECT_TRUE(queued.ends()) << "the queues are held";
  EXPECT_EQ(std::vector<Note>{Failed}, client.listener.inits);
  EXPECT_TRUE(synchronous.isHeldUp());
  client.wire.answer("topscreen.init", initReply(7));
  gate.open();
  EXPECT_TRUE(synchronous.ends());
  EXPECT_TRUE(client.pollUntil([&] { return client.IsRegistered(); }));
  client.Stop();
  std::vector<std::string> methods;
  for (const std::string& request : client.wire.requests()) methods.push_back(linktest::methodOf(request));
  ASSERT_LE(3U, methods.size());
  EXPECT_EQ("topscreen.init", methods[1]) << "the call came between two attempts";
}

TEST(TKSLClientLife, TheEndOfASeriesIsToldOnStandardOutput) {
  TestClient client(0);
  client.wire.answer("topscreen.init", failing());
  testing::internal::CaptureStdout();
  client.Start(true, 0);
  std::fflush(stdout);
  EXPECT_EQ(0U, testing::internal::GetCapturedStdout().find("!!!! KSLCLIENT:: ERROR in communication thread!\n"));
}

TEST(TKSLClientLife, ARestartTriesFourTimes) {
  TestClient client(0);
  client.wire.answer("topscreen.init", failing());
  EXPECT_EQ(-1, client.Restart());
  EXPECT_FALSE(client.Running());
  client.Poll(0);
  ASSERT_LE(5U, client.listener.inits.size());
  EXPECT_EQ((std::vector<Note>{Failed, Failed, Failed, Failed, Stopped}),
            (std::vector<Note>(client.listener.inits.begin(), client.listener.inits.begin() + 5)));
}

// An identifier outlives a stop, and a start looks at nothing else: it goes on trying.
TEST(TKSLClientLife, AFailedRestartOfAClientThatHadAnIdentifierCountsAsGood) {
  TestClient client(0);
  ASSERT_TRUE(client.startRegistered());
  client.wire.answer("topscreen.init", failing());
  EXPECT_EQ(0, client.Restart());
  EXPECT_TRUE(client.Running());
  EXPECT_EQ(7, client.ID());
  client.wire.answer("topscreen.init", initReply(8));
  EXPECT_TRUE(client.pollUntil([&] { return client.ID() == 8; }));
}

TEST(TKSLClientLife, ARestartOfAStoppedClientStartsIt) {
  TestClient client(0);
  EXPECT_EQ(0, client.Restart());
  EXPECT_EQ(7, client.ID());
}

// The registration looks at nothing but its answers: only a service that answers ends it.
TEST(TKSLClientLife, StopWaitsForARegistrationThatIsTriedForEver) {
  TestClient client(0);
  client.wire.answer("topscreen.init", failing());
  ASSERT_EQ(0, client.Start(false, -1));
  ASSERT_TRUE(waitFor([&] { return client.wire.requests().size() >= 2; }));
  std::atomic<bool> stopped{false};
  std::atomic<bool> stopping{false};
  std::thread other([&] {
    stopping = true;
    EXPECT_EQ(0, client.Stop());
    stopped = true;
  });
  ASSERT_TRUE(waitFor([&] { return stopping.load(); }));
  const size_t before = client.wire.requests().size();
  EXPECT_TRUE(waitFor([&] { return client.wire.requests().size() >= before + 50; }));
  EXPECT_FALSE(stopped);
  client.wire.answer("topscreen.init", initReply(7));
  other.join();
  EXPECT_TRUE(stopped);
}

TEST(TKSLClientLife, StopEndsARegistrationThatHasItsLimit) {
  TestClient client(0);
  client.wire.answer("topscreen.init", failing());
  ASSERT_EQ(0, client.Start(false, 3));
  EXPECT_EQ(0, client.Stop());
  EXPECT_FALSE(client.Running());
}

TEST(TKSLClientLife, AfterAStopTheNextStartRegistersAnew) {
  TestClient client(0);
  ASSERT_TRUE(client.startRegistered());
  client.Stop();
  EXPECT_EQ(7, client.ID());
  client.wire.answer("topscreen.init", initReply(8));
  EXPECT_EQ(0, client.Start(false, 0));
  EXPECT_TRUE(waitFor([&] { return client.ID() == 8; }));
  EXPECT_EQ(2U, client.wire.requests("topscreen.init").size());
}

TEST(TKSLClientLife, PackagesAreNumberedOnAcrossAStop) {
  TestClient client(0);
  for (size_t n = 1; n <= 2; ++n) {
    ASSERT_TRUE(client.startRegistered());
    client.PushEvent(G_LOG, "");
    ASSERT_TRUE(waitFor([&] { return client.wire.requests("game.pushEvents").size() == n; }));
    client.Stop();
  }
  const std::vector<std::string> packages = client.wire.requests("game.pushEvents");
  EXPECT_NE(std::string::npos, packages[0].find("<i4>0</i4></value></param>"));
  EXPECT_NE(std::string::npos, packages[1].find("<i4>1</i4></value></param>"));
}

TEST(TKSLClientLife, AStartOfARunningClientLeavesItsNumberOfAttempts) {
  Gate gate;
  TestClient client(0);
  client.wire.answer("topscreen.init", [&gate](const std::string&) -> std::string {
    gate.pass();
    throw girerr::error("refused");
  });
  const auto attemptsUntilTheEnd = [&client] {
    std::vector<Note>& inits = client.listener.inits;
    inits.clear();
    EXPECT_TRUE(client.pollUntil([&] { return std::count(inits.begin(), inits.end(), Stopped) > 0; }));
    return std::find(inits.begin(), inits.end(), Stopped) - inits.begin();
  };
  ASSERT_EQ(0, client.Start(false, 5));
  ASSERT_TRUE(waitFor([&] { return gate.arrived() == 1; }));
  EXPECT_EQ(1, client.Start(true, 9));
  EXPECT_EQ(1, client.Start(false, 9));
  gate.open();
  EXPECT_EQ(6, attemptsUntilTheEnd());
  client.Stop();
  client.Poll(0);
  ASSERT_EQ(0, client.Start(false, 9));
  EXPECT_EQ(10, attemptsUntilTheEnd());
}

TEST(TKSLClientLife, AStartOfARunningClientLeavesTheQuestionAboutTheFirstOneOpen) {
  TestClient client(0);
  ASSERT_EQ(0, client.Start(false, 0));
  client.SendRequest(M_VOLUME, 9, KSLCallback(), "");
  ASSERT_TRUE(waitFor([&] { return client.wire.requests("system.volume").size() == 1; }));
  EXPECT_EQ(1, client.Start(false, 0));
  EXPECT_TRUE(client.IsRegistered());
}

TEST(TKSLClientLife, WithoutRegistrationNothingCountsAsStartedBeforeTheFirstCall) {
  TestClient client(0);
  client.SetRegisterRequired(false);
  client.RegisterID(5);  // what is asked about is the start alone
  ASSERT_EQ(0, client.Start(false, 0));
  for (int n = 0; n < 50; ++n) {
    SDL_Delay(1);
    ASSERT_FALSE(client.IsRegistered());
  }
  client.SendRequest(M_VOLUME, 0, KSLCallback(), "");
  EXPECT_TRUE(waitFor([&] { return client.IsRegistered(); }));
  EXPECT_TRUE(waitFor([&] { return client.wire.requests("system.volume").size() == 1; }));
  EXPECT_EQ(5, client.ID());
  EXPECT_TRUE(client.Running());
}

TEST(TKSLClientLife, AStartedClientThatLosesItsIdentifierGoesOn) {
  TestClient client(0);
  ASSERT_TRUE(client.startRegistered());
  client.RegisterID(-1);
  EXPECT_FALSE(client.IsRegistered());
  EXPECT_TRUE(client.Running());
  client.RegisterID(0);
  EXPECT_FALSE(client.IsRegistered());
  client.RegisterID(1);
  EXPECT_TRUE(client.IsRegistered());
}

TEST(TKSLClientLife, TheSmallestAndTheLargestIdentifier) {
  for (const int id : {1, std::numeric_limits<int>::max()}) {
    TestClient client(0);
    client.wire.answer("topscreen.init", initReply(id));
    EXPECT_EQ(0, client.Start(true, 0));
    EXPECT_EQ(id, client.ID());
  }
}

TEST(TKSLClientLife, AnAnswerWithoutAnIdentifierTakesTheOldOneAway) {
  const FakeClock clock(20000);
  for (const int id : {0, -1, std::numeric_limits<int>::min()}) {
    TestClient client(0);
    client.RegisterID(5);
    client.wire.answer("topscreen.init", initReply(id));
    EXPECT_EQ(-1, client.Start(true, 0));
    EXPECT_EQ(-1, client.ID());
    EXPECT_FALSE(client.asksForEvents());
    EXPECT_FALSE(client.CommunicationEnabled());
    EXPECT_EQ((Note{M_INIT, 0, ""}), client.listener.inits.at(0));
  }
}

// So a start counts as good, for it looks at nothing else.
TEST(TKSLClientLife, AFailedAttemptLeavesTheIdentifier) {
  for (const ErrorTypes code : {E_COMMUNICATION_ERROR, E_SERVER_FULL}) {
    TestClient client(0);
    client.RegisterID(5);
    client.wire.answer("topscreen.init", linktest::replyXml(linktest::errorStruct(code, "no")));
    EXPECT_EQ(0, client.Start(true, 0));
    EXPECT_EQ(5, client.ID());
    EXPECT_EQ((Note{M_INIT, code, "no"}), client.listener.inits.at(0));
  }
}

TEST(TKSLClientLife, AnAnswerOfWhichNothingCanBeMadeOrNobodyHearsDoesNotRegister) {
  const FakeClock clock(20000);
  for (const bool listens : {true, false}) {
    TestClient client(0);
    client.RegisterID(5);
    if (listens)
      client.SetInitMethod(
        "topscreen.init", [](const xmlrpc_c::value&, int&) -> void* { return nullptr; }, nullptr);
    else
      client.SetListener(nullptr);
    EXPECT_EQ(0, client.Start(true, 0));
    client.Stop();
    EXPECT_EQ(5, client.ID());
    EXPECT_FALSE(client.asksForEvents());
    EXPECT_FALSE(client.CommunicationEnabled());
    EXPECT_EQ(client.wire.requests().size(), client.pausesSoFar().size()) << "none of the attempts has succeeded";
    if (!listens) continue;
    EXPECT_EQ((Note{M_INIT, 0, "no record"}), client.listener.inits.at(0));
    EXPECT_EQ(Stopped, client.listener.inits.at(1));
  }
}

// The listener only reads the record, and before anybody can free it.
TEST(TKSLClientLife, TheIdentifierIsReadBeforeTheRecordIsQueued) {
  struct Reader : linktest::NotingListener {
    int getIDFromInitData(void* data) override {
      gate.pass();
      return linktest::NotingListener::getIDFromInitData(data);
    }
    Gate gate;
  };
  Reader reader;
  TestClient client(0);
  client.SetListener(&reader);
  ASSERT_EQ(0, client.Start(false, 0));
  ASSERT_TRUE(waitFor([&] { return reader.gate.arrived() == 1; }));
  EXPECT_EQ(0, client.Poll(0));
  EXPECT_TRUE(reader.inits.empty());
  reader.gate.open();
  EXPECT_TRUE(client.pollUntil([&] { return !reader.inits.empty(); }));
}

TEST(TKSLClientLife, QueuedCallsSurviveTheLossOfTheRegistration) {
  TestClient client(0);
  ASSERT_TRUE(client.startRegistered());
  client.wire.answer("system.volume", linktest::replyXml(linktest::errorStruct(E_NOT_REGISTERED, "who")));
  client.wire.answer("topscreen.init", initReply(8));
  client.BeginEventStack();
  client.SendRequest(M_VOLUME, 9, KSLCallback(), "");
  client.SendRequest(M_GETPARAM, 8, KSLCallback(), "(s)", "name");
  client.SendRequest(M_DENOMINATION, 7, KSLCallback(), "");
  client.EndEventStack();
  ASSERT_TRUE(waitFor([&] { return client.wire.requests("system.denomination").size() == 1; }));
  client.Stop();
  std::vector<std::string> methods;
  for (const std::string& request : client.wire.requests())
    if (linktest::methodOf(request) != "game.popEvents") methods.push_back(linktest::methodOf(request));
  EXPECT_EQ((std::vector<std::string>{"topscreen.init", "system.volume", "topscreen.init", "game.getParam",
                                      "system.denomination"}),
            methods);
  EXPECT_NE(std::string::npos, client.wire.requests("game.getParam")[0].find("<i4>8</i4>"));
}
