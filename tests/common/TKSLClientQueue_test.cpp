// The order of the calls' queue, and the merging of event packages. No thread runs here.
#include <gtest/gtest.h>

#include <limits>
#include <utility>

#include "LinkTestSupport.h"

using linktest::TestClient;

namespace {

using Entry = std::pair<MethodType, int>;

std::vector<Entry> order(const TestClient& client) {
  std::vector<Entry> entries;
  for (const MethodCall& call : client.mCallQueue) entries.emplace_back(call.methodID, call.priority);
  return entries;
}

int send(TestClient& client, MethodType method, int priority) {
  return client.SendRequest(method, priority, KSLCallback(), "");
}

// A package of that many events.
MethodCall package(int size, int priority) {
  XmlRpcEnv env;
  xmlrpc_value* array = xmlrpc_array_new(env.get());
  for (int n = 0; n < size; ++n) {
    xmlrpc_value* item = xmlrpc_int_new(env.get(), n);
    xmlrpc_array_append_item(env.get(), array, item);
    xmlrpc_DECREF(item);
  }
  return MethodCall{M_PUSHEVENTS, priority, array, 0, KSLCallback(), 0};
}

int queue(TestClient& client, const MethodCall& call) {
  SDL_LockMutex(client.KSL_call_mutex);
  return client.queueMethodCall(call);
}

std::vector<int> packageSizes(const TestClient& client) {
  std::vector<int> sizes;
  for (const MethodCall& call : client.mCallQueue) {
    XmlRpcEnv env;
    sizes.push_back(call.parameters == nullptr ? 0 : xmlrpc_array_size(env.get(), call.parameters));
  }
  return sizes;
}

bool unlocked(const TestClient& client) { return linktest::unlocked(client.KSL_call_mutex); }

}  // namespace

TEST(TKSLClientQueue, HigherPriorityGoesFirstAndEqualsKeepTheirOrder) {
  TestClient client(0);
  send(client, M_VOLUME, 1);
  send(client, M_BYE, 5);
  send(client, M_GETPARAM, 1);
  send(client, M_SETPARAM, 3);
  send(client, M_DENOMINATION, 5);
  send(client, M_GETCOUNTER, 0);
  send(client, M_SETCOUNTER, 9);
  EXPECT_EQ((std::vector<Entry>{{M_SETCOUNTER, 9},
                                {M_BYE, 5},
                                {M_DENOMINATION, 5},
                                {M_SETPARAM, 3},
                                {M_VOLUME, 1},
                                {M_GETPARAM, 1},
                                {M_GETCOUNTER, 0}}),
            order(client));
}

TEST(TKSLClientQueue, IdentifiersCountFromOne) {
  TestClient client(0);
  send(client, M_VOLUME, 1);
  send(client, M_BYE, 1);
  EXPECT_EQ(1U, client.mCallQueue[0].requestUID);
  EXPECT_EQ(2U, client.mCallQueue[1].requestUID);
  EXPECT_EQ(0, client.mCallQueue[0].sendingAttempts);
}

TEST(TKSLClientQueue, APopBehindAPopIsDropped) {
  TestClient client(0);
  EXPECT_EQ(0, send(client, M_POPEVENTS, 2));
  EXPECT_EQ(0, send(client, M_POPEVENTS, 2));
  EXPECT_EQ(1U, client.mCallQueue.size());
  EXPECT_EQ(0, send(client, M_POPEVENTS, 1));
  EXPECT_EQ(1U, client.mCallQueue.size());
  EXPECT_TRUE(unlocked(client));
}

TEST(TKSLClientQueue, APopDirectlyInFrontOfAPopIsDropped) {
  TestClient client(0);
  send(client, M_BYE, 5);
  send(client, M_POPEVENTS, 2);
  EXPECT_EQ(0, send(client, M_POPEVENTS, 3));
  EXPECT_EQ((std::vector<Entry>{{M_BYE, 5}, {M_POPEVENTS, 2}}), order(client));
}

