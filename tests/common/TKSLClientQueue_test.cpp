// The order of the calls' queue, and the merging of event packages, as they show in what is sent.
#include <gtest/gtest.h>

#include <limits>

#include "LinkTestSupport.h"
#include "tests/support/FakeClock.h"

using linktest::Beside;
using linktest::TestClient;

namespace {

using Order = std::vector<std::string>;

// The call tells its priority to the service.
int send(TestClient& client, MethodType method, int priority) {
  return client.SendRequest(method, priority, KSLCallback(), "(i)", priority);
}

// A package of that many events.
int push(TestClient& client, int size, int priority, const KSLCallback& callback = KSLCallback()) {
  XmlRpcEnv env;
  const XmlRpcReference array(xmlrpc_array_new(env.get()));
  for (int n = 0; n < size; ++n) {
    const XmlRpcReference item(xmlrpc_int_new(env.get(), n));
    xmlrpc_array_append_item(env.get(), array.get(), item.get());
  }
  return client.SendRequest(M_PUSHEVENTS, priority, callback, "V", array.get());
}

// The calls in the order in which they are sent, each with its priority, packages with the number of their events.
Order order(TestClient& client) {
  Order calls;
  for (const std::string& request : client.sendAll()) {
    const xmlrpc_c::carray params = linktest::paramsOf(request);
    std::string text = linktest::methodOf(request) + " ";
    if (params.back().type() == xmlrpc_c::value::TYPE_ARRAY)
      text += "of " + std::to_string(xmlrpc_c::value_array(params.back()).vectorValueValue().size());
    else
      text += std::to_string(xmlrpc_c::value_int(params.back()).cvalue());
    calls.push_back(text);
  }
  return calls;
}

Order packages(const std::vector<int>& sizes) {
  Order calls;
  for (const int size : sizes) calls.push_back("game.pushEvents of " + std::to_string(size));
  return calls;
}

// The number that the next call gets.
uint64_t nextNumber(TestClient& client) {
  uint64_t number = 0;
  int code = 0;
  client.SendRequestSyncRaw(M_VOLUME, KSLCallback(), number, code, "()");
  return number;
}

// Calls on this thread that take so long, one after the other.
void took(TestClient& client, FakeClock& clock, MethodType method, const std::vector<Uint32>& durations) {
  for (const Uint32 duration : durations) {
    client.wire.answer(client.getMethodInfo(method).Address, [&clock, duration](const std::string&) {
      clock.advance(duration);
      return linktest::replyXml("<nil/>");
    });
    client.SendRequestSync(method, KSLCallback(), "()");
  }
}

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
  EXPECT_EQ((Order{"game.setCounter 9", "game.bye 5", "system.denomination 5", "game.setParam 3", "system.volume 1",
                   "game.getParam 1", "game.getCounter 0"}),
            order(client));
}

TEST(TKSLClientQueue, NumbersCountFromOne) {
  TestClient client(0);
  EXPECT_EQ(1U, nextNumber(client));
  send(client, M_VOLUME, 1);
  send(client, M_BYE, 1);
  EXPECT_EQ(4U, nextNumber(client));
}

TEST(TKSLClientQueue, APopBehindAPopIsDropped) {
  TestClient client(0);
  EXPECT_EQ(0, send(client, M_POPEVENTS, 2));
  EXPECT_EQ(0, send(client, M_POPEVENTS, 2));
  EXPECT_EQ(0, send(client, M_POPEVENTS, 1));
  EXPECT_EQ((Order{"game.popEvents 2"}), order(client));
}

TEST(TKSLClientQueue, APopDirectlyInFrontOfAPopIsDropped) {
  TestClient client(0);
  send(client, M_BYE, 5);
  send(client, M_POPEVENTS, 2);
  EXPECT_EQ(0, send(client, M_POPEVENTS, 3));
  EXPECT_EQ((Order{"game.bye 5", "game.popEvents 2"}), order(client));
}

TEST(TKSLClientQueue, APopBehindAPopInTheMiddleIsDropped) {
  for (const int last : {0, 1}) {
    TestClient client(0);
    send(client, M_BYE, 5);
    send(client, M_POPEVENTS, 2);
    send(client, M_PLATFORM_STATUS, last);
    EXPECT_EQ(0, client.SendRequest(M_POPEVENTS, 2, KSLCallback(), "(i)", 7));
    EXPECT_EQ((Order{"game.bye 5", "game.popEvents 2", "platform.state " + std::to_string(last)}), order(client));
  }
}

TEST(TKSLClientQueue, APopBetweenTwoOthersIsKept) {
  TestClient client(0);
  send(client, M_BYE, 5);
  send(client, M_PLATFORM_STATUS, 0);
  send(client, M_POPEVENTS, 0);
  EXPECT_EQ(0, send(client, M_POPEVENTS, 2));
  EXPECT_EQ((Order{"game.bye 5", "game.popEvents 2", "platform.state 0", "game.popEvents 0"}), order(client));
}

