// Calls that wait for their answer.
#include <gtest/gtest.h>

#include <algorithm>
#include <limits>

#include "LinkTestSupport.h"
#include "tests/support/FakeClock.h"

using linktest::errorStruct;
using linktest::Note;
using linktest::replyXml;
using linktest::requestXml;
using linktest::TestClient;

namespace {

// A client whose answers wait for Poll, one a pass of a queued call that is waited for.
class Waiting {
 public:
  Waiting() { client.SetRegisterRequired(false); }

  // Somebody else's, `count` of them.
  void others(int count) {
    const auto handle = [this](void*, bool) { return ++handled; };
    for (int n = 0; n < count; ++n) client.SendRequest(M_BYE, 9, handle, "");
    client.sendSome(static_cast<size_t>(count));
  }

  // Somebody else's, which takes so long that the answer to the call for the volume is the next one.
  void anotherThatOutlastsTheCall() {
    const auto wait = [this](void*, bool) {
      EXPECT_TRUE(linktest::waitFor([&] { return client.wire.requests("system.volume").size() == 1; }));
      return client.Stop();
    };
    client.SendRequest(M_BYE, 9, wait, "");
    client.sendSome(1);
    EXPECT_EQ(0, client.Start(false, 0));
  }

  TestClient client{0};
  int handled = 0;
};

}  // namespace

TEST(TKSLClientSync, AnAnswerInTheVeryLastPassIsTooLateForTheResult) {
  for (const int timeout : {2, 3}) {
    Waiting waiting;
    waiting.anotherThatOutlastsTheCall();
    int answered = 0;
    const KSLCallback callback = [&answered](void*, bool) { return ++answered; };
    EXPECT_EQ(timeout == 2 ? 1 : 0, waiting.client.SendRequestSyncQueued(timeout, M_VOLUME, 0, callback, ""));
    EXPECT_EQ(1, answered);
  }
}

TEST(TKSLClientSync, AQueuedCallWithoutACallbackIsAnsweredAllTheSame) {
  Waiting waiting;
  waiting.anotherThatOutlastsTheCall();
  testing::internal::CaptureStdout();
  EXPECT_EQ(0, waiting.client.SendRequestSyncQueued(100, M_VOLUME, 0, KSLCallback(), ""));
  std::fflush(stdout);
  EXPECT_EQ("", testing::internal::GetCapturedStdout());
}

TEST(TKSLClientSync, AQueuedCallHandsItsAnswerThrough) {
  Waiting waiting;
  TestClient& client = waiting.client;
  client.wire.answer("system.volume", replyXml(errorStruct(E_DUPLICATE, "again")));
  waiting.anotherThatOutlastsTheCall();
  int code = 0;
  const KSLCallback callback = [&code](void* data, bool isError) {
    code = isError && data != nullptr ? static_cast<KSLError*>(data)->errorCode : 0;
    return 23;
  };
  EXPECT_EQ(0, client.SendRequestSyncQueued(100, M_VOLUME, 0, callback, ""));
  EXPECT_EQ(E_DUPLICATE, code);
  EXPECT_TRUE(client.listener.errors.empty());
}

TEST(TKSLClientSync, TheTimeoutCountsPassesOfOneAnswerEach) {
  for (const int timeout : {std::numeric_limits<int>::min(), 0, 1, 4}) {
    Waiting waiting;
    waiting.others(10);
    EXPECT_EQ(1, waiting.client.SendRequestSyncQueued(timeout, M_VOLUME, 0, KSLCallback(), ""));
    EXPECT_EQ(std::max(1, timeout), waiting.handled);
  }
}

TEST(TKSLClientSync, AQueuedCallKeepsItsPlaceInTheQueue) {
  TestClient client(0);
  client.SendRequest(M_BYE, 5, KSLCallback(), "");
  client.SendRequest(M_GETPARAM, 4, KSLCallback(), "");
  client.SendRequest(M_GETCOUNTER, 3, KSLCallback(), "");
  client.SendRequestSyncQueued(1, M_VOLUME, 4, KSLCallback(), "(i)", 5);
  EXPECT_EQ((std::vector<std::string>{
              requestXml("game.bye", {"<i4>-1</i4>"}), requestXml("game.getParam", {"<i4>-1</i4>"}),
              requestXml("system.volume", {"<i4>5</i4>"}), requestXml("game.getCounter", {"<i4>-1</i4>"})}),
            client.sendAll());
}

TEST(TKSLClientSync, ARefusedCallIsNotWaitedFor) {
  Waiting waiting;
  waiting.others(3);
  EXPECT_EQ(-1, waiting.client.SendRequestSyncQueued(100, M_VOLUME, 0, KSLCallback(), "(i"));
  EXPECT_EQ(0, waiting.handled);
  EXPECT_TRUE(waiting.client.sendAll().empty());
}

TEST(TKSLClientSync, ASynchronousCallGoesPastTheQueueWithItsOwnNumber) {
  TestClient client(0);
  client.SendRequest(M_BYE, 100, KSLCallback(), "");
  uint64_t uid = 0;
  int code = 99;
  EXPECT_EQ(nullptr, client.SendRequestSyncRaw(M_VOLUME, KSLCallback(), uid, code, "()"));
  EXPECT_EQ(2U, uid);
  EXPECT_EQ(0, code);
  EXPECT_EQ(std::vector<std::string>{requestXml("system.volume", {})}, client.wire.requests());
  EXPECT_EQ(std::vector<std::string>{requestXml("game.bye", {"<i4>-1</i4>"})}, client.sendAll());
}

// Only the client's own thread drops the registration over a network that fails; what the service says of the
// client itself holds for any thread.
TEST(TKSLClientSync, ACommunicationErrorOfASynchronousCallLeavesTheRegistration) {
  const FakeClock clock(20000);
  for (const std::string& reply :
       {replyXml(errorStruct(E_COMMUNICATION_ERROR, "lost")), linktest::faultXml(-505, "lost")}) {
    TestClient client(0);
    client.SetPopRequestFrequency(3600000);
    ASSERT_TRUE(client.startRegistered());
    client.wire.answer("system.volume", reply);
    EXPECT_EQ(0, client.SendRequestSync(M_VOLUME, KSLCallback(), "()"));
    EXPECT_EQ((std::vector<Note>{{M_VOLUME, E_COMMUNICATION_ERROR, "lost"}}), client.listener.errors);
    EXPECT_EQ(7, client.ID());
    EXPECT_TRUE(client.CommunicationEnabled() && client.asksForEvents());
    client.SendRequest(M_BYE, 0, KSLCallback(), "");
    ASSERT_TRUE(linktest::waitFor([&] { return client.wire.requests("game.bye").size() == 1; }));
    EXPECT_EQ(1U, client.wire.requests("topscreen.init").size());
  }
}

TEST(TKSLClientSync, TheResultIsThatOfTheCallbackOrTheListener) {
  TestClient client(0);
  client.wire.answer("system.volume", replyXml(errorStruct(E_DUPLICATE, "again")));
  EXPECT_EQ(31, client.SendRequestSync(
                  M_VOLUME, [](void*, bool isError) { return isError ? 31 : 0; }, "()"));
  EXPECT_TRUE(client.listener.errors.empty());
  EXPECT_EQ(0, client.SendRequestSync(M_VOLUME, KSLCallback(), "()"));
  EXPECT_EQ((std::vector<Note>{{M_VOLUME, E_DUPLICATE, "again"}}), client.listener.errors);
}
