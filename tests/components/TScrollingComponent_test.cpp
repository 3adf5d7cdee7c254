#include "tests/components/TickerFixture.h"

#include <tuple>

#include "tests/components/AllocationCount.h"

using namespace tickertest;

namespace {

struct Plain : TGuiComponent {
  Plain(int x, int y) : TGuiComponent(nullptr, x, y, 400, 200, "parent") {}
};

// What a new ticker holds.
struct Inside : Ticker {
  using Ticker::Ticker;
  using TScrollingComponent::fMovementFunction;
  using TScrollingComponent::mFirstDraw;
  using TScrollingComponent::mIsRelativeSpacing;
  using TScrollingComponent::mPadding;
  using TScrollingComponent::mScrollDuration;
  using TScrollingComponent::mSpacing;
  using TScrollingComponent::mWaitChange;
  using TScrollingComponent::mWaitChangeAt;
  using TScrollingComponent::mWaitDuration;
};

float seenT = 0, seenDuration = 0;
float quadratic(float t, float duration) {
  seenT = t;
  seenDuration = duration;
  return t * t;
}

}  // namespace

TEST_F(Scrolling, StartsAsDocumented) {
  Inside ticker(0, 50, 400, 60);
  EXPECT_EQ(100.0f, ticker.mSpacing);
  EXPECT_FALSE(ticker.mIsRelativeSpacing);
  EXPECT_EQ(0, ticker.mPadding);
  EXPECT_EQ(1000, ticker.mScrollDuration);
  EXPECT_EQ(0, ticker.mWaitDuration);
  EXPECT_EQ(0, ticker.mWaitChange);
  EXPECT_EQ(0u, ticker.mWaitChangeAt);
  EXPECT_EQ(0u, ticker.mFirstDraw);
  EXPECT_EQ(0, ticker.NumberOfChildren());
  EXPECT_EQ(0.25f, ticker.fMovementFunction(0.25f, 9.0f));
  int w = 0, h = 0;
  SDL_QueryTexture(ticker.GetTargetTexture(), nullptr, nullptr, &w, &h);
  EXPECT_EQ(400, w);
  EXPECT_EQ(60, h);
  EXPECT_EQ(0, TScrollingComponent::CENTER);
  EXPECT_EQ(1, TScrollingComponent::TOP);
  EXPECT_EQ(2, TScrollingComponent::BOTTOM);
}

TEST_F(Scrolling, WithoutChildrenNothingHappens) {
  clear(0, 0, 0);
  clock.set(500);
  ticker.draw();
  EXPECT_EQ(0, inked(0).w);
  Child* child = oneChild();
  at(*child, 0);
  EXPECT_EQ((Xs{-250, 250}), at(*child, 2625)) << "the first draw was the one with a child";
}

TEST_F(Scrolling, ContentsStandInStripOrder) {
  auto *a = new Child(10, 10, "a"), *b = new Child(10, 10, "b"), *c = new Child(10, 10, "c"),
       *d = new Child(10, 10, "d");
  ticker.AddContent(a, -1, TScrollingComponent::TOP);
  ticker.AddContent(b, 7, TScrollingComponent::CENTER);  // outside: at the end
  ticker.AddContent(c, 0, TScrollingComponent::BOTTOM);
  ticker.AddContent(d, 2, TScrollingComponent::BOTTOM);
  EXPECT_EQ(4, ticker.NumberOfChildren());
  EXPECT_EQ(c, ticker.ContentAt(0));
  EXPECT_EQ(a, ticker.ContentAt(1));
  EXPECT_EQ(d, ticker.ContentAt(2));
  EXPECT_EQ(b, ticker.ContentAt(3));
  EXPECT_EQ(nullptr, a->getParent());
  EXPECT_EQ(nullptr, ticker.ContentAt(4));
  EXPECT_EQ(nullptr, ticker.ContentAt(-1));
  EXPECT_EQ(a, ticker.ContentAt<Child>(1));
  EXPECT_EQ(nullptr, ticker.ContentAt<TScrollingComponent>(1));
  ticker.draw();
  for (const auto& [child, x, y] : {std::tuple{c, 0, 50}, {a, 110, 0}, {d, 220, 50}, {b, 330, 25}}) {
    ASSERT_EQ(1u, child->places.size()) << "at " << x;
    EXPECT_EQ((SDL_Point{x, y}), child->places[0]) << "at " << x;
  }

  testing::internal::CaptureStdout();
  Child again(10, 10, "a");
  ticker.AddContent(&again, 0, TScrollingComponent::TOP);
  ticker.AddContent(nullptr, 0, TScrollingComponent::TOP);
  EXPECT_EQ(4, ticker.NumberOfChildren()) << "a name that is there already, and null";
  ticker.RemoveAllContents();
  testing::internal::GetCapturedStdout();
  EXPECT_EQ(0, ticker.NumberOfChildren());
  EXPECT_EQ(nullptr, ticker.FindComponentByName("b"));
}

