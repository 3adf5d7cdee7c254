// What Poll hands out, and when it asks for events. No thread runs here; the tick clock is the test's.
#include <gtest/gtest.h>

#include <stdexcept>

#include "LinkTestSupport.h"
#include "tests/support/FakeClock.h"
#include "vendelo-sdl2/TLogManager.h"

using linktest::arrayXml;
using linktest::eventXml;
using linktest::Note;
using linktest::TestClient;

namespace {

MethodResponse failure(MethodType method, int code, const std::string& text) {
  return MethodResponse{method, KSLCallback(), new KSLError(static_cast<ErrorTypes>(code), text), true, 1};
}

MethodResponse events(TestClient& client, const std::vector<std::string>& items) {
  int status = 0;
  void* data = client.Methods[M_POPEVENTS].ResponseParser(linktest::parseValue(arrayXml(items)), status);
  EXPECT_EQ(0, status);
  return MethodResponse{M_POPEVENTS, [&client](void* d, bool e) { return client.popResponse(d, e); }, data, false,
                        1};
}

}  // namespace

TEST(TKSLClientPoll, HandsOutEverythingOrAsManyAsAsked) {
  TestClient client(0);
  for (int n = 1; n <= 5; ++n) client.mResponseQueue.push(failure(M_VOLUME, -n, "x"));
  EXPECT_EQ(1, client.Poll(1));
  EXPECT_EQ(1U, client.listener.errors.size());
  EXPECT_EQ(2, client.Poll(2));
  EXPECT_EQ(2, client.Poll(0));
  EXPECT_EQ(0, client.Poll(0));
  ASSERT_EQ(5U, client.listener.errors.size());
  for (int n = 1; n <= 5; ++n) EXPECT_EQ(-n, client.listener.errors[static_cast<size_t>(n - 1)].code);
}

TEST(TKSLClientPoll, ALimitedPollStillAsksForEvents) {
  FakeClock clock(1000);
  TestClient client(0);
  for (int n = 0; n < 5; ++n) client.mResponseQueue.push(failure(M_VOLUME, -3, "x"));
  client.TogglePopRequests(true);
  EXPECT_EQ(1, client.Poll(1));
  ASSERT_EQ(1U, client.mCallQueue.size());
  EXPECT_EQ(M_POPEVENTS, client.mCallQueue[0].methodID);
  EXPECT_EQ(2, client.mCallQueue[0].priority);
}

TEST(TKSLClientPoll, ACallbackHasItBeforeTheListener) {
  TestClient client(0);
  std::vector<int> codes;
  const KSLCallback callback = [&codes](void* data, bool isError) {
    codes.push_back(isError ? static_cast<KSLError*>(data)->errorCode : 0);
    return 17;
  };
  MethodResponse response = failure(M_INIT, -3, "x");
  response.callback = callback;
  EXPECT_EQ(17, client.handleResponse(response));
  EXPECT_EQ((std::vector<int>{-3}), codes);
  EXPECT_TRUE(client.listener.errors.empty());
  EXPECT_TRUE(client.listener.inits.empty());
}

TEST(TKSLClientPoll, RegistrationsReachTheListenerGoodOrBad) {
  TestClient client(0);
  client.handleResponse(failure(M_INIT, -3, "rejected"));
  client.handleResponse(MethodResponse{M_INIT, KSLCallback(), new linktest::TestInitData, false, 1});
  client.handleResponse(MethodResponse{M_INIT, KSLCallback(), nullptr, false, 1});
  EXPECT_EQ((std::vector<Note>{{M_INIT, -3, "rejected"}, {M_INIT, 0, ""}, {M_INIT, 0, "no record"}}),
            client.listener.inits);
  EXPECT_TRUE(client.listener.errors.empty());
}

TEST(TKSLClientPoll, WithoutAListenerResponsesAreFreed) {
  TestClient client(0);
  client.SetListener(nullptr);
  EXPECT_EQ(0, client.handleResponse(failure(M_INIT, -3, "x")));
  EXPECT_EQ(0, client.handleResponse(failure(M_VOLUME, -3, "x")));
  EXPECT_EQ(0, client.handleResponse(events(client, {eventXml(1, "<nil/>")})));
  EXPECT_EQ(0, client.Poll(0));
}

TEST(TKSLClientPoll, AGoodReplyWithoutACallbackConcernsNobody) {
  TestClient client(0);
  EXPECT_EQ(0, client.handleResponse(MethodResponse{M_VOLUME, KSLCallback(), nullptr, false, 1}));
  EXPECT_TRUE(client.listener.errors.empty());
}