TEST(TKSLClientQueue, APopBehindAPopInTheMiddleIsDropped) {
  for (const int last : {0, 1}) {
    TestClient client(0);
    send(client, M_BYE, 5);
    send(client, M_POPEVENTS, 2);
    send(client, M_PLATFORM_STATUS, last);
    EXPECT_EQ(0, send(client, M_POPEVENTS, 2));
    EXPECT_EQ((std::vector<Entry>{{M_BYE, 5}, {M_POPEVENTS, 2}, {M_PLATFORM_STATUS, last}}), order(client));
    EXPECT_TRUE(unlocked(client));
  }
}

TEST(TKSLClientQueue, APopBetweenTwoOthersIsKept) {
  TestClient client(0);
  send(client, M_BYE, 5);
  send(client, M_PLATFORM_STATUS, 0);
  send(client, M_POPEVENTS, 0);
  EXPECT_EQ(0, send(client, M_POPEVENTS, 2));
  EXPECT_EQ((std::vector<Entry>{{M_BYE, 5}, {M_POPEVENTS, 2}, {M_PLATFORM_STATUS, 0}, {M_POPEVENTS, 0}}),
            order(client));
}

TEST(TKSLClientQueue, OnlyPopsAreDroppedBesideTheirLike) {
  TestClient client(0);
  for (const int priority : {1, 1, 3, 2}) send(client, M_PLATFORM_STATUS, priority);
  EXPECT_EQ(4U, client.mCallQueue.size());
}

TEST(TKSLClientQueue, APopThatWouldLeadTheQueueBeforeAPopIsDropped) {
  TestClient client(0);
  send(client, M_POPEVENTS, 2);
  EXPECT_EQ(0, send(client, M_POPEVENTS, 9));
  EXPECT_EQ((std::vector<Entry>{{M_POPEVENTS, 2}}), order(client));
}

TEST(TKSLClientQueue, APopIsKeptWhereAnotherCallLiesBetween) {
  TestClient client(0);
  send(client, M_POPEVENTS, 2);
  send(client, M_BYE, 2);
  EXPECT_EQ(0, send(client, M_POPEVENTS, 2));
  EXPECT_EQ((std::vector<Entry>{{M_POPEVENTS, 2}, {M_BYE, 2}, {M_POPEVENTS, 2}}), order(client));
}

TEST(TKSLClientQueue, PopsGoInFrontOfLesserCallsOnly) {
  TestClient client(0);
  send(client, M_PLATFORM_STATUS, 0);
  send(client, M_POPEVENTS, 2);
  EXPECT_EQ((std::vector<Entry>{{M_POPEVENTS, 2}, {M_PLATFORM_STATUS, 0}}), order(client));
}

TEST(TKSLClientQueue, EventsGoBehindRequestsForEventsAndInFrontOfTheStatus) {
  TestClient client(0);
  send(client, M_PLATFORM_STATUS, 0);
  send(client, M_POPEVENTS, 2);
  client.PushEvent(G_GAME_START, "");
  EXPECT_EQ((std::vector<Entry>{{M_POPEVENTS, 2}, {M_PUSHEVENTS, 1}, {M_PLATFORM_STATUS, 0}}), order(client));
}

TEST(TKSLClientQueue, AStackOfEventsIsOnePackageUpToTwenty) {
  TestClient client(0);
  client.BeginEventStack();
  for (int n = 0; n < 21; ++n) client.PushEvent(G_LOG, "i", n);
  client.EndEventStack();
  EXPECT_EQ((std::vector<int>{20, 1}), packageSizes(client));
}