// Also after hours, when the smallest difference has added up.
TEST_F(Scrolling, ARelativeSpeedIsAPercentageOfTheWidthASecond) {
  const struct {
    float speed;
    long duration;
  } rows[] = {{100, 1000}, {-50, -2000}, {-30, -3333}, {7, 14286},   {1, 100000},
              {2, 50000},  {-20, -5000}, {100000, 1},  {-100000, -1}};
  Child* child = oneChild();
  ticker.SetWaitDuration(0);
  for (const auto& row : rows) {
    ticker.SetScrollSpeedRelative(row.speed);
    for (const Uint32 elapsed : {0u, 102u, 777u, 10000102u})
      EXPECT_EQ(standing(elapsed, 0, row.duration), at(*child, elapsed)) << row.speed << " after " << elapsed;
  }
  ticker.SetScrollSpeedRelative(0);
  EXPECT_EQ(Xs{0}, at(*child, 777));
}

TEST_F(Scrolling, AFixedSpeedIsInPixelsASecond) {
  Child* child = oneChild();
  ticker.SetWaitDuration(0);
  ticker.SetScrollSpeedFixed(-100);
  for (const Uint32 elapsed : {0u, 777u, 10000102u})
    EXPECT_EQ(standing(elapsed, 0, -4000), at(*child, elapsed)) << elapsed;
}

TEST_F(Scrolling, ASpacingIsAPercentageOfTheWidthOrFixed) {
  auto* child = new Child(100, 20, "c");
  ticker.AddContent(child, -1, TScrollingComponent::TOP);
  ticker.SetSpacingRelative(25);
  EXPECT_EQ((Xs{0, 200}), at(*child, 0));
  ticker.SetSpacingFixed(33);
  EXPECT_EQ((Xs{0, 133, 266, 399}), at(*child, 0));
}

TEST_F(Scrolling, OneChildWaitsSlidesAndBeginsAgain) {
  Child* child = oneChild();
  const struct {
    Uint32 elapsed;
    Xs expected;
  } rows[] = {{0, {0}},
              {1999, {0}},
              {2000, {0}},
              {2005, {-2}},
              {2625, {-250, 250}},
              {3249, {0}},  // 499.6 pixels to the left, rounded to 500: the child has gone, its next copy is at 0
              {3250, {0}},
              {3250 + 2625, {-250, 250}},
              {3250 * 100 + 1, {0}}};
  for (const auto& row : rows) EXPECT_EQ(row.expected, at(*child, row.elapsed)) << row.elapsed;
}

TEST_F(Scrolling, APositiveDurationMovesToTheRightWithNothingLeftOfTheFirst) {
  Child* child = oneChild();
  ticker.SetScrollSpeedFixed(400);
  EXPECT_EQ((Xs{0}), at(*child, 0));
  EXPECT_EQ((Xs{250}), at(*child, 2625));
}