TEST(TKSLClientPoll, ACallbackThatThrowsEndsThePollAndTheNextGoesOn) {
  FakeClock clock(1000);
  TestClient client(0);
  MethodResponse response = failure(M_VOLUME, -3, "x");
  response.callback = [](void*, bool) -> int { throw std::runtime_error("no"); };
  client.mResponseQueue.push(response);
  client.mResponseQueue.push(failure(M_BYE, -4, "y"));
  client.TogglePopRequests(true);
  testing::internal::CaptureStdout();
  EXPECT_EQ(-1, client.Poll(0));
  std::fflush(stdout);
  EXPECT_EQ("!!!! KSLCLIENT:: ERROR handling method response!\n", testing::internal::GetCapturedStdout());
  EXPECT_EQ(1U, client.mCallQueue.size());  // the request for events went out all the same
  EXPECT_EQ(1, client.Poll(0));
  EXPECT_EQ((std::vector<Note>{{M_BYE, -4, "y"}}), client.listener.errors);
}

TEST(TKSLClientPoll, ACallbackMayPollAndSend) {
  TestClient client(0);
  MethodResponse response = failure(M_VOLUME, -3, "x");
  response.callback = [&client](void*, bool) {
    client.SendRequest(M_BYE, 0, KSLCallback(), "");
    return client.Poll(0);
  };
  client.mResponseQueue.push(response);
  client.mResponseQueue.push(failure(M_BYE, -4, "y"));
  EXPECT_EQ(1, client.Poll(0));
  EXPECT_EQ(1U, client.listener.errors.size());
  EXPECT_EQ(1U, client.mCallQueue.size());
}

TEST(TKSLClientPoll, EventsAreDeliveredInOrder) {
  TestClient client(0);
  EXPECT_EQ(0, client.handleResponse(
                 events(client, {eventXml(108, "<nil/>"), eventXml(100, "<nil/>"), eventXml(105, "<nil/>")})));
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
  TestClient client(0);
  client.listener.onEvent = [](const Event& ev) {
    if (ev.id() == 2) throw "broken";
  };
  EXPECT_EQ(0, client.handleResponse(
                 events(client, {eventXml(1, "<nil/>"), eventXml(2, "<nil/>"), eventXml(3, "<nil/>")})));
  EXPECT_EQ((std::vector<int>{1, 3}), client.listener.events);
  EXPECT_EQ("KSL: Exception thrown handling platform event (2)", log.GetLastLog());
  log.Poll();
  ASSERT_EQ(1U, lines.size());
  EXPECT_EQ(4U, lines[0].type);
  EXPECT_NE(std::string::npos, lines[0].text.find(": WARN: KSL: Exception thrown handling platform event (2)"));
  log.Destroy();
}

TEST(TKSLClientPoll, FailedPopsAndPushesReachTheListener) {
  TestClient client(0);
  KSLError error(E_UNSYNC, "out of step");
  EXPECT_EQ(0, client.popResponse(&error, true));
  EXPECT_EQ(0, client.pushResponse(&error, true));
  PushResponseData good{1};
  EXPECT_EQ(0, client.pushResponse(&good, false));
  EXPECT_EQ((std::vector<Note>{{M_POPEVENTS, E_UNSYNC, "out of step"}, {M_PUSHEVENTS, E_UNSYNC, "out of step"}}),
            client.listener.errors);
}

TEST(TKSLClientPoll, OnlyAGoodPopFeedsTheTimeout) {
  FakeClock clock(9000);
  TestClient client(0);
  KSLError error(E_UNSYNC, "");
  client.popResponse(&error, true);
  EXPECT_EQ(0U, client.mLastPopResponse);
  PopResponseData nothing;
  client.popResponse(&nothing, false);
  EXPECT_EQ(9000U, client.mLastPopResponse);
}

TEST(TKSLClientPoll, AGoodPopFeedsTheTimeoutAlsoWithoutAListener) {
  FakeClock clock(9000);
  TestClient client(0);
  client.SetListener(nullptr);
  KSLError error(E_UNSYNC, "");
  EXPECT_EQ(0, client.popResponse(&error, true));
  EXPECT_EQ(0, client.pushResponse(&error, true));
  EXPECT_EQ(0U, client.mLastPopResponse);
  client.TogglePopRequests(true);
  client.Poll(0);
  EXPECT_TRUE(client.mLockedTimeout);
  PopResponseData nothing;
  EXPECT_EQ(0, client.popResponse(&nothing, false));
  EXPECT_EQ(9000U, client.mLastPopResponse);
  client.Poll(0);
  EXPECT_FALSE(client.mLockedTimeout);
}