TEST(TKSLClientQueue, OnlyPopsAreDroppedBesideTheirLike) {
  TestClient client(0);
  for (const int priority : {1, 1, 3, 2}) send(client, M_PLATFORM_STATUS, priority);
  EXPECT_EQ((Order{"platform.state 3", "platform.state 2", "platform.state 1", "platform.state 1"}), order(client));
}

TEST(TKSLClientQueue, APopThatWouldLeadTheQueueBeforeAPopIsDropped) {
  TestClient client(0);
  send(client, M_POPEVENTS, 2);
  EXPECT_EQ(0, send(client, M_POPEVENTS, 9));
  EXPECT_EQ((Order{"game.popEvents 2"}), order(client));
}

TEST(TKSLClientQueue, APopIsKeptWhereAnotherCallLiesBetween) {
  TestClient client(0);
  send(client, M_POPEVENTS, 2);
  send(client, M_BYE, 2);
  EXPECT_EQ(0, send(client, M_POPEVENTS, 2));
  EXPECT_EQ((Order{"game.popEvents 2", "game.bye 2", "game.popEvents 2"}), order(client));
}

TEST(TKSLClientQueue, PopsGoInFrontOfLesserCallsOnly) {
  TestClient client(0);
  send(client, M_PLATFORM_STATUS, 0);
  send(client, M_POPEVENTS, 2);
  EXPECT_EQ((Order{"game.popEvents 2", "platform.state 0"}), order(client));
}

TEST(TKSLClientQueue, EventsHavePriorityOne) {
  TestClient client(0);
  send(client, M_PLATFORM_STATUS, 0);
  send(client, M_BYE, 1);
  send(client, M_POPEVENTS, 2);
  client.PushEvent(G_GAME_START, "");
  send(client, M_SETCOUNTER, 1);
  EXPECT_EQ(
    (Order{"game.popEvents 2", "game.bye 1", "game.pushEvents of 1", "game.setCounter 1", "platform.state 0"}),
    order(client));
}

TEST(TKSLClientQueue, AStackOfEventsIsOnePackageUpToTwenty) {
  TestClient client(0);
  client.BeginEventStack();
  for (int n = 0; n < 21; ++n) client.PushEvent(G_LOG, "i", n);
  client.EndEventStack();
  EXPECT_EQ(packages({20, 1}), order(client));
}

TEST(TKSLClientQueue, MergedEventsKeepTheirOrder) {
  TestClient client(0);
  for (int n = 0; n < 20; ++n) client.PushEvent(static_cast<KSLGameEvent>(300 - n), "i", n);
  const std::vector<std::string> requests = client.sendAll();
  ASSERT_EQ(1U, requests.size());
  const xmlrpc_c::carray items = xmlrpc_c::value_array(linktest::paramsOf(requests[0]).at(2)).vectorValueValue();
  ASSERT_EQ(20U, items.size());
  for (int n = 0; n < 20; ++n) {
    const xmlrpc_c::cstruct event = xmlrpc_c::value_struct(items[static_cast<size_t>(n)]);
    EXPECT_EQ(2U, event.size());
    EXPECT_EQ(300 - n, xmlrpc_c::value_int(event.at("eventID")).cvalue());
    EXPECT_EQ(n, xmlrpc_c::value_int(event.at("context")).cvalue());
  }
}

TEST(TKSLClientQueue, MergedPackagesKeepTheOrderOfTheirEvents) {
  TestClient client(0);
  push(client, 2, 1);
  push(client, 3, 1);
  const std::vector<std::string> requests = client.sendAll();
  ASSERT_EQ(1U, requests.size());
  std::vector<int> events;
  for (const xmlrpc_c::value& item :
       xmlrpc_c::value_array(linktest::paramsOf(requests[0]).at(2)).vectorValueValue())
    events.push_back(xmlrpc_c::value_int(item).cvalue());
  EXPECT_EQ((std::vector<int>{0, 1, 0, 1, 2}), events);
}

TEST(TKSLClientQueue, TwentyEventsMergeIntoOnePackage) {
  for (const auto& [events, sizes] :
       {std::pair(20, std::vector<int>{20}), std::pair(21, std::vector<int>{20, 1}),
        std::pair(22, std::vector<int>{20, 2}), std::pair(41, std::vector<int>{20, 20, 1})}) {
    TestClient client(0);
    for (int n = 0; n < events; ++n) client.PushEvent(G_GAME_START, "i", n);
    EXPECT_EQ(packages(sizes), order(client));
  }
}

TEST(TKSLClientQueue, FifteenAndSixStayTwoCallsAndFifteenAndFiveMerge) {
  TestClient client(0);
  push(client, 15, 1);
  push(client, 6, 1);
  EXPECT_EQ(packages({15, 6}), order(client));
  push(client, 15, 1);
  push(client, 5, 1);
  EXPECT_EQ(packages({20}), order(client));
}

TEST(TKSLClientQueue, PackagesOfDifferentPriorityNeverMerge) {
  TestClient client(0);
  push(client, 1, 1);
  push(client, 2, 2);
  push(client, 3, 0);
  EXPECT_EQ(packages({2, 1, 3}), order(client));
}

