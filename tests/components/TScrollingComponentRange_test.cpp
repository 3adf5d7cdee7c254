// Numbers from the ends of their ranges: whatever was set, the ticker draws, and takes sensible numbers afterwards.
#include <climits>
#include <limits>

#include "components/TScrollingComponent.h"
#include "tests/components/WidgetFixture.h"

using namespace vendelo_sdl2;

namespace {

struct Ticker : TScrollingComponent {
  Ticker() : TScrollingComponent(nullptr, 0, 0, 400, 40, "ticker") {}
  using TScrollingComponent::mScrollDuration;
  using TScrollingComponent::mWaitDuration;
};

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kExtremes[] = {-kInfinity, std::numeric_limits<float>::lowest(),
                               -1e30f,     -1e12f,
                               -1.0f,      -1e-30f,
                               0.0f,       1e-30f,
                               1.0f,       1e12f,
                               1e30f,      std::numeric_limits<float>::max(),
                               kInfinity,  std::numeric_limits<float>::quiet_NaN()};

class ScrollingRange : public WidgetTest {
 protected:
  std::unique_ptr<Ticker> make(SDL_Color color) {
    auto ticker = std::make_unique<Ticker>();
    auto* content = new TGuiComponent(nullptr, 0, 0, 100, 40, "content");
    content->SetTargetTexture(solid(100, 40, color));
    ticker->AddContent(content, -1, TScrollingComponent::TOP);
    return ticker;
  }
  // The colours of the line after so many milliseconds.
  std::vector<Uint32> line(Ticker& ticker, Uint32 milliseconds) {
    clock.advance(milliseconds);
    clear(0, 0, 0);
    ticker.draw();
    std::vector<Uint32> colours;
    for (int x = 0; x < 400; x += 10) colours.push_back(pixel(x, 20));
    return colours;
  }
};

TEST_F(ScrollingRange, AnyNumberIsTaken) {
  for (const float number : kExtremes)
    for (const float other : {-20.0f, 1e-30f, 20.0f})
      for (int what = 0; what < 5; ++what) {
        auto ticker = make({255, 0, 0, 255});
        ticker->SetScrollSpeedRelative(other);
        ticker->SetWaitDuration(1);
        if (what == 0) ticker->SetScrollSpeedRelative(number);
        if (what == 1) ticker->SetScrollSpeedFixed(number);
        if (what == 2) ticker->SetWaitDuration(number);
        if (what == 3) ticker->SetSpacingFixed(number);
        if (what == 4) ticker->SetSpacingRelative(number);
        line(*ticker, 0);
        ticker->SetWaitDuration(number);
        for (const Uint32 time : {0u, 1u, 5000u, 0x7fffffffu, 0xfffffff0u}) line(*ticker, time);
      }
}

TEST_F(ScrollingRange, DurationsEndWhereTheyCanStillBeAddedUp) {
  auto ticker = make({255, 0, 0, 255});
  ticker->SetScrollSpeedRelative(1e-30f);
  EXPECT_EQ(ticker->mScrollDuration, 999999995904);  // the float nearest to 1e12
  ticker->SetScrollSpeedRelative(-1e-30f);
  EXPECT_EQ(ticker->mScrollDuration, -999999995904);
  ticker->SetScrollSpeedRelative(-20);
  EXPECT_EQ(ticker->mScrollDuration, -5000);
  ticker->SetWaitDuration(kInfinity);
  EXPECT_EQ(ticker->mWaitDuration, 999999995904);
  ticker->SetWaitDuration(std::numeric_limits<float>::quiet_NaN());
  EXPECT_EQ(ticker->mWaitDuration, 0);
}

TEST_F(ScrollingRange, PaddingAndSpacingOutOfSightLeaveTheLineEmpty) {
  for (const int padding : {INT_MAX, INT_MAX - 1, 1 << 29}) {
    auto ticker = make({255, 0, 0, 255});
    ticker->SetPadding(padding);
    EXPECT_EQ(line(*ticker, 10), std::vector<Uint32>(40, 0)) << padding;
  }
  auto ticker = make({255, 0, 0, 255});
  ticker->SetSpacingFixed(1e30f);
  const auto colours = line(*ticker, 10);
  EXPECT_EQ(colours.front(), 0xff0000u);  // the first one, and none behind it
  EXPECT_EQ(colours.back(), 0u);
}

}  // namespace