TEST(TKSLClientQueue, MergedEventsKeepTheirOrder) {
  TestClient client(0);
  for (int n = 0; n < 20; ++n) client.PushEvent(static_cast<KSLGameEvent>(300 - n), "i", n);
  ASSERT_EQ(1U, client.mCallQueue.size());
  const xmlrpc_c::carray items =
    xmlrpc_c::value_array(xmlrpc_c::value(client.mCallQueue[0].parameters)).vectorValueValue();
  ASSERT_EQ(20U, items.size());
  for (int n = 0; n < 20; ++n) {
    const xmlrpc_c::cstruct event = xmlrpc_c::value_struct(items[static_cast<size_t>(n)]);
    EXPECT_EQ(2U, event.size());
    EXPECT_EQ(300 - n, xmlrpc_c::value_int(event.at("eventID")).cvalue());
    EXPECT_EQ(n, xmlrpc_c::value_int(event.at("context")).cvalue());
  }
}

TEST(TKSLClientQueue, TwentyEventsMergeIntoOnePackage) {
  TestClient client(0);
  for (int n = 0; n < 20; ++n) client.PushEvent(G_GAME_START, "i", n);
  EXPECT_EQ((std::vector<int>{20}), packageSizes(client));
  client.PushEvent(G_GAME_START, "i", 20);
  EXPECT_EQ((std::vector<int>{20, 1}), packageSizes(client));
  client.PushEvent(G_GAME_START, "i", 21);
  EXPECT_EQ((std::vector<int>{20, 2}), packageSizes(client));
  EXPECT_TRUE(unlocked(client));
}

TEST(TKSLClientQueue, FifteenAndSixStayTwoCallsAndFifteenAndFiveMerge) {
  TestClient client(0);
  queue(client, package(15, 1));
  queue(client, package(6, 1));
  EXPECT_EQ((std::vector<int>{15, 6}), packageSizes(client));
  TestClient other(0);
  queue(other, package(15, 1));
  queue(other, package(5, 1));
  EXPECT_EQ((std::vector<int>{20}), packageSizes(other));
}

TEST(TKSLClientQueue, PackagesOfDifferentPriorityNeverMerge) {
  TestClient client(0);
  queue(client, package(1, 1));
  queue(client, package(1, 2));
  queue(client, package(1, 0));
  EXPECT_EQ((std::vector<int>{1, 1, 1}), packageSizes(client));
}

TEST(TKSLClientQueue, APackageLooksOnlyAtTheNearestCall) {
  TestClient client(0);
  queue(client, package(1, 1));
  send(client, M_VOLUME, 1);
  queue(client, package(1, 1));
  EXPECT_EQ((std::vector<Entry>{{M_PUSHEVENTS, 1}, {M_VOLUME, 1}, {M_PUSHEVENTS, 1}}), order(client));
}

TEST(TKSLClientQueue, APackageMergesPastLesserCalls) {
  TestClient client(0);
  queue(client, package(1, 1));
  send(client, M_VOLUME, 0);
  queue(client, package(1, 1));
  EXPECT_EQ((std::vector<Entry>{{M_PUSHEVENTS, 1}, {M_VOLUME, 0}}), order(client));
}

TEST(TKSLClientQueue, APackageThatWasSentBeforeTakesNothingIn) {
  TestClient client(0);
  queue(client, package(1, 1));
  client.mCallQueue.front().sendingAttempts = 1;
  queue(client, package(1, 1));
  EXPECT_EQ((std::vector<int>{1, 1}), packageSizes(client));
}

TEST(TKSLClientQueue, AMergedCallLosesItsCallbackAndIdentifier) {
  TestClient client(0);
  client.PushEvent(G_GAME_START, "");
  client.PushEvent(G_GAME_END, "");
  ASSERT_EQ(1U, client.mCallQueue.size());
  EXPECT_EQ(1U, client.mCallQueue[0].requestUID);
  EXPECT_EQ(2U, client.mMethodCallUID);
}

TEST(TKSLClientQueue, PackagesWithoutParametersCountAsEmpty) {
  TestClient client(0);
  queue(client, MethodCall{M_PUSHEVENTS, 1, nullptr, 0, KSLCallback(), 0});
  EXPECT_EQ(0, queue(client, package(2, 1)));
  EXPECT_EQ((std::vector<int>{2}), packageSizes(client));
  EXPECT_EQ(0, queue(client, MethodCall{M_PUSHEVENTS, 1, nullptr, 0, KSLCallback(), 0}));
  EXPECT_EQ((std::vector<int>{2}), packageSizes(client));
}

