// Drawing only what changes is not to be seen.
#include <utility>

#include "tests/system/PanelHarness.h"

namespace systest {
namespace {

class Redraw : public PanelTest {
 protected:
  // Another picture than the last one, that has come to stand.
  Picture nextStill(const Picture& last) {
    Picture seen = last;
    EXPECT_TRUE(within(20000, [&] {
      const Picture before = std::exchange(seen, mX.picture());
      return seen != last && seen == before && asksForEvents(2) && mX.picture() == seen;
    }));
    return seen;
  }

  // Pictures of screens on which nothing moves, in one run of the program.
  std::vector<Picture> stillPictures(Renderer renderer, const std::string& redraw) {
    mProgram.kill();
    mSimulator.apply({{"do", "forget"}});
    set({{"Instructions", Json::array()}, {"ActiveGame", {{"ID", 1}, {"Name", ""}, {"Type", kMenu}}}});
    startProgram(mSimulator.address(), renderer, {{"TOPSCREEN_REDRAW", redraw}});
    std::vector<Picture> pictures;
    const auto take = [&](const std::string& due) {
      EXPECT_TRUE(keeps(due)) << "TOPSCREEN_REDRAW=" << redraw;
      pictures.push_back(mX.picture());
    };
    EXPECT_TRUE(shows("background title gold"));
    set({{"Instructions", {"1", "", "3", "4", "5", "6", "7", "8"}}});
    EXPECT_TRUE(shows("background button-1 button-2-off low=1345"));
    take("background button-1 button-2-off low=1345");
    set({{"Instructions", {"", "2", "3", "4", "5", "6", "7", "8"}}});
    pictures.push_back(nextStill(pictures.back()));
    set({{"DemoMode", true}});
    pictures.push_back(nextStill(pictures.back()));
    return pictures;
  }
};

TEST_F(Redraw, TheScreenIsThatOfDrawingEverything) {
  for (const Renderer renderer : {Renderer::Software, Renderer::OpenGL}) {
    set({{"DemoMode", false}});
    const std::vector<Picture> changes = stillPictures(renderer, "-");
    set({{"DemoMode", false}});
    const std::vector<Picture> all = stillPictures(renderer, "all");
    ASSERT_EQ(all.size(), changes.size());
    for (size_t i = 0; i < all.size(); ++i) EXPECT_TRUE(all[i] == changes[i]) << "picture " << i;
  }
}

// Also where nothing changes, and nothing is drawn.
TEST_F(Redraw, WhatAnotherWindowHasCoveredComesBack) {
  for (const Renderer renderer : {Renderer::Software, Renderer::OpenGL}) {
    const Picture due = stillPictures(renderer, "-").back();
    const unsigned long other = mX.openWindow({300, 200, 900, 600}, {255, 0, 255});
    ASSERT_TRUE(within(20000, [&] { return alike(mX.pixel(700, 500), {255, 0, 255}); }));
    EXPECT_TRUE(asksForEvents(2));
    mX.closeWindow(other);
    EXPECT_TRUE(within(20000, [&] { return mX.picture() == due; }));

    const unsigned long own = mX.findWindow("TopScreen");
    ASSERT_NE(0u, own);
    mX.hideWindow(own);
    ASSERT_TRUE(within(20000, [&] { return mX.picture() != due; }));
    mX.showWindow(own);
    EXPECT_TRUE(within(20000, [&] { return mX.picture() == due; }));
    set({{"DemoMode", false}});
  }
}

}  // namespace
}  // namespace systest
