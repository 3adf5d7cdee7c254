// The request for the whole state, its answer, and what one step of the logic makes of both.
#include "tests/vesperatopscreen/TopScreenAppFixture.h"

#include <algorithm>

using namespace apptest;

namespace {

// A client that never starts, so that what is queued stays until the test takes it.
class HeldClient : public TKSLClient {
 public:
  HeldClient() : TKSLClient("TopScreen", "http://127.0.0.1:1/KSL", 0) {}
  size_t queued() const { return mCallQueue.size(); }
  const MethodCall& front() const { return mCallQueue.front(); }
  // It is on its way.
  MethodCall take() {
    MethodCall call = mCallQueue.front();
    mCallQueue.pop_front();
    xmlrpc_DECREF(call.parameters);
    call.parameters = nullptr;
    return call;
  }
  // Its answer waits for the next Poll.
  void answer(const MethodCall& call, const PlatformState& state) {
    mResponseQueue.push({call.methodID, call.callback, new PlatformState(state), false, call.requestUID});
  }
  void fail(const MethodCall& call, const char* text) {
    mResponseQueue.push(
      {call.methodID, call.callback, new KSLError(E_INTERNAL_ERROR, text), true, call.requestUID});
  }
  // These events arrive with the next Poll.
  void deliver(const std::vector<std::pair<int, xmlrpc_c::value>>& events) {
    auto* data = new PopResponseData;
    data->numEvents = static_cast<int>(events.size());
    data->events = new EventPtr[events.size()];
    for (size_t i = 0; i < events.size(); ++i)
      data->events[i] = std::make_shared<Event>(events[i].first, events[i].second);
    mResponseQueue.push({M_POPEVENTS, mPopCallback, data, false, 0});
  }
};

class StatusRequest : public TopScreenAppTest {
 protected:
  StatusRequest() : client(new HeldClient) {
    app.pKSL.reset(client);
    client->SetListener(&app);
  }
  void wish() { app.handleError(M_POPEVENTS, E_INTERNAL_ERROR, "slow"); }

  HeldClient* client;
};

}  // namespace

TEST_F(StatusRequest, IsMadeByTheFirstStepAndNotAgain) {
  EXPECT_EQ(0, app.RunOnce());
  ASSERT_EQ(1u, client->queued());
  EXPECT_FALSE(app.hasNoData);
  EXPECT_EQ(M_PLATFORM_STATUS, client->front().methodID);
  EXPECT_EQ(0, client->front().priority);
  xmlrpc_env env;
  xmlrpc_env_init(&env);
  EXPECT_EQ(0, xmlrpc_array_size(&env, client->front().parameters));
  xmlrpc_env_clean(&env);
  for (int i = 0; i < 5; ++i) EXPECT_EQ(0, app.RunOnce());
  EXPECT_EQ(1u, client->queued());
  client->answer(client->take(), PlatformState());
  for (int i = 0; i < 5; ++i) EXPECT_EQ(0, app.RunOnce());
  EXPECT_EQ(0u, client->queued()) << "a good answer asks for nothing";
}

TEST_F(StatusRequest, AWishWaitsWhileOneIsQueuedOnItsWayOrUnread) {
  app.RunOnce();
  for (int i = 0; i < 1000; ++i) {
    wish();
    EXPECT_EQ(0, app.RunOnce());
  }
  EXPECT_EQ(1u, client->queued()) << "queued";
  const MethodCall call = client->take();
  wish();
  app.RunOnce();
  EXPECT_EQ(0u, client->queued()) << "on its way";
  client->answer(call, PlatformState());
  app.RunOnce();  // the answer is read after the moment of asking
  EXPECT_EQ(0u, client->queued()) << "unread";
  app.RunOnce();
  EXPECT_EQ(1u, client->queued()) << "the wish has not been forgotten";
  client->answer(client->take(), PlatformState());
  app.RunOnce();
  app.RunOnce();
  EXPECT_EQ(0u, client->queued()) << "and was one";
  wish();
  app.RunOnce();
  EXPECT_EQ(1u, client->queued());
}

TEST_F(StatusRequest, IsMadeAgainAfterEachFailure) {
  for (int i = 0; i < 3; ++i) {
    app.RunOnce();
    ASSERT_EQ(1u, client->queued()) << i;
    client->fail(client->take(), "no answer");
    app.RunOnce();
    EXPECT_TRUE(app.hasNoData);
  }
  EXPECT_EQ(1, static_cast<int>(std::count_if(app.lines.begin(), app.lines.end(), [](const TestApp::Line& line) {
              return line.text == "WARNING: Update of top screen data returned error - no answer";
            })));
}

TEST_F(StatusRequest, AnAnswerThatThrowsInItsHandlingBlocksNoOther) {
  app.RunOnce();
  client->answer(client->take(), PlatformState());
  app.throwsInLog = true;
  app.RunOnce();  // that the first data bring fewer than four messages goes into the log
  app.throwsInLog = false;
  app.hasNoData = true;
  app.RunOnce();
  EXPECT_EQ(1u, client->queued());
}

TEST_F(StatusRequest, WhatAStepHasToRefreshIsOfItsOwnPoll) {
  app.hasNoData = false;
  app.updatedJp = true;
  app.updatedGame = true;
  app.RunOnce();
  EXPECT_FALSE(app.updatedJp);
  EXPECT_FALSE(app.updatedGame);
  EXPECT_EQ(0u, app.deferred());
  client->deliver({{T_JACKPOT_REFRESH, xmlrpc_c::value_nil()}, {T_GAME_EXITED, xmlrpc_c::value_nil()}});
  app.RunOnce();
  EXPECT_TRUE(app.updatedJp);
  EXPECT_TRUE(app.updatedGame);
  EXPECT_EQ(2u, app.deferred()) << "clear the overlay, show the levels";
  app.RunOnce();
  EXPECT_FALSE(app.updatedJp);
  EXPECT_FALSE(app.updatedGame);
  EXPECT_EQ(2u, app.deferred());
}

TEST_F(StatusRequest, OneStepReadsEverythingThatHasArrived) {
  app.hasNoData = false;
  for (int i = 0; i < 3; ++i) client->deliver({{T_JACKPOT_REFRESH, xmlrpc_c::value_nil()}});
  client->deliver({{T_GAME_EXITED, xmlrpc_c::value_nil()}});
  app.RunOnce();
  EXPECT_TRUE(app.updatedJp);
  EXPECT_TRUE(app.updatedGame) << "the last one of them";
}
