#include <gtest/gtest.h>
#include <cstdlib>
#include <memory>

#include "tests/support/TestApplication.h"

using namespace vendelo_sdl2;

namespace {

class Listener : public TAppModule {
 public:
  int Load(void*) override { return 0; }
  int Ioctl(unsigned request, unsigned long argument) override {
    requests.push_back(request);
    types.push_back(reinterpret_cast<SDL_Event*>(argument)->type);
    if (onEvent) onEvent();
    return result;
  }
  std::vector<unsigned> requests, types;
  std::function<void()> onEvent;
  int result = 0;
};

class EventPump : public testing::Test {
 protected:
  EventPump() {
    setenv("SDL_VIDEODRIVER", "dummy", 1);
    SDL_Init(SDL_INIT_VIDEO);
    SDL_EventState(SDL_POLLSENTINEL, SDL_DISABLE);  // the library's own mark of the end of a poll
    SDL_FlushEvents(SDL_FIRSTEVENT, SDL_LASTEVENT);
  }
  ~EventPump() override {
    app.reset();
    SDL_Quit();
  }
  NoticeCapture notices;
  std::unique_ptr<TestApplication> app = std::make_unique<TestApplication>();
  Listener first, second;
};

TEST_F(EventPump, AnswersZeroWithoutAnEvent) { EXPECT_EQ(app->ProcessNextEvent(), 0); }

TEST_F(EventPump, ShowsEachEventToTheListenersInOrder) {
  std::vector<int> order;
  first.onEvent = [&] { order.push_back(1); };
  second.onEvent = [&] { order.push_back(2); };
  app->AddEventListener(&first, false);
  app->AddEventListener(&second, true);
  app->AddEventListener(nullptr, true);
  app->PostSDLUserEvent(5, &first, &second);
  EXPECT_EQ(app->ProcessNextEvent(), 1);
  EXPECT_EQ(order, (std::vector<int>{2, 1}));
  EXPECT_EQ(first.requests, std::vector<unsigned>{1});
  EXPECT_EQ(first.types, std::vector<unsigned>{SDL_USEREVENT});
  EXPECT_EQ(app->LastEvent.user.code, 5);
  EXPECT_EQ(app->LastEvent.user.data1, &first);
  EXPECT_EQ(app->LastEvent.user.data2, &second);
}

TEST_F(EventPump, OnlyOneConsumesTheEvent) {
  app->AddEventListener(&first, false);
  app->AddEventListener(&second, false);
  app->AddEventListener(&first, false);  // moves to the back, and stands there once
  second.result = 2;                     // not 1: not consumed
  app->PostSDLUserEvent(5, nullptr, nullptr);
  EXPECT_EQ(app->ProcessNextEvent(), 1);
  EXPECT_EQ(first.requests.size(), 1u);
  second.result = 1;
  app->PostSDLUserEvent(5, nullptr, nullptr);
  EXPECT_EQ(app->ProcessNextEvent(), 1);
  EXPECT_EQ(second.requests.size(), 2u);
  EXPECT_EQ(first.requests.size(), 1u);
}

TEST_F(EventPump, ListenersMayLeaveDuringTheWalk) {
  Listener third;
  for (Listener* listener : {&first, &second, &third}) app->AddEventListener(listener, false);
  first.onEvent = [&] {
    app->RemoveEventListener(&first);
    app->RemoveEventListener(&second);  // the next one of the walk
    app->RemoveEventListener(nullptr);
  };
  app->PostSDLUserEvent(5, nullptr, nullptr);
  EXPECT_EQ(app->ProcessNextEvent(), 1);
  EXPECT_TRUE(second.requests.empty());
  EXPECT_EQ(third.requests.size(), 1u);
  third.onEvent = [&] { app->ClearAllEventListeners(); };
  app->PostSDLUserEvent(5, nullptr, nullptr);
  app->PostSDLUserEvent(5, nullptr, nullptr);
  app->ProcessNextEvent();
  app->ProcessNextEvent();
  EXPECT_EQ(third.requests.size(), 2u);
  EXPECT_EQ(first.requests.size(), 1u);
}

TEST_F(EventPump, AListenerMayLeaveFromAnyPlace) {
  for (const size_t leaving : {0, 1, 2}) {
    Listener all[3];
    for (Listener& listener : all) app->AddEventListener(&listener, false);
    app->RemoveEventListener(&all[leaving]);
    app->RemoveEventListener(&all[leaving]);  // is not there any more
    app->PostSDLUserEvent(5, nullptr, nullptr);
    EXPECT_EQ(app->ProcessNextEvent(), 1);
    for (size_t i = 0; i < 3; ++i) EXPECT_EQ(all[i].requests.size(), i == leaving ? 0u : 1u) << leaving << i;
    app->ClearAllEventListeners();
  }
}

TEST_F(EventPump, OneThatLeavesDuringTheWalkTakesNobodysTurn) {
  for (const size_t leaving : {0, 3}) {  // shown already, and not the next one
    Listener all[4];
    for (Listener& listener : all) app->AddEventListener(&listener, false);
    all[1].onEvent = [&] { app->RemoveEventListener(&all[leaving]); };
    app->PostSDLUserEvent(5, nullptr, nullptr);
    EXPECT_EQ(app->ProcessNextEvent(), 1);
    for (size_t i = 0; i < 3; ++i) EXPECT_EQ(all[i].requests.size(), 1u) << leaving << i;
    EXPECT_EQ(all[3].requests.size(), leaving == 3 ? 0u : 1u);
    app->ClearAllEventListeners();
  }
}

TEST_F(EventPump, QuitPostsAPressAndNoRelease) {
  app->Quit();
  EXPECT_EQ(app->ProcessNextEvent(), 1);
  EXPECT_EQ(app->LastEvent.type, static_cast<Uint32>(SDL_KEYDOWN));
  EXPECT_EQ(app->LastEvent.key.keysym.sym, SDLK_ESCAPE);
  EXPECT_EQ(app->LastEvent.key.keysym.mod, KMOD_NONE);
  EXPECT_EQ(app->LastEvent.key.state, SDL_PRESSED);
  EXPECT_EQ(app->ProcessNextEvent(), 0);
  app->PostSDLKeyboardEvent(false, SDLK_a, KMOD_CTRL);
  EXPECT_EQ(app->ProcessNextEvent(), 1);
  EXPECT_EQ(app->LastEvent.type, static_cast<Uint32>(SDL_KEYUP));
  EXPECT_EQ(app->LastEvent.key.state, SDL_RELEASED);
  EXPECT_EQ(app->LastEvent.key.keysym.mod, KMOD_CTRL);
}

TEST_F(EventPump, DisabledFunctionKeysStopThePumpAfterTheListenersSawThem) {
  app->AddEventListener(&first, false);
  app->mDisableFunctionKeys = true;
  const struct {
    bool pressed;
    SDL_Keycode key;
    int result;
  } rows[] = {{true, SDLK_F1, 0},  {false, SDLK_F12, 0},     {true, SDLK_F10, 0},
              {true, SDLK_F13, 1}, {true, SDLK_CAPSLOCK, 1}, {false, SDLK_ESCAPE, 1}};
  size_t seen = 0;
  for (const auto& row : rows) {
    app->PostSDLKeyboardEvent(row.pressed, row.key, KMOD_NONE);
    EXPECT_EQ(app->ProcessNextEvent(), row.result) << row.key;
    EXPECT_EQ(first.types.size(), ++seen) << row.key;
  }
  SDL_Event other{};  // with the same bytes where a key would be
  other.type = SDL_KEYMAPCHANGED;
  other.key.keysym.sym = SDLK_F1;
  SDL_PushEvent(&other);
  EXPECT_EQ(app->ProcessNextEvent(), 1);
  app->mDisableFunctionKeys = false;
  app->PostSDLKeyboardEvent(true, SDLK_F1, KMOD_NONE);
  EXPECT_EQ(app->ProcessNextEvent(), 1);
}

TEST_F(EventPump, SwipesGiveUpTheirReferenceWithAllBitsOfTheMask) {
  struct Swipe : TSwipeData {
    void decRef() override { ++released; }
    int released = 0;
  } swipe;
  const struct {
    int code, released;
  } rows[] = {{0x1010000, 1}, {0x1010005, 1}, {0x1000000, 0}, {0x0010000, 0}, {0x7ffffff, 1}};
  for (const auto& row : rows) {
    swipe.released = 0;
    app->PostSDLUserEvent(row.code, static_cast<TSwipeData*>(&swipe), nullptr);
    EXPECT_EQ(app->ProcessNextEvent(), 1);
    EXPECT_EQ(swipe.released, row.released) << row.code;
  }
  app->PostSDLUserEvent(0x1010000, nullptr, nullptr);
  EXPECT_EQ(app->ProcessNextEvent(), 1);
  // Also of a swipe that a listener has consumed, and once it has seen it.
  swipe.released = 0;
  first.result = 1;
  first.onEvent = [&] { EXPECT_EQ(swipe.released, 0); };
  app->AddEventListener(&first, false);
  app->PostSDLUserEvent(0x1010000, static_cast<TSwipeData*>(&swipe), nullptr);
  EXPECT_EQ(app->ProcessNextEvent(), 1);
  EXPECT_EQ(first.requests.size(), 1u);
  EXPECT_EQ(swipe.released, 1);
  // Another event with the same bytes where the code would be is none.
  SDL_Event other{};
  other.type = SDL_USEREVENT + 1;
  other.user.code = 0x1010000;
  other.user.data1 = static_cast<TSwipeData*>(&swipe);
  SDL_PushEvent(&other);
  first.onEvent = nullptr;
  EXPECT_EQ(app->ProcessNextEvent(), 1);
  EXPECT_EQ(swipe.released, 1);
}

TEST_F(EventPump, TerminatingWakesALoopThatWaits) {
  app->setStatus(TApplication::APP_TERMINATE);
  EXPECT_EQ(app->ProcessNextEvent(), 1);
  EXPECT_EQ(app->LastEvent.type, static_cast<Uint32>(SDL_QUIT));
  SDL_Event next;
  ASSERT_EQ(SDL_PollEvent(&next), 1);
  EXPECT_EQ(next.type, static_cast<Uint32>(SDL_KEYDOWN));
  EXPECT_EQ(next.key.keysym.sym, SDLK_ESCAPE);
}

TEST_F(EventPump, WindowSizeReachesTheGui) {
  ASSERT_EQ(app->SetGUI<StubGui>(nullptr), 0);
  const auto post = [this](Uint8 kind) {
    SDL_Event event{};
    event.type = SDL_WINDOWEVENT;
    event.window.event = kind;
    SDL_PushEvent(&event);
    EXPECT_EQ(app->ProcessNextEvent(), 1);
  };
  post(SDL_WINDOWEVENT_MOVED);
  EXPECT_FALSE(StubGui::trace().contains("refresh size"));
  first.onEvent = [] { EXPECT_EQ(StubGui::trace().count("refresh size"), 1); };  // it comes before the listeners
  app->AddEventListener(&first, false);
  post(SDL_WINDOWEVENT_SIZE_CHANGED);
  EXPECT_EQ(StubGui::trace().count("refresh size"), 1);
  EXPECT_EQ(first.requests.size(), 1u);
}

TEST_F(EventPump, WindowSizeWithoutAGuiIsAnEventLikeAnyOther) {
  SDL_Event event{};
  event.type = SDL_WINDOWEVENT;
  event.window.event = SDL_WINDOWEVENT_SIZE_CHANGED;
  SDL_PushEvent(&event);
  EXPECT_EQ(app->ProcessNextEvent(), 1);
}

}  // namespace
