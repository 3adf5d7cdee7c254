// What nobody sees from outside: the state of a client that was just made, and the numbers and results that it
// keeps for itself. The other tests of the client look at what it does.
#include <gtest/gtest.h>

#include <memory>
#include <utility>
#include <xmlrpc-c/girerr.hpp>

#include "LinkTestSupport.h"

using linktest::TestInitData;
using linktest::waitFor;

namespace {

class OpenedClient : public linktest::TestClient {
 public:
  using TestClient::TestClient;
  using TKSLClient::handleInitResponse;
  using TKSLClient::handlePopResponse;
  using TKSLClient::handlePushResponse;
  using TKSLClient::InitSemaphore;
  using TKSLClient::mAverageMethodResponseTimes;
  using TKSLClient::mCallQueue;
  using TKSLClient::Methods;
  using TKSLClient::mEventPackageNumber;
  using TKSLClient::mLastGoodResponse;
  using TKSLClient::mLastPopRequest;
  using TKSLClient::mLastPopResponse;
  using TKSLClient::mLockedTimeout;
  using TKSLClient::mMethodCalls;
  using TKSLClient::mMethodCallUID;
  using TKSLClient::mNumMethods;
  using TKSLClient::mPopEnabled;
  using TKSLClient::mPopTargetFrequency;
  using TKSLClient::mResponseQueue;
  using TKSLClient::NumRetries;
  using TKSLClient::Registered;
  using TKSLClient::RegisterRequired;

  // Takes the oldest answer; its record is the caller's.
  MethodResponse take() {
    MethodResponse response = mResponseQueue.front();
    mResponseQueue.pop();
    return response;
  }
};

}  // namespace

TEST(TKSLClientState, OfAClientThatWasJustMade) {
  const OpenedClient client(3);
  EXPECT_EQ(15, client.mNumMethods);
  EXPECT_EQ(15U, client.Methods.size());
  EXPECT_EQ(std::vector<unsigned long>(15, 0), client.mMethodCalls);
  EXPECT_EQ(std::vector<float>(15, 0.0F), client.mAverageMethodResponseTimes.getCopy());
  EXPECT_EQ(12, OpenedClient(0).mNumMethods);
  EXPECT_EQ(nullptr, client.InitSemaphore);
  EXPECT_EQ(0U, client.NumRetries);
  EXPECT_FALSE(client.Registered);
  EXPECT_TRUE(client.RegisterRequired);
  EXPECT_EQ(0U, client.mMethodCallUID);
  EXPECT_EQ(0, client.mEventPackageNumber);
  EXPECT_FALSE(client.mLockedTimeout);
  EXPECT_FALSE(client.mPopEnabled);
  EXPECT_EQ(100U, client.mPopTargetFrequency);
  EXPECT_EQ(0U, client.mLastPopRequest);
  EXPECT_EQ(0U, client.mLastPopResponse);
  EXPECT_EQ(0U, client.mLastGoodResponse.getCopy());
  EXPECT_TRUE(client.mCallQueue.empty());
  EXPECT_TRUE(client.mResponseQueue.empty());
}

TEST(TKSLClientState, TheResultTellsAServiceThatWasNotReachedFromARefusal) {
  OpenedClient client(0);
  EXPECT_EQ(1, client.handleInitResponse(new KSLError(E_COMMUNICATION_ERROR, ""), true, 1));
  EXPECT_EQ(-1, client.handleInitResponse(new KSLError(E_INIT_REJECTED, ""), true, 1));
  EXPECT_EQ(-1, client.handleInitResponse(nullptr, false, 1));
  EXPECT_EQ(-1, client.handleInitResponse(new TestInitData{0}, false, 1));
  EXPECT_EQ(0, client.handleInitResponse(new TestInitData{5}, false, 1));
  client.SetListener(nullptr);
  EXPECT_EQ(-1, client.handleInitResponse(new TestInitData{6}, false, 1));
}