TEST_F(Scrolling, SeveralChildrenFollowOneAnother) {
  auto *a = new Child(100, 20, "a"), *b = new Child(200, 20, "b");
  ticker.AddContent(a, -1, TScrollingComponent::CENTER);
  ticker.AddContent(b, -1, TScrollingComponent::CENTER);
  ticker.SetSpacingRelative(10);  // 40 pixels
  ticker.SetScrollSpeedFixed(-400);
  ticker.SetWaitDuration(0.5f);
  // a: 500 + 140 * 1000 / 400 = 850 ms, b: 500 + 600 = 1100 ms
  const struct {
    Uint32 elapsed;
    Xs a, b;
  } rows[] = {{0, {0, 380}, {140}},    {500, {0, 380}, {140}},     {700, {-80, 300}, {60}}, {900, {240}, {0, 380}},
              {1350, {240}, {0, 380}}, {1650, {120}, {-120, 260}}, {1950, {0, 380}, {140}}};
  for (const auto& row : rows) {
    b->places.clear();
    EXPECT_EQ(row.a, at(*a, row.elapsed)) << row.elapsed;
    EXPECT_EQ(row.b, b->xs()) << row.elapsed;
  }
}

TEST_F(Scrolling, TheMovementFunctionEasesTheSlide) {
  Child* child = oneChild();
  ticker.SetMovementFunction(quadratic);
  EXPECT_EQ((Xs{0}), at(*child, 0));
  EXPECT_EQ((Xs{-125, 375}), at(*child, 2625));
  EXPECT_FLOAT_EQ(0.5f, seenT);
  EXPECT_FLOAT_EQ(1.25f, seenDuration);
}

TEST_F(Scrolling, ANegativeWaitStandsAtThePadding) {
  Child* child = oneChild();
  ticker.SetWaitDuration(-1.0f);
  ticker.SetPadding(30);
  for (const Uint32 elapsed : {0u, 2625u, 100000u}) EXPECT_EQ((Xs{30}), at(*child, elapsed));
}

TEST_F(Scrolling, ThePaddingIsAddedToTheSlide) {
  Child* child = oneChild();
  ticker.SetPadding(30);
  EXPECT_EQ((Xs{30}), at(*child, 0));
  EXPECT_EQ((Xs{-220, 280}), at(*child, 2625));
}

// A negative one counts with its size for the loop that a change waits for, where there was no child yet.
TEST_F(Scrolling, BeforeTheFirstDrawAWaitIsTakenAtOnce) {
  const struct {
    bool withChild;
    Uint32 negative;  // how long the loop of -0.25 s is
  } rows[] = {{false, 750}, {true, 999}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.withChild);
    for (const bool isNegative : {false, true}) {
      Ticker other(0, 50, 400, 60);
      auto* child = new Child(400, 20, "one");
      if (row.withChild) other.AddContent(child, -1, TScrollingComponent::CENTER);
      other.SetScrollSpeedFixed(-400);
      other.SetWaitDuration(9.0f);
      other.SetWaitDuration(isNegative ? -0.25f : 1.5f);
      if (!row.withChild) other.AddContent(child, -1, TScrollingComponent::CENTER);
      at(other, *child, 0);
      if (isNegative) other.SetWaitDuration(0);
      const Uint32 end = isNegative ? row.negative : 1500;
      EXPECT_EQ((Xs{0}), at(other, *child, end - 1));
      EXPECT_EQ((Xs{0}), at(other, *child, end + 1));
      EXPECT_EQ((Xs{-1}), at(other, *child, end + 2));
      EXPECT_EQ((Xs{-250, 250}), at(other, *child, end + 625));
    }
  }
}

TEST_F(Scrolling, WaitChangeTakesEffectAtTheEndOfTheLoop) {
  Child* child = oneChild();
  at(*child, 0);
  clock.set(1000 + 3100);
  // The loop counts 2000 + 400 * 1000 / 400 here, without the spacing: the change falls at the second one's end.
  ticker.SetWaitDuration(5.0f);
  EXPECT_EQ((Xs{-250, 250}), at(*child, 3250 + 2625)) << "the old wait goes on";
  EXPECT_EQ((Xs{-300, 200}), at(*child, 5999));
  EXPECT_EQ((Xs{0}), at(*child, 6000));
  EXPECT_EQ((Xs{0}), at(*child, 6000 + 5000));
  EXPECT_EQ((Xs{-250, 250}), at(*child, 6000 + 5625));
  EXPECT_EQ((Xs{-250, 250}), at(*child, 6000 + 6250 + 5625)) << "from then on";
}

