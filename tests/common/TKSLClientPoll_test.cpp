// What Poll hands out, and when it asks for events. The calls are sent and answered beforehand, so that no thread
// runs during Poll where nothing else is said; the tick clock is the test's.
#include <gtest/gtest.h>

#include <stdexcept>
#include <utility>

#include "LinkTestSupport.h"
#include "tests/support/FakeClock.h"
#include "vendelo-sdl2/TLogManager.h"

using linktest::arrayXml;
using linktest::errorStruct;
using linktest::eventXml;
using linktest::Note;
using linktest::replyXml;
using linktest::TestClient;

namespace {

const std::string NoEvents = replyXml(arrayXml({}));
const std::string Unsync = replyXml(errorStruct(E_UNSYNC, "out of step"));

// Failed calls whose answers wait for Poll, the one after the other.
void fail(TestClient& client, MethodType method, const std::vector<int>& codes,
          const KSLCallback& callback = KSLCallback()) {
  for (const int code : codes) {
    client.wire.answer(client.getMethodInfo(method).Address, replyXml(errorStruct(code, "x")));
    client.SendRequest(method, 0, callback, "");
    client.sendSome(1);
  }
}

// Whether a Poll asks for events. What is queued is sent, and answered without events.
bool asks(TestClient& client) {
  client.Poll(0);
  const std::vector<std::string> requests = client.sendAll();
  EXPECT_GE(1U, requests.size());
  return !requests.empty() && linktest::methodOf(requests[0]) == "game.popEvents";
}

// Whether the time of silence runs from now.
bool isTimedFromNow(const TestClient& client, FakeClock& clock) {
  const Uint32 now = clock.now();
  clock.advance(4999);
  const bool early = client.IsTimedOut();
  clock.advance(1);
  EXPECT_TRUE(client.IsTimedOut());
  clock.set(now);
  return !early;
}

}  // namespace

TEST(TKSLClientPoll, HandsOutEverythingOrAsManyAsAsked) {
  TestClient client(0);
  fail(client, M_VOLUME, {-2, -3, -4, -5, -6});
  EXPECT_EQ(1, client.Poll(1));
  EXPECT_EQ(1U, client.listener.errors.size());
  EXPECT_EQ(2, client.Poll(2));
  EXPECT_EQ(2, client.Poll(0));
  EXPECT_EQ(0, client.Poll(0));
  ASSERT_EQ(5U, client.listener.errors.size());
  for (int n = 0; n < 5; ++n) EXPECT_EQ(-2 - n, client.listener.errors[static_cast<size_t>(n)].code);
}

TEST(TKSLClientPoll, ALimitedPollStillAsksForEventsWithPriorityTwo) {
  const FakeClock clock(1000);
  TestClient client(0);
  fail(client, M_VOLUME, {-3, -3, -3, -3, -3});
  client.TogglePopRequests(true);
  EXPECT_EQ(1, client.Poll(1));
  client.SendRequest(M_BYE, 3, KSLCallback(), "");
  client.SendRequest(M_GETPARAM, 2, KSLCallback(), "");
  client.SendRequest(M_SETPARAM, 1, KSLCallback(), "");
  std::vector<std::string> methods;
  for (const std::string& request : client.sendAll()) methods.push_back(linktest::methodOf(request));
  EXPECT_EQ((std::vector<std::string>{"game.bye", "game.popEvents", "game.getParam", "game.setParam"}), methods);
}

TEST(TKSLClientPoll, ACallbackHasItBeforeTheListener) {
  TestClient client(0);
  std::vector<int> codes;
  const KSLCallback callback = [&codes](void* data, bool isError) {
    codes.push_back(isError ? static_cast<KSLError*>(data)->errorCode : 0);
    return 17;
  };
  fail(client, M_INIT, {-3}, callback);
  EXPECT_EQ(1, client.Poll(0));
  EXPECT_EQ((std::vector<int>{-3}), codes);
  EXPECT_EQ(17, client.SendRequestSync(M_INIT, callback, "()"));
  EXPECT_TRUE(client.listener.errors.empty());
  EXPECT_TRUE(client.listener.inits.empty());
}

