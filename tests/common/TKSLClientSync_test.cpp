// Calls that wait for their answer. No thread of the client runs where nothing else is said.
#include <gtest/gtest.h>

#include <limits>

#include "LinkTestSupport.h"

using linktest::errorStruct;
using linktest::Note;
using linktest::replyXml;
using linktest::TestClient;

namespace {

// Puts answers into the client's queue that are handed out one a pass.
struct Answers {
  explicit Answers(TestClient& client) : client(client) {}

  // Somebody else's, `count` of them.
  void others(int count) {
    for (int n = 0; n < count; ++n) {
      client.mResponseQueue.push(
        MethodResponse{M_VOLUME, [this](void*, bool) { return ++handled; }, nullptr, false, 1});
    }
  }
  // One that has the queued call answered: the answer is the next in the queue.
  void answerTheCall(bool isError) {
    client.mResponseQueue.push(MethodResponse{
      M_VOLUME,
      [this, isError](void*, bool) {
        const MethodCall call = client.mCallQueue.front();
        client.dropCalls();
        wrapper = call.callback;
        void* data = isError ? new KSLError(E_DUPLICATE, "again") : nullptr;
        client.mResponseQueue.push(MethodResponse{call.methodID, call.callback, data, isError, call.requestUID});
        return 0;
      },
      nullptr, false, 1});
  }

  TestClient& client;
  KSLCallback wrapper;
  int handled = 0;
};

}  // namespace

TEST(TKSLClientSync, AnAnswerInTheVeryLastPassIsTooLateForTheResult) {
  for (const int timeout : {2, 3}) {
    TestClient client(0);
    Answers answers(client);
    answers.answerTheCall(false);
    int answered = 0;
    const KSLCallback callback = [&answered](void*, bool) { return ++answered; };
    EXPECT_EQ(timeout == 2 ? 1 : 0, client.SendRequestSyncQueued(timeout, M_VOLUME, 0, callback, ""));
    EXPECT_EQ(1, answered);
  }
}

TEST(TKSLClientSync, AQueuedCallWithoutACallbackIsAnsweredAllTheSame) {
  TestClient client(0);
  Answers answers(client);
  answers.answerTheCall(false);
  testing::internal::CaptureStdout();
  EXPECT_EQ(0, client.SendRequestSyncQueued(100, M_VOLUME, 0, KSLCallback(), ""));
  std::fflush(stdout);
  EXPECT_EQ("", testing::internal::GetCapturedStdout());
  ASSERT_TRUE(answers.wrapper);
  EXPECT_EQ(0, answers.wrapper(nullptr, false));
}

TEST(TKSLClientSync, AQueuedCallHandsAnswerAndResultThrough) {
  TestClient client(0);
  Answers answers(client);
  answers.answerTheCall(true);
  int code = 0;
  const KSLCallback callback = [&code](void* data, bool isError) {
    code = isError && data != nullptr ? static_cast<KSLError*>(data)->errorCode : 0;
    return 23;
  };
  EXPECT_EQ(0, client.SendRequestSyncQueued(100, M_VOLUME, 0, callback, ""));
  EXPECT_EQ(E_DUPLICATE, code);
  EXPECT_EQ(23, answers.wrapper(nullptr, false));
  EXPECT_TRUE(client.listener.errors.empty());
}

TEST(TKSLClientSync, TheTimeoutCountsPassesOfOneAnswerEach) {
  for (const int timeout : {std::numeric_limits<int>::min(), 0, 1, 4}) {
    TestClient client(0);
    Answers answers(client);
    answers.others(10);
    EXPECT_EQ(1, client.SendRequestSyncQueued(timeout, M_VOLUME, 0, KSLCallback(), ""));
    EXPECT_EQ(std::max(1, timeout), answers.handled);
    client.dropCalls();
  }
}

TEST(TKSLClientSync, AQueuedCallKeepsItsPlaceInTheQueue) {
  TestClient client(0);
  client.SendRequest(M_BYE, 5, KSLCallback(), "");
  client.SendRequest(M_GETCOUNTER, 3, KSLCallback(), "");
  client.SendRequestSyncQueued(1, M_VOLUME, 4, KSLCallback(), "(i)", 5);
  ASSERT_EQ(3U, client.mCallQueue.size());
  EXPECT_EQ(M_VOLUME, client.mCallQueue[1].methodID);
  EXPECT_EQ(4, client.mCallQueue[1].priority);
  EXPECT_EQ(3U, client.mCallQueue[1].requestUID);
}

TEST(TKSLClientSync, ARefusedCallIsNotWaitedFor) {
  TestClient client(0);
  Answers answers(client);
  answers.others(3);
  EXPECT_EQ(-1, client.SendRequestSyncQueued(100, M_VOLUME, 0, KSLCallback(), "(i"));
  EXPECT_EQ(0, answers.handled);
  EXPECT_TRUE(client.mCallQueue.empty());
}

TEST(TKSLClientSync, ASynchronousCallGoesPastTheQueueWithItsOwnNumber) {
  TestClient client(0);
  client.SendRequest(M_BYE, 100, KSLCallback(), "");
  uint64_t uid = 0;
  int code = 99;
  EXPECT_EQ(nullptr, client.SendRequestSyncRaw(M_VOLUME, KSLCallback(), uid, code, "()"));
  EXPECT_EQ(2U, uid);
  EXPECT_EQ(0, code);
  EXPECT_EQ(1U, client.mCallQueue.size());
  EXPECT_EQ(1U, client.wire.requests().size());
  EXPECT_TRUE(linktest::unlocked(client.KSL_send_mutex));
}

// Only the client's own thread drops the registration over a network that fails; what the service says of the
// client itself holds for any thread.
TEST(TKSLClientSync, ACommunicationErrorOfASynchronousCallLeavesTheRegistration) {
  TestClient client(0);
  client.RegisterID(7);
  client.Registered = true;
  client.EnableCommunication();
  client.TogglePopRequests(true);
  for (const std::string& reply :
       {replyXml(errorStruct(E_COMMUNICATION_ERROR, "lost")), linktest::faultXml(-505, "lost")}) {
    client.wire.answer("system.volume", reply);
    EXPECT_EQ(0, client.SendRequestSync(M_VOLUME, KSLCallback(), "()"));
    EXPECT_EQ((std::vector<Note>{{M_VOLUME, E_COMMUNICATION_ERROR, "lost"}}), client.listener.errors);
    EXPECT_EQ(7, client.ID());
    EXPECT_TRUE(client.Registered && client.CommunicationEnabled() && client.mPopEnabled);
    client.listener.errors.clear();
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