TEST_F(Scrolling, ANegativeWaitStopsTheStripAtTheEndOfTheLoop) {
  Child* child = oneChild();
  at(*child, 0);
  ticker.SetWaitDuration(-0.25f);
  EXPECT_EQ((Xs{-250, 250}), at(*child, 2625));
  for (const Uint32 elapsed : {3000, 3777, 90000}) EXPECT_EQ((Xs{0}), at(*child, elapsed)) << elapsed;
  ticker.SetWaitDuration(0);  // at the end of the 88th loop of 999 ms
  EXPECT_EQ((Xs{0}), at(*child, 90912 + 1));
  EXPECT_EQ((Xs{-1}), at(*child, 90912 + 2));
}

TEST_F(Scrolling, AFrameAfterTheChangeCountsFromTheChange) {
  Child* child = oneChild();
  at(*child, 0);
  ticker.SetWaitDuration(5.0f);
  EXPECT_EQ((Xs{0}), at(*child, 3777));
  EXPECT_EQ((Xs{-250, 250}), at(*child, 3000 + 5625));
}

TEST_F(Scrolling, TheLoopOfAWaitChangeIsCountedInWholeNumbers) {
  auto* child = new Child(399, 20, "odd");
  ticker.AddContent(child, -1, TScrollingComponent::CENTER);
  ticker.SetScrollSpeedFixed(-400);
  ticker.SetWaitDuration(2.0f);
  at(*child, 0);
  ticker.SetWaitDuration(5.0f);
  EXPECT_EQ((Xs{-398, 101}), at(*child, 2996));
  EXPECT_EQ((Xs{0}), at(*child, 2997));
}

// A child of no width is drawn where it stands behind the edge, once each 100 pixels.
TEST_F(Scrolling, AWaitChangeWithoutAnyLoopTakesEffectAtOnce) {
  auto* child = new Child(0, 20, "nothing");
  ticker.AddContent(child, -1, TScrollingComponent::CENTER);
  ticker.SetScrollSpeedFixed(-400);
  at(*child, 0);
  EXPECT_EQ((Xs{76, 176, 276, 376}), at(*child, 60));
  ticker.SetWaitDuration(5.0f);
  EXPECT_EQ((Xs{100, 200, 300}), at(*child, 60));
  EXPECT_EQ((Xs{100, 200, 300}), at(*child, 60 + 5001));
  EXPECT_EQ((Xs{99, 199, 299, 399}), at(*child, 60 + 5002));
}

TEST_F(Scrolling, RoundsThatDoNotAdvanceEnd) {
  auto* child = new Child(0, 20, "nothing");
  ticker.AddContent(child, -1, TScrollingComponent::CENTER);
  ticker.SetPadding(5);
  for (const float spacing : {0.0f, -50.0f}) {
    ticker.SetSpacingFixed(spacing);
    EXPECT_EQ((Xs{5}), at(*child, 10)) << spacing;
    EXPECT_EQ((Xs{5}), at(*child, 1234567)) << spacing;
  }
}

TEST_F(Scrolling, NoSlideWithoutWidthOrSpeed) {
  Child* child = oneChild();
  ticker.SetScrollSpeedRelative(0);
  EXPECT_EQ((Xs{0}), at(*child, 0));
  EXPECT_EQ((Xs{0}), at(*child, 2625));
  Ticker flat(0, 0, 0, 60);
  flat.AddContent(new Child(10, 10, "x"), -1, TScrollingComponent::TOP);
  flat.draw();
  flat.SetWaitDuration(2.0f);
  clock.advance(100000);
  flat.draw();
  flat.SetScrollSpeedFixed(10);
}

TEST_F(Scrolling, VerticalPlaces) {
  const struct {
    TScrollingComponent::ContentAlign alignment;
    int y;
  } rows[] = {{TScrollingComponent::CENTER, 20}, {TScrollingComponent::TOP, 0}, {TScrollingComponent::BOTTOM, 40}};
  for (const auto& row : rows) {
    Ticker one(0, 0, 400, 60);
    auto* child = new Child(400, 20, "c");
    one.AddContent(child, -1, row.alignment);
    one.draw();
    ASSERT_FALSE(child->places.empty());
    EXPECT_EQ(row.y, child->places[0].y);
  }
}