TEST(TKSLClientPoll, RegistrationsReachTheListenerGoodOrBad) {
  TestClient client(0);
  fail(client, M_INIT, {-3});
  client.wire.answer("topscreen.init", linktest::initReply(7));
  client.SendRequest(M_INIT, 0, KSLCallback(), "");
  client.sendSome(1);
  client.SetInitMethod(
    "topscreen.init", [](const xmlrpc_c::value&, int&) -> void* { return nullptr; }, linktest::destroyTestInit);
  client.SendRequest(M_INIT, 0, KSLCallback(), "");
  client.sendSome(1);
  EXPECT_EQ(3, client.Poll(0));
  EXPECT_EQ((std::vector<Note>{{M_INIT, -3, "x"}, {M_INIT, 0, ""}, {M_INIT, 0, "no record"}}),
            client.listener.inits);
  EXPECT_TRUE(client.listener.errors.empty());
}

TEST(TKSLClientPoll, WithoutAListenerResponsesGoNowhere) {
  const FakeClock clock(1000);
  TestClient client(0);
  client.SetListener(nullptr);
  fail(client, M_INIT, {-3});
  fail(client, M_VOLUME, {-3});
  EXPECT_EQ(2, client.Poll(0));
  client.askForEvents(replyXml(arrayXml({eventXml(1, "<nil/>")})));
  EXPECT_EQ(0, client.SendRequestSync(M_VOLUME, KSLCallback(), "()"));
  EXPECT_EQ(0, client.SendRequestSync(M_INIT, KSLCallback(), "()"));
}

TEST(TKSLClientPoll, AGoodReplyWithoutACallbackConcernsNobody) {
  TestClient client(0);
  client.wire.answer("system.volume", replyXml("<int>5</int>"));
  client.SendRequest(M_VOLUME, 0, KSLCallback(), "");
  client.sendSome(1);
  EXPECT_EQ(1, client.Poll(0));
  EXPECT_TRUE(client.listener.errors.empty());
  EXPECT_TRUE(client.listener.inits.empty());
}

TEST(TKSLClientPoll, ACallbackThatThrowsEndsThePollAndTheNextGoesOn) {
  const FakeClock clock(1000);
  TestClient client(0);
  fail(client, M_VOLUME, {-3}, [](void*, bool) -> int { throw std::runtime_error("no"); });
  fail(client, M_BYE, {-4});
  client.TogglePopRequests(true);
  testing::internal::CaptureStdout();
  EXPECT_EQ(-1, client.Poll(0));
  std::fflush(stdout);
  EXPECT_EQ("!!!! KSLCLIENT:: ERROR handling method response!\n", testing::internal::GetCapturedStdout());
  EXPECT_TRUE(client.listener.errors.empty());
  client.TogglePopRequests(false);
  EXPECT_TRUE(asks(client)) << "the Poll before did so all the same";
  EXPECT_EQ((std::vector<Note>{{M_BYE, -4, "x"}}), client.listener.errors);
}

TEST(TKSLClientPoll, ACallbackMayPollAndSend) {
  TestClient client(0);
  fail(client, M_VOLUME, {-3}, [&client](void*, bool) {
    client.SendRequest(M_GETPARAM, 0, KSLCallback(), "");
    return client.Poll(0);
  });
  fail(client, M_BYE, {-4});
  EXPECT_EQ(1, client.Poll(0));
  EXPECT_EQ(1U, client.listener.errors.size());
  EXPECT_EQ(1U, client.sendAll().size());
}

TEST(TKSLClientPoll, EventsAreDeliveredInOrder) {
  const FakeClock clock(1000);
  TestClient client(0);
  client.askForEvents(
    replyXml(arrayXml({eventXml(108, "<nil/>"), eventXml(100, "<nil/>"), eventXml(105, "<nil/>")})));
  EXPECT_EQ((std::vector<int>{108, 100, 105}), client.listener.events);
}

TEST(TKSLClientPoll, AnExceptionCostsOneEventAndIsLogged) {
  struct Line {
    vendelo_sdl2::TLogType type;
    std::string text;
  };
  std::vector<Line> lines;
  vendelo_sdl2::TLogManager log;
  const auto onLine = [](void* data, const vendelo_sdl2::TLogEntry& entry, int) {
    static_cast<std::vector<Line>*>(data)->push_back({entry.LogType, entry.Message});
  };
  ASSERT_EQ(0, log.Init(testing::TempDir() + "TKSLClientPoll.log", onLine, &lines, false));
  const FakeClock clock(1000);
  TestClient client(0);
  client.listener.onEvent = [](const Event& ev) {
    if (ev.id() == 2) throw "broken";
  };
  testing::internal::CaptureStdout();
  client.askForEvents(replyXml(arrayXml({eventXml(1, "<nil/>"), eventXml(2, "<nil/>"), eventXml(3, "<nil/>")})));
  EXPECT_EQ("", testing::internal::GetCapturedStdout()) << "the answer itself is handled";
  EXPECT_EQ((std::vector<int>{1, 3}), client.listener.events);
  EXPECT_EQ("KSL: Exception thrown handling platform event (2)", log.GetLastLog());
  log.Poll();
  ASSERT_EQ(1U, lines.size());
  EXPECT_EQ(4U, lines[0].type);
  EXPECT_NE(std::string::npos, lines[0].text.find(": WARN: KSL: Exception thrown handling platform event (2)"));
  log.Destroy();
}