TEST(TKSLClientState, EveryAnswerHasTheNumberOfItsCall) {
  OpenedClient client(0);
  client.SetRegisterRequired(false);
  client.wire.answer("topscreen.init", linktest::replyXml(linktest::errorStruct(E_SERVER_FULL, "")));
  client.SendRequest(M_BYE, 1, KSLCallback(), "");
  client.SendRequest(M_VOLUME, 2, KSLCallback(), "");
  client.PushEvent(G_LOG, "");
  client.PushEvent(G_LOG, "");  // its number goes with it into the package
  client.SendRequest(M_INIT, 0, KSLCallback(), "");
  client.sendSome(4);
  const std::pair<MethodType, uint64_t> expected[] = {{M_VOLUME, 2}, {M_BYE, 1}, {M_PUSHEVENTS, 3}, {M_INIT, 5}};
  for (const auto& [method, number] : expected) {
    ASSERT_FALSE(client.mResponseQueue.empty());
    const MethodResponse response = client.take();
    EXPECT_EQ(method, response.respondingToMethodID);
    EXPECT_EQ(number, response.requestUID);
    EXPECT_EQ(method == M_INIT, response.isError);
    if (response.isError)
      delete static_cast<KSLError*>(response.responseData);
    else if (response.responseData != nullptr)
      client.getMethodInfo(method).DestroyData(response.responseData);
  }
}

TEST(TKSLClientState, TheEndOfASeriesHasTheNumberOfItsLastCall) {
  OpenedClient client(0);
  client.wire.answer("topscreen.init", [](const std::string&) -> std::string { throw girerr::error("refused"); });
  ASSERT_EQ(0, client.Start(false, 2));
  ASSERT_TRUE(waitFor([&] { return client.wire.requests().size() >= 4; }));
  client.Stop();
  for (uint64_t n = 1; n <= 4; ++n) {
    ASSERT_FALSE(client.mResponseQueue.empty());
    const MethodResponse response = client.take();
    const std::unique_ptr<KSLError> error(static_cast<KSLError*>(response.responseData));
    EXPECT_EQ(M_INIT, response.respondingToMethodID);
    EXPECT_TRUE(response.isError);
    EXPECT_FALSE(response.callback);
    EXPECT_EQ(n == 4 ? "Client timed out and stopped!" : "sendInternal(): Connection failed",
              *error->errorDescription);
    EXPECT_EQ(n == 4 ? 3 : n, response.requestUID);
  }
}

TEST(TKSLClientState, ResultsThatPollDoesNotLookAt) {
  OpenedClient client(0);
  KSLError error(E_UNSYNC, "");
  PopResponseData nothing;
  PushResponseData good{1};
  for (const bool listens : {true, false}) {
    if (!listens) client.SetListener(nullptr);
    EXPECT_EQ(0, client.handlePopResponse(&error, true));
    EXPECT_EQ(0, client.handlePopResponse(&nothing, false));
    EXPECT_EQ(0, client.handlePushResponse(&error, true));
    EXPECT_EQ(0, client.handlePushResponse(&good, false));
  }
  client.SendRequestSyncQueued(
    1, M_VOLUME, 0, [](void*, bool) { return 23; }, "");
  EXPECT_EQ(23, client.mCallQueue.at(0).callback(nullptr, false));
  client.SendRequestSyncQueued(1, M_VOLUME, 0, KSLCallback(), "");
  EXPECT_EQ(0, client.mCallQueue.at(1).callback(nullptr, false));
}

// No such package lies in the queue: the one in hand goes out again at once.
TEST(TKSLClientState, APackageThatWasSentBeforeTakesNothingIn) {
  OpenedClient client(0);
  client.PushEvent(G_LOG, "");
  client.mCallQueue.at(0).sendingAttempts = 1;
  client.PushEvent(G_LOG, "");
  EXPECT_EQ(2U, client.mCallQueue.size());
}