TEST(TKSLClientPoll, NoOtherAnswerFeedsTheTimeout) {
  FakeClock clock(9000);
  TestClient client(0);
  client.handleResponse(MethodResponse{M_PLATFORM_STATUS, KSLCallback(), new PlatformState, false, 1});
  client.handleResponse(MethodResponse{M_INIT, KSLCallback(), new linktest::TestInitData, false, 1});
  PushResponseData pushed{1};
  client.pushResponse(&pushed, false);
  EXPECT_EQ(0U, client.mLastPopResponse);
}

TEST(TKSLClientPoll, ANoteToTheListenerIsZeroWhateverItAnswers) {
  struct Answering : linktest::NotingListener {
    using linktest::NotingListener::handleError;
    int handleError(MethodType, ErrorTypes, const std::string&) override { return 5; }
    int handleInitResponse(ErrorTypes, void*) override { return 6; }
    int handlePlatformEvent(const Event&) override { return 7; }
  };
  TestClient client(0);
  Answering listener;
  client.SetListener(&listener);
  EXPECT_EQ(0, client.handleResponse(failure(M_VOLUME, -3, "x")));
  EXPECT_EQ(6, client.handleResponse(failure(M_INIT, -3, "x")));
  EXPECT_EQ(0, client.handleResponse(events(client, {eventXml(1, "<nil/>")})));
  KSLError error(E_UNSYNC, "");
  EXPECT_EQ(0, client.popResponse(&error, true));
  EXPECT_EQ(0, client.pushResponse(&error, true));
}

TEST(TKSLClientPoll, EveryRecordIsDestroyedOnceByItsMethod) {
  static int destroyed;
  destroyed = 0;
  TestClient client(0);
  client.SetInitMethod("topscreen.init", linktest::parseTestInit, [](void* data) {
    ++destroyed;
    linktest::destroyTestInit(data);
  });
  const auto record = [] { return MethodResponse{M_INIT, KSLCallback(), new linktest::TestInitData, false, 1}; };
  client.handleResponse(record());
  EXPECT_EQ(1, destroyed);
  MethodResponse withCallback = record();
  withCallback.callback = [](void*, bool) {
    EXPECT_EQ(1, destroyed) << "the callback may still read it";
    return 0;
  };
  client.handleResponse(withCallback);
  EXPECT_EQ(2, destroyed);
  MethodResponse throwing = record();
  throwing.callback = [](void*, bool) -> int { throw 5; };
  EXPECT_THROW(client.handleResponse(throwing), int);
  EXPECT_EQ(3, destroyed);
  client.SetListener(nullptr);
  client.handleResponse(record());
  EXPECT_EQ(4, destroyed);
  client.handleResponse(failure(M_INIT, -3, "x"));
  client.handleResponse(MethodResponse{M_INIT, KSLCallback(), nullptr, false, 1});
  EXPECT_EQ(4, destroyed);
}

TEST(TKSLClientPoll, NoQueueIsHeldDuringACallback) {
  TestClient client(0);
  bool free = false;
  MethodResponse response = failure(M_VOLUME, -3, "x");
  response.callback = [&](void*, bool) {
    free = linktest::unlocked(client.KSL_response_mutex) && linktest::unlocked(client.KSL_call_mutex) &&
           linktest::unlocked(client.KSL_send_mutex);
    return 0;
  };
  client.mResponseQueue.push(response);
  EXPECT_EQ(1, client.Poll(0));
  EXPECT_TRUE(free);
  EXPECT_TRUE(linktest::unlocked(client.KSL_response_mutex));
  response = failure(M_VOLUME, -3, "x");
  response.callback = [](void*, bool) -> int { throw 5; };
  client.mResponseQueue.push(response);
  testing::internal::CaptureStdout();
  EXPECT_EQ(-1, client.Poll(0));
  testing::internal::GetCapturedStdout();
  EXPECT_TRUE(linktest::unlocked(client.KSL_response_mutex));
}

TEST(TKSLClientPoll, SilenceIsJudgedBeforeTheAnswersAreHandedOut) {
  FakeClock clock(6000);
  TestClient client(0);
  client.TogglePopRequests(true);
  client.mResponseQueue.push(events(client, {}));
  client.Poll(0);
  EXPECT_EQ((std::vector<bool>{true}), client.listener.timeouts);
  client.Poll(0);
  EXPECT_EQ((std::vector<bool>{true, false}), client.listener.timeouts);
}

TEST(TKSLClientPoll, EventsAreAskedForAfterTheAnswersWereHandedOut) {
  FakeClock clock(1000);
  TestClient client(0);
  MethodResponse response = failure(M_VOLUME, -3, "x");
  response.callback = [&client](void*, bool) {
    client.TogglePopRequests(true);
    return 0;
  };
  client.mResponseQueue.push(response);
  client.Poll(0);
  EXPECT_EQ(1U, client.dropCalls());
  response = failure(M_VOLUME, -3, "x");
  response.callback = [&client](void*, bool) {
    client.TogglePopRequests(false);
    return 0;
  };
  client.mResponseQueue.push(response);
  clock.advance(5000);
  client.Poll(0);
  EXPECT_EQ(0U, client.dropCalls());
}