TEST(TKSLClientPoll, FailedPopsAndPushesReachTheListener) {
  const FakeClock clock(1000);
  TestClient client(0);
  client.askForEvents(Unsync);
  EXPECT_EQ((std::vector<Note>{{M_POPEVENTS, E_UNSYNC, "out of step"}}), client.listener.errors);
  bool fails = true;
  client.wire.answer("game.pushEvents", [&fails](const std::string&) {
    return std::exchange(fails, false) ? Unsync : replyXml("<int>1</int>");
  });
  client.PushEvent(G_GAME_START, "");
  EXPECT_EQ(2U, client.sendAll().size());
  client.Poll(0);
  EXPECT_EQ((std::vector<Note>{{M_POPEVENTS, E_UNSYNC, "out of step"}, {M_PUSHEVENTS, E_UNSYNC, "out of step"}}),
            client.listener.errors);
}

TEST(TKSLClientPoll, OnlyAGoodPopFeedsTheTimeout) {
  for (const bool listens : {true, false}) {
    FakeClock clock(9000);
    TestClient client(0);
    if (!listens) client.SetListener(nullptr);
    client.askForEvents(Unsync);
    EXPECT_TRUE(client.IsTimedOut());
    client.askForEvents(NoEvents);
    EXPECT_TRUE(isTimedFromNow(client, clock));
  }
}

TEST(TKSLClientPoll, WhatHappenedWithoutAListenerIsNotToldToTheNextOne) {
  FakeClock clock(9000);
  TestClient client(0);
  client.SetListener(nullptr);
  client.askForEvents(Unsync);
  client.SetListener(&client.listener);
  client.Poll(0);
  EXPECT_TRUE(client.listener.timeouts.empty()) << "the beginning of the silence";
  client.SetListener(nullptr);
  client.askForEvents(NoEvents);
  client.Poll(0);
  client.SetListener(&client.listener);
  client.Poll(0);
  EXPECT_TRUE(client.listener.timeouts.empty()) << "its end";
  clock.advance(5000);
  client.Poll(0);
  EXPECT_EQ((std::vector<bool>{true}), client.listener.timeouts);
}

TEST(TKSLClientPoll, NoOtherAnswerFeedsTheTimeout) {
  FakeClock clock(4999);
  TestClient client(0);
  client.SetPopRequestFrequency(1000000);
  client.TogglePopRequests(true);
  client.wire.answer("system.volume", replyXml("<int>5</int>"));
  client.SendRequest(M_VOLUME, 0, KSLCallback(), "");
  client.SendRequest(M_INIT, 0, KSLCallback(), "");
  client.PushEvent(G_GAME_START, "");
  EXPECT_EQ(3U, client.sendAll().size());
  EXPECT_FALSE(client.IsTimedOut());
  EXPECT_EQ(4, client.Poll(0));
  EXPECT_TRUE(client.listener.errors.empty());
  clock.advance(1);
  EXPECT_TRUE(client.IsTimedOut());
}

TEST(TKSLClientPoll, ANoteToTheListenerIsZeroWhateverItAnswersButForARegistration) {
  struct Answering : linktest::NotingListener {
    using linktest::NotingListener::handleError;
    int handleError(MethodType, ErrorTypes, const std::string&) override { return 5; }
    int handleInitResponse(ErrorTypes, void*) override { return 6; }
  };
  TestClient client(0);
  Answering listener;
  client.SetListener(&listener);
  client.wire.answer("system.volume", Unsync);
  client.wire.answer("topscreen.init", Unsync);
  EXPECT_EQ(0, client.SendRequestSync(M_VOLUME, KSLCallback(), "()"));
  EXPECT_EQ(6, client.SendRequestSync(M_INIT, KSLCallback(), "()"));
}

