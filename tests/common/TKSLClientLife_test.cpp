// Details of starting, registering and stopping that TKSLClient_test.cpp does not need.
#include <gtest/gtest.h>
#include <pthread.h>

#include <algorithm>
#include <atomic>
#include <limits>
#include <thread>
#include <xmlrpc-c/girerr.hpp>

#include "LinkTestSupport.h"

using linktest::Gate;
using linktest::initReply;
using linktest::Note;
using linktest::TestClient;
using linktest::TestInitData;
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
  EXPECT_FALSE(linktest::unlocked(client.KSL_send_mutex));
  EXPECT_TRUE(linktest::unlocked(client.KSL_call_mutex));
  EXPECT_TRUE(linktest::unlocked(client.KSL_response_mutex));
  client.wire.answer("topscreen.init", initReply(7));
  gate.open();
  EXPECT_TRUE(client.pollUntil([&] { return client.IsRegistered(); }));
  client.Stop();
  EXPECT_TRUE(linktest::unlocked(client.KSL_send_mutex));
}

TEST(TKSLClientLife, TheEndOfASeriesIsToldOnStandardOutput) {
  TestClient client(0);
  client.wire.answer("topscreen.init", failing());
  testing::internal::CaptureStdout();
  client.Start(true, 0);
  std::fflush(stdout);
  EXPECT_EQ(0U, testing::internal::GetCapturedStdout().find("!!!! KSLCLIENT:: ERROR in communication thread!\n"));
}

TEST(TKSLClientLife, TheEndOfASeriesHasTheNumberOfItsLastCall) {
  TestClient client(0);
  client.wire.answer("topscreen.init", failing());
  ASSERT_EQ(0, client.Start(false, 2));
  ASSERT_TRUE(waitFor([&] { return client.wire.requests().size() >= 4; }));
  client.Stop();
  for (uint64_t n = 1; n <= 4; ++n) {
    ASSERT_FALSE(client.mResponseQueue.empty());
    const MethodResponse& response = client.mResponseQueue.front();
    auto* error = static_cast<KSLError*>(response.responseData);
    EXPECT_EQ(M_INIT, response.respondingToMethodID);
    EXPECT_TRUE(response.isError);
    EXPECT_FALSE(response.callback);
    EXPECT_EQ(n == 4 ? Stopped.text : Failed.text, *error->errorDescription);
    EXPECT_EQ(n == 4 ? 3 : n, response.requestUID);
    delete error;
    client.mResponseQueue.pop();
  }
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
  EXPECT_FALSE(client.Registered);
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
  EXPECT_FALSE(client.Registered);
}

TEST(TKSLClientLife, AfterAStopTheNextStartRegistersAnew) {
  TestClient client(0);
  ASSERT_TRUE(client.startRegistered());
  client.Stop();
  EXPECT_FALSE(client.Registered);
  EXPECT_EQ(7, client.ID());
  client.wire.answer("topscreen.init", initReply(8));
  EXPECT_EQ(0, client.Start(true, 0));
  EXPECT_EQ(8, client.ID());
  EXPECT_EQ(2U, client.wire.requests("topscreen.init").size());
}

TEST(TKSLClientLife, PackagesAreNumberedOnAcrossAStop) {
  TestClient client(0);
  client.wire.answer("game.pushEvents", linktest::replyXml("<int>1</int>"));
  for (int n = 1; n <= 2; ++n) {
    ASSERT_TRUE(client.startRegistered());
    client.PushEvent(G_LOG, "");
    ASSERT_TRUE(waitFor([&] { return client.mEventPackageNumber == n; }));
    client.Stop();
  }
  EXPECT_NE(std::string::npos, client.wire.requests("game.pushEvents")[1].find("<i4>1</i4></value></param>"));
  EXPECT_EQ(0, TestClient(0).mEventPackageNumber);
}