TEST_F(Scrolling, VisibilityIsSetWithoutHooksAndChildrenAreDrawnAnyway) {
  Child* child = oneChild();
  ticker.SetVisible(false);
  EXPECT_FALSE(ticker.isVisible());
  EXPECT_FALSE(child->isVisible());
  EXPECT_EQ((Xs{0}), at(*child, 0));
  ticker.SetVisible(true);
  EXPECT_TRUE(child->isVisible());
  EXPECT_EQ(0, ticker.hooks);
}

TEST_F(Scrolling, AHiddenTickerGoesOnByTheClock) {
  Child* child = oneChild();
  at(*child, 0);
  EXPECT_EQ((Xs{-250, 250}), at(*child, 3250 * 7 + 2625));
}

// The memory of the card may be full: the screen keeps what stands on it.
TEST_F(Scrolling, WithoutItsTextureItLeavesTheScreenAlone) {
  Child* child = oneChild();
  SDL_Texture* own = ticker.GetTargetTexture();
  ticker.SetTargetTexture(nullptr);
  clear(10, 20, 30);
  EXPECT_EQ(Xs{}, at(*child, 100));
  EXPECT_EQ(0x0A141Eu, pixel(200, 80));
  ticker.SetTargetTexture(own);
  EXPECT_EQ(Xs{0}, at(*child, 200));
}

TEST_F(Scrolling, DrawsThroughItsTextureAndPutsTheStateBack) {
  Plain parent(10, 20);
  auto* inner = new Ticker(20, 30, 300, 60);
  parent.AddComponent(inner);
  for (int i = 0; i < 3; ++i) {
    auto* child = new Child(120, 30 + 10 * i, i == 0 ? "a" : i == 1 ? "b" : "c");
    child->SetTargetTexture(solid(120, 30 + 10 * i, SDL_Color{static_cast<Uint8>(255 - 100 * i), 80, 40, 255}));
    inner->AddContent(child, -1, static_cast<TScrollingComponent::ContentAlign>(i));
  }
  inner->SetScrollSpeedFixed(-100);
  SDL_Texture* target = SDL_CreateTexture(renderer, SDL_PIXELFORMAT_RGBA8888, SDL_TEXTUREACCESS_TARGET, 400, 200);
  textures.push_back(target);
  SDL_SetRenderTarget(renderer, target);
  clear(0, 0, 0);
  SDL_SetRenderDrawColor(renderer, 255, 0, 0, 255);  // as the digits leave it
  inner->draw();
  clock.advance(700);
  SDL_SetRenderDrawColor(renderer, 0, 0, 0, 255);
  SDL_RenderClear(renderer);
  SDL_SetRenderDrawColor(renderer, 255, 0, 0, 255);
  inner->draw();
  Uint8 r = 0, g = 1, b = 1, a = 0;
  SDL_GetRenderDrawColor(renderer, &r, &g, &b, &a);
  EXPECT_EQ(255, r);
  EXPECT_EQ(0, g);
  EXPECT_EQ(255, a);
  EXPECT_EQ(target, SDL_GetRenderTarget(renderer));
  EXPECT_EQ(0u, pixel(29, 60)) << "clipped at the left edge";
  EXPECT_EQ(0u, pixel(331, 60)) << "and at the right one";
  EXPECT_GOLDEN(renderer, "components/ticker_strip");
  inner->setAlpha(100);
  clear(0, 0, 0);
  inner->draw();
  EXPECT_GOLDEN(renderer, "components/ticker_alpha");
  SDL_SetRenderTarget(renderer, nullptr);
}

TEST_F(Scrolling, AFrameTakesNothingFromTheHeap) {
  auto* child = new Plain(0, 0);
  child->SetTargetTexture(solid(100, 20, SDL_Color{255, 0, 0, 255}));
  ticker.AddContent(child, -1, TScrollingComponent::CENTER);
  ticker.draw();
  const long before = allocations::count;
  for (int i = 0; i < 100; ++i) {
    clock.advance(16);
    ticker.draw();
  }
  EXPECT_EQ(before, allocations::count);
}