TEST(TKSLClientPoll, EveryRecordIsDestroyedOnceByItsMethod) {
  static int destroyed;
  destroyed = 0;
  const auto destroy = [](void* data) {
    ++destroyed;
    linktest::destroyTestInit(data);
  };
  TestClient client(0);
  client.SetInitMethod("topscreen.init", linktest::parseTestInit, destroy);
  const auto call = [&client](const KSLCallback& callback) {
    return client.SendRequestSync(M_INIT, callback, "()");
  };
  call(KSLCallback());
  EXPECT_EQ(1, destroyed);
  call([](void*, bool) {
    EXPECT_EQ(1, destroyed) << "the callback may still read it";
    return 0;
  });
  EXPECT_EQ(2, destroyed);
  EXPECT_THROW(call([](void*, bool) -> int { throw 5; }), int);
  EXPECT_EQ(3, destroyed);
  client.SetListener(nullptr);
  call(KSLCallback());
  EXPECT_EQ(4, destroyed);
  client.SendRequest(M_INIT, 0, KSLCallback(), "");
  client.sendSome(1);
  EXPECT_EQ(4, destroyed);
  client.Poll(0);
  EXPECT_EQ(5, destroyed);
  client.wire.answer("topscreen.init", Unsync);
  call(KSLCallback());
  client.wire.answer("topscreen.init", linktest::initReply(7));
  client.SetInitMethod(
    "topscreen.init", [](const xmlrpc_c::value&, int&) -> void* { return nullptr; }, destroy);
  client.SendRequest(M_INIT, 0, KSLCallback(), "");
  client.sendSome(1);
  EXPECT_EQ(1, client.Poll(0));
  EXPECT_EQ(5, destroyed) << "an error is none of its records, and none is none";
}

// The thread goes on taking, sending and answering calls meanwhile.
TEST(TKSLClientPoll, NothingIsHeldDuringACallbackNorAfterOneThatThrew) {
  TestClient client(0);
  client.SetRegisterRequired(false);
  ASSERT_EQ(0, client.Start(false, 0));
  const auto threadGoesOn = [&client] {
    const size_t before = client.wire.requests("game.bye").size();
    client.SendRequest(M_GETPARAM, 0, KSLCallback(), "");
    client.SendRequest(M_BYE, 0, KSLCallback(), "");
    return linktest::waitFor([&] { return client.wire.requests("game.bye").size() > before; });
  };
  bool during = false;
  client.SendRequest(
    M_VOLUME, 0,
    [&](void*, bool) -> int {
      during = threadGoesOn();
      throw 5;
    },
    "");
  testing::internal::CaptureStdout();
  EXPECT_TRUE(linktest::waitFor([&] { return client.Poll(0) == -1; }));
  testing::internal::GetCapturedStdout();
  EXPECT_TRUE(during);
  EXPECT_TRUE(threadGoesOn());
}

TEST(TKSLClientPoll, SilenceIsJudgedBeforeTheAnswersAreHandedOut) {
  const FakeClock clock(6000);
  TestClient client(0);
  client.wire.answer("game.popEvents", NoEvents);
  client.TogglePopRequests(true);
  client.Poll(0);
  EXPECT_EQ((std::vector<bool>{true}), client.listener.timeouts);
  client.sendSome(1);
  client.listener.timeouts.clear();
  client.Poll(0);
  EXPECT_TRUE(client.listener.timeouts.empty()) << "the end is told before the answer is known";
  client.Poll(0);
  EXPECT_EQ((std::vector<bool>{false}), client.listener.timeouts);
}

TEST(TKSLClientPoll, EventsAreAskedForAfterTheAnswersWereHandedOut) {
  FakeClock clock(1000);
  TestClient client(0);
  const auto answersSwitch = [&client](bool on) {
    fail(client, M_VOLUME, {-3}, [&client, on](void*, bool) {
      client.TogglePopRequests(on);
      return 0;
    });
  };
  answersSwitch(true);
  EXPECT_TRUE(asks(client));
  answersSwitch(false);
  clock.advance(5000);
  EXPECT_FALSE(asks(client));
}