TEST(TKSLClientLife, AStartOfARunningClientChangesNothing) {
  TestClient client(0);
  ASSERT_EQ(0, client.Start(false, 5));
  SDL_semaphore* semaphore = client.InitSemaphore;
  EXPECT_EQ(1, client.Start(true, 9));
  EXPECT_EQ(1, client.Start(false, 9));
  EXPECT_EQ(5U, client.NumRetries);
  EXPECT_EQ(semaphore, client.InitSemaphore);
  client.Stop();
  ASSERT_EQ(0, client.Start(false, 9));
  EXPECT_EQ(9U, client.NumRetries);
}

TEST(TKSLClientLife, WithoutRegistrationNothingCountsAsStartedBeforeTheFirstCall) {
  TestClient client(0);
  client.SetRegisterRequired(false);
  ASSERT_EQ(0, client.Start(false, 0));
  for (int n = 0; n < 50; ++n) {
    SDL_Delay(1);
    ASSERT_EQ(0U, SDL_SemValue(client.InitSemaphore));
  }
  client.SendRequest(M_VOLUME, 0, KSLCallback(), "");
  EXPECT_TRUE(waitFor([&] { return SDL_SemValue(client.InitSemaphore) == 1; }));
  EXPECT_TRUE(waitFor([&] { return client.wire.requests("system.volume").size() == 1; }));
  EXPECT_EQ(-1, client.ID());
  EXPECT_TRUE(client.Running());
}

TEST(TKSLClientLife, AStartedClientThatLosesItsIdentifierGoesOn) {
  TestClient client(0);
  ASSERT_TRUE(client.startRegistered());
  EXPECT_EQ(nullptr, client.InitSemaphore);
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
  for (const int id : {0, -1, std::numeric_limits<int>::min()}) {
    TestClient client(0);
    client.RegisterID(5);
    EXPECT_EQ(-1, client.handleInitResponse(new TestInitData{id}, false, 1));
    EXPECT_EQ(-1, client.ID());
    EXPECT_FALSE(client.mPopEnabled);
    EXPECT_FALSE(client.CommunicationEnabled());
  }
}

TEST(TKSLClientLife, AFailedAttemptLeavesTheIdentifier) {
  TestClient client(0);
  client.RegisterID(5);
  EXPECT_EQ(1, client.handleInitResponse(new KSLError(E_COMMUNICATION_ERROR, ""), true, 1));
  EXPECT_EQ(-1, client.handleInitResponse(new KSLError(E_SERVER_FULL, ""), true, 1));
  EXPECT_EQ(5, client.ID());
  EXPECT_EQ(2U, client.mResponseQueue.size());
}

TEST(TKSLClientLife, EveryAttemptIsQueuedWithItsNumber) {
  TestClient client(0);
  client.handleInitResponse(new KSLError(E_SERVER_FULL, ""), true, 3);
  client.handleInitResponse(new TestInitData{0}, false, 4);
  const MethodResponse bad = client.mResponseQueue.front();
  client.mResponseQueue.pop();
  const MethodResponse good = client.mResponseQueue.front();
  client.mResponseQueue.pop();
  EXPECT_TRUE(bad.isError);
  EXPECT_EQ(3U, bad.requestUID);
  EXPECT_EQ(M_INIT, bad.respondingToMethodID);
  EXPECT_FALSE(good.isError);
  EXPECT_EQ(4U, good.requestUID);
  EXPECT_EQ(M_INIT, good.respondingToMethodID);
  delete static_cast<KSLError*>(bad.responseData);
  delete static_cast<TestInitData*>(good.responseData);
}

// The listener only reads the record, and before anybody can free it.
TEST(TKSLClientLife, TheIdentifierIsReadBeforeTheRecordIsQueued) {
  struct Reader : linktest::NotingListener {
    int getIDFromInitData(void* data) override {
      EXPECT_TRUE(client->mResponseQueue.empty());
      return linktest::NotingListener::getIDFromInitData(data);
    }
    TestClient* client = nullptr;
  };
  TestClient client(0);
  Reader reader;
  reader.client = &client;
  client.SetListener(&reader);
  EXPECT_EQ(0, client.handleInitResponse(new TestInitData{6}, false, 1));
  EXPECT_EQ(1U, client.mResponseQueue.size());
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