TEST(TKSLClientQueue, APackageLooksOnlyAtTheNearestCall) {
  TestClient client(0);
  push(client, 1, 1);
  send(client, M_VOLUME, 1);
  push(client, 1, 1);
  EXPECT_EQ((Order{"game.pushEvents of 1", "system.volume 1", "game.pushEvents of 1"}), order(client));
}

TEST(TKSLClientQueue, APackageMergesPastLesserCalls) {
  TestClient client(0);
  push(client, 1, 1);
  send(client, M_VOLUME, 0);
  push(client, 1, 1);
  EXPECT_EQ((Order{"game.pushEvents of 2", "system.volume 0"}), order(client));
}

TEST(TKSLClientQueue, AMergedCallLosesItsCallback) {
  TestClient client(0);
  std::vector<int> told;
  for (int n = 1; n <= 2; ++n) {
    push(client, 1, 1, [&told, n](void*, bool) {
      told.push_back(n);
      return 0;
    });
  }
  EXPECT_EQ(3U, nextNumber(client)) << "it has a number all the same";
  EXPECT_EQ(packages({2}), order(client));
  client.Poll(0);
  EXPECT_EQ(std::vector<int>{1}, told);
}

TEST(TKSLClientQueue, PackagesWithoutEventsMergeToo) {
  TestClient client(0);
  const auto pushNothing = [&] { return client.SendRequest(M_PUSHEVENTS, 1, KSLCallback(), ""); };
  EXPECT_EQ(0, pushNothing());
  EXPECT_EQ(0, push(client, 2, 1));
  EXPECT_EQ(0, pushNothing());
  EXPECT_EQ(packages({2}), order(client));
}

TEST(TKSLClientQueue, APackageThatIsNoArrayIsRefusedBehindAnother) {
  TestClient client(0);
  push(client, 1, 1);
  EXPECT_EQ(-2, client.SendRequest(M_PUSHEVENTS, 1, KSLCallback(), "i", 5));
  EXPECT_EQ(packages({1}), order(client));
}

TEST(TKSLClientQueue, AFaultyFormatQueuesNothing) {
  TestClient client(0);
  EXPECT_EQ(-1, client.SendRequest(M_VOLUME, 1, KSLCallback(), "(i", 1));
  EXPECT_EQ(-1, client.SendRequest(M_VOLUME, 1, KSLCallback(), "(i)i", 1, 2));
  client.PushEvent(G_GAME_START, "{s:i", "a", 1);
  client.PushEvent(G_GAME_START, "ii", 1, 2);
  EXPECT_EQ(1U, nextNumber(client)) << "it counts as a call";
  EXPECT_EQ(Order{}, order(client));
}

TEST(TKSLClientQueue, NoFormatIsNoParameter) {
  for (const char* format : {static_cast<const char*>(nullptr), ""}) {
    TestClient client(0);
    EXPECT_EQ(0, client.SendRequest(M_VOLUME, 1, KSLCallback(), format));
    EXPECT_EQ(std::vector<std::string>{linktest::requestXml("system.volume", {})}, client.sendAll());
  }
}

TEST(TKSLClientQueue, NothingIsAddedByOthersWhileEventsAreStacked) {
  TestClient client(0);
  client.BeginEventStack();
  client.PushEvent(G_GAME_START, "");
  const Beside other([&client] { send(client, M_VOLUME, 1); });
  EXPECT_TRUE(other.isHeldUp());
  client.PushEvent(G_GAME_END, nullptr);
  EXPECT_TRUE(other.isHeldUp());
  client.EndEventStack();
  ASSERT_TRUE(other.ends());
  EXPECT_EQ((Order{"game.pushEvents of 2", "system.volume 1"}), order(client));
}

TEST(TKSLClientQueue, NothingIsTakenWhileEventsAreStacked) {
  TestClient client(0);
  client.SetRegisterRequired(false);
  ASSERT_EQ(0, client.Start(false, 0));
  client.BeginEventStack();
  client.PushEvent(G_GAME_START, "");
  for (int n = 0; n < 50; ++n) {
    SDL_Delay(1);
    ASSERT_TRUE(client.wire.requests().empty());
  }
  client.EndEventStack();
  EXPECT_EQ(packages({1}), order(client));
}

TEST(TKSLClientQueue, TheWaitIsTheSumOfTheAveragesInFront) {
  FakeClock clock(1000);
  TestClient client(0);
  EXPECT_EQ(0U, client.calculateApproximateWaitTime(3));
  took(client, clock, M_VOLUME, {10, 10, 10, 10, 11});
  took(client, clock, M_BYE, {20, 20, 20, 20, 21});
  took(client, clock, M_GETPARAM, {30, 30, 30, 30, 31});
  send(client, M_VOLUME, 3);
  send(client, M_BYE, 2);
  send(client, M_GETPARAM, 1);
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
  FakeClock clock(1000);
  TestClient client(0);
  took(client, clock, M_VOLUME, {4294967295U});
  send(client, M_VOLUME, 3);
  send(client, M_VOLUME, 3);
  EXPECT_EQ(4294967295U, client.calculateApproximateWaitTime(1));
  EXPECT_EQ(4294967295U, client.calculateApproximateWaitTime(2));
}