TEST(TKSLClientPoll, TheIntervalRunsFromTheLastRequest) {
  FakeClock clock(10000);
  TestClient client(0);
  client.SetPopRequestFrequency(300);
  client.TogglePopRequests(true);
  EXPECT_TRUE(asks(client));
  clock.advance(290);
  EXPECT_FALSE(asks(client));  // hands the answer out, whose time does not put the next request off
  clock.advance(11);
  EXPECT_TRUE(asks(client));
  clock.advance(300);
  EXPECT_FALSE(asks(client));
  clock.advance(1);
  EXPECT_TRUE(asks(client));
}

TEST(TKSLClientPoll, RequestsForEventsHaveNoParametersOfTheirOwn) {
  const FakeClock clock(1000);
  TestClient client(0);
  client.RegisterID(5);
  client.askForEvents(NoEvents);
  EXPECT_EQ(std::vector<std::string>{linktest::requestXml("game.popEvents", {"<i4>5</i4>"})},
            client.wire.requests());
}

TEST(TKSLClientPoll, EventsAreAskedForOncePerInterval) {
  FakeClock clock(10000);
  TestClient client(0);
  client.SetPopRequestFrequency(300);
  EXPECT_FALSE(asks(client));
  client.TogglePopRequests(true);
  EXPECT_TRUE(asks(client));  // at once: the last request counts as never
  EXPECT_FALSE(asks(client));
  clock.advance(300);
  EXPECT_FALSE(asks(client));
  clock.advance(1);
  EXPECT_TRUE(asks(client));
  client.TogglePopRequests(true);  // on already: nothing changes
  EXPECT_FALSE(asks(client));
  client.TogglePopRequests(false);
  clock.advance(1000);
  EXPECT_FALSE(asks(client));
  client.TogglePopRequests(true);
  EXPECT_TRUE(asks(client));
  client.TogglePopRequests(false);
  client.TogglePopRequests(true);
  EXPECT_TRUE(asks(client)) << "at once again";
}

TEST(TKSLClientPoll, TheDefaultIntervalIsAHundred) {
  FakeClock clock(100);
  TestClient client(0);
  client.TogglePopRequests(true);
  EXPECT_FALSE(asks(client));
  clock.advance(1);
  EXPECT_TRUE(asks(client));
}

TEST(TKSLClientPoll, AStalledServiceCostsOneWaitingRequest) {
  FakeClock clock(1000);
  TestClient client(0);
  client.TogglePopRequests(true);
  for (int n = 0; n < 20; ++n) {
    clock.advance(101);
    client.Poll(0);
  }
  EXPECT_EQ(1U, client.sendAll().size());
}

TEST(TKSLClientPoll, SilenceIsReportedOnceAndItsEndOnce) {
  FakeClock clock(4999);
  TestClient client(0);
  client.TogglePopRequests(true);
  EXPECT_FALSE(client.IsTimedOut());
  client.Poll(0);
  EXPECT_TRUE(client.listener.timeouts.empty());
  clock.advance(1);
  EXPECT_TRUE(client.IsTimedOut());
  client.Poll(0);
  client.Poll(0);
  EXPECT_EQ((std::vector<bool>{true}), client.listener.timeouts);
  client.sendAll();
  client.Poll(0);
  client.Poll(0);
  client.Poll(0);
  EXPECT_EQ((std::vector<bool>{true, false}), client.listener.timeouts);
}

TEST(TKSLClientPoll, RecoveryIsNotReportedWhilePopsAreOff) {
  const FakeClock clock(6000);
  TestClient client(0);
  client.TogglePopRequests(true);
  client.Poll(0);
  client.TogglePopRequests(false);
  EXPECT_FALSE(client.IsTimedOut());
  client.Poll(0);
  EXPECT_EQ((std::vector<bool>{true}), client.listener.timeouts);
  client.TogglePopRequests(true);  // does not count as an answer
  client.Poll(0);
  EXPECT_EQ((std::vector<bool>{true}), client.listener.timeouts);
  client.sendAll();
  client.Poll(0);
  client.Poll(0);
  EXPECT_EQ((std::vector<bool>{true, false}), client.listener.timeouts);
}

TEST(TKSLClientPoll, TimesAreComparedAcrossTheWrapOfTheTickClock) {
  FakeClock clock(0xFFFFFF00U);
  TestClient client(0);
  client.SetPopRequestFrequency(300);
  client.askForEvents(NoEvents);
  client.listener.timeouts.clear();  // of the time before
  clock.advance(0x200);
  EXPECT_FALSE(client.IsTimedOut());
  EXPECT_TRUE(asks(client));
  EXPECT_EQ((std::vector<bool>{false}), client.listener.timeouts);
}