TEST(TKSLClientQueue, APackageThatIsNoArrayIsRefused) {
  TestClient client(0);
  queue(client, package(1, 1));
  XmlRpcEnv env;
  EXPECT_EQ(-2, queue(client, MethodCall{M_PUSHEVENTS, 1, xmlrpc_int_new(env.get(), 5), 0, KSLCallback(), 0}));
  EXPECT_EQ((std::vector<int>{1}), packageSizes(client));
  EXPECT_TRUE(unlocked(client));
}

TEST(TKSLClientQueue, AFaultyFormatQueuesNothing) {
  TestClient client(0);
  EXPECT_EQ(-1, client.SendRequest(M_VOLUME, 1, KSLCallback(), "(i", 1));
  EXPECT_EQ(-1, client.SendRequest(M_VOLUME, 1, KSLCallback(), "(i)i", 1, 2));
  EXPECT_TRUE(client.mCallQueue.empty());
  EXPECT_EQ(0U, client.mMethodCallUID);
  client.PushEvent(G_GAME_START, "{s:i", "a", 1);
  client.PushEvent(G_GAME_START, "ii", 1, 2);
  EXPECT_TRUE(client.mCallQueue.empty());
}

TEST(TKSLClientQueue, NothingIsTakenOrAddedByOthersWhileEventsAreStacked) {
  TestClient client(0);
  client.BeginEventStack();
  EXPECT_FALSE(unlocked(client));
  client.PushEvent(G_GAME_START, "");
  EXPECT_FALSE(unlocked(client));
  client.PushEvent(G_GAME_END, nullptr);
  client.EndEventStack();
  EXPECT_TRUE(unlocked(client));
  EXPECT_EQ((std::vector<int>{2}), packageSizes(client));
}

TEST(TKSLClientQueue, TheWaitIsTheSumOfTheAveragesInFront) {
  TestClient client(0);
  EXPECT_EQ(0U, client.calculateApproximateWaitTime(3));
  send(client, M_VOLUME, 3);
  send(client, M_BYE, 2);
  send(client, M_GETPARAM, 1);
  {
    const ScopedLock lock(client.mAverageMethodResponseTimes);
    client.mAverageMethodResponseTimes->at(M_VOLUME) = 10.2F;
    client.mAverageMethodResponseTimes->at(M_BYE) = 20.2F;
    client.mAverageMethodResponseTimes->at(M_GETPARAM) = 30.2F;
  }
  EXPECT_EQ(0U, client.calculateApproximateWaitTime(0));
  EXPECT_EQ(10U, client.calculateApproximateWaitTime(1));
  EXPECT_EQ(30U, client.calculateApproximateWaitTime(2));
  EXPECT_EQ(61U, client.calculateApproximateWaitTime(3));
  EXPECT_EQ(61U, client.calculateApproximateWaitTime(4));
  EXPECT_EQ(61U, client.calculateApproximateWaitTime(-1));
  EXPECT_EQ(61U, client.calculateApproximateWaitTime(std::numeric_limits<int>::min()));
  EXPECT_EQ(61U, client.calculateApproximateWaitTime(std::numeric_limits<int>::max()));
}

TEST(TKSLClientQueue, AWaitBeyondAllNumbersIsTheLongestOne) {
  TestClient client(0);
  send(client, M_VOLUME, 3);
  send(client, M_VOLUME, 3);
  const ScopedLock lock(client.mAverageMethodResponseTimes);
  client.mAverageMethodResponseTimes->at(M_VOLUME) = 4294967295.0F;
  EXPECT_EQ(4294967295U, client.calculateApproximateWaitTime(1));
  EXPECT_EQ(4294967295U, client.calculateApproximateWaitTime(2));
}