TEST(TKSLClientPoll, TheIntervalRunsFromTheLastRequest) {
  FakeClock clock(10000);
  TestClient client(0);
  client.SetPopRequestFrequency(300);
  client.TogglePopRequests(true);
  client.Poll(0);
  EXPECT_EQ(10000U, client.mLastPopRequest);
  EXPECT_EQ(1U, client.dropCalls());
  clock.advance(290);
  PopResponseData nothing;
  client.popResponse(&nothing, false);  // a slow answer does not put the next request off
  clock.advance(11);
  client.Poll(0);
  EXPECT_EQ(10301U, client.mLastPopRequest);
  EXPECT_EQ(1U, client.dropCalls());
}

TEST(TKSLClientPoll, RequestsForEventsHaveNoParametersOfTheirOwn) {
  FakeClock clock(1000);
  TestClient client(0);
  client.TogglePopRequests(true);
  client.Poll(0);
  ASSERT_EQ(1U, client.mCallQueue.size());
  EXPECT_EQ("<value><array><data></data></array></value>",
            linktest::textOf(xmlrpc_c::value(client.mCallQueue[0].parameters)));
}

TEST(TKSLClientPoll, EventsAreAskedForOncePerInterval) {
  FakeClock clock(10000);
  TestClient client(0);
  client.SetPopRequestFrequency(300);
  const auto asked = [&client] {
    client.Poll(0);
    return client.dropCalls() == 1;
  };
  EXPECT_FALSE(asked());
  client.TogglePopRequests(true);
  EXPECT_TRUE(asked());  // at once: the last request counts as never
  EXPECT_FALSE(asked());
  clock.advance(300);
  EXPECT_FALSE(asked());
  clock.advance(1);
  EXPECT_TRUE(asked());
  client.TogglePopRequests(true);  // on already: nothing changes
  EXPECT_FALSE(asked());
  client.TogglePopRequests(false);
  clock.advance(1000);
  EXPECT_FALSE(asked());
  client.TogglePopRequests(true);
  EXPECT_TRUE(asked());
}

TEST(TKSLClientPoll, TheDefaultIntervalIsAHundred) {
  FakeClock clock(100);
  TestClient client(0);
  client.TogglePopRequests(true);
  client.Poll(0);
  EXPECT_TRUE(client.mCallQueue.empty());
  clock.advance(1);
  client.Poll(0);
  EXPECT_EQ(1U, client.mCallQueue.size());
}

TEST(TKSLClientPoll, AStalledServiceCostsOneWaitingRequest) {
  FakeClock clock(1000);
  TestClient client(0);
  client.TogglePopRequests(true);
  for (int n = 0; n < 20; ++n) {
    clock.advance(101);
    client.Poll(0);
  }
  EXPECT_EQ(1U, client.mCallQueue.size());
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
  PopResponseData nothing;
  client.popResponse(&nothing, false);
  client.Poll(0);
  client.Poll(0);
  EXPECT_EQ((std::vector<bool>{true, false}), client.listener.timeouts);
}

TEST(TKSLClientPoll, RecoveryIsNotReportedWhilePopsAreOff) {
  FakeClock clock(6000);
  TestClient client(0);
  client.TogglePopRequests(true);
  client.Poll(0);
  client.TogglePopRequests(false);
  EXPECT_FALSE(client.IsTimedOut());
  client.Poll(0);
  EXPECT_TRUE(client.mLockedTimeout);
  EXPECT_EQ((std::vector<bool>{true}), client.listener.timeouts);
  client.TogglePopRequests(true);  // does not count as an answer
  client.Poll(0);
  EXPECT_EQ((std::vector<bool>{true}), client.listener.timeouts);
  PopResponseData nothing;
  client.popResponse(&nothing, false);
  client.Poll(0);
  EXPECT_EQ((std::vector<bool>{true, false}), client.listener.timeouts);
}

TEST(TKSLClientPoll, TimesAreComparedAcrossTheWrapOfTheTickClock) {
  FakeClock clock(0xFFFFFF00U);
  TestClient client(0);
  client.SetPopRequestFrequency(300);
  client.TogglePopRequests(true);
  PopResponseData nothing;
  client.popResponse(&nothing, false);
  client.Poll(0);
  client.dropCalls();
  clock.advance(0x200);
  EXPECT_FALSE(client.IsTimedOut());
  client.Poll(0);
  EXPECT_EQ(1U, client.mCallQueue.size());
  EXPECT_TRUE(client.listener.timeouts.empty());
}
