#include "vendelo-sdl2/TAppGuiModule.h"

#include <limits>
#include <utility>

#include "common/TBitmapFont.h"
#include "tests/support/TestFont.h"
#include "tests/vendelo-sdl2/TAppGuiModuleFixture.h"

using namespace guitest;

namespace {

TEST_F(AppGuiModule, StandsAsBuilt) {
  EXPECT_EQ(0, module->IsVisible());
  EXPECT_TRUE(module->IsRendering());
  EXPECT_FALSE(module->IsScreenRotated());
  EXPECT_EQ(nullptr, module->Loader());
  EXPECT_EQ(nullptr, module->getWindow());
  EXPECT_EQ(-1, module->selected_screen);
  EXPECT_EQ(60, module->mTargetFPS);
  EXPECT_TRUE(module->mVsync);
  float noVsync = -1;
  EXPECT_EQ(0.0f, module->getFPS(&noVsync));
  EXPECT_EQ(0.0f, noVsync);
  EXPECT_EQ(0.0f, module->getFPS(nullptr));
}

TEST_F(AppGuiModule, ShowAndHideCallTheirHooksOnce) {
  module->Show();
  module->Show();
  EXPECT_EQ(1, module->IsVisible());
  module->Hide();
  module->Hide();
  EXPECT_EQ(0, module->IsVisible());
  EXPECT_EQ((Names{"OnShow", "OnHide"}), take());
}

// ---- Displays

TEST_F(AppGuiModule, LoadTakesTheDisplayOfTheParameter) {
  const struct {
    const char* name;
    const char* value;  // null: the parameter is not there
    int expectedIndex;
  } rows[] = {
    {"absent", nullptr, 0},
    {"zero", "0", 0},
    {"one", "1", 0},
    {"two", "2", 1},
    {"three", "3", 1},
    {"negative", "-4", 0},
    {"least", "-2147483648", 0},
    {"largest", "2147483647", 1},
    {"more", "4294967297", 1},
    {"even less", "-9223372036854775808", 0},
    {"even more", "9223372036854775807", 1},
  };
  TestModule::Displays = {{0, 0, 100, 50}, {100, 0, 80, 60}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    if (row.value) setScreenIndex(row.value);
    module->selected_screen = -1;
    take();
    EXPECT_EQ(0, module->Load(nullptr));
    int index = -1;
    const SDL_Rect bounds = module->GetScreenBounds(&index);
    EXPECT_EQ(row.expectedIndex, index);
    EXPECT_EQ(row.expectedIndex == 0 ? 100 : 80, bounds.w);
    EXPECT_EQ((Names{"RefreshSize"}), take());
  }
  EXPECT_LE(module->selected_screen, 2);
}

TEST_F(AppGuiModule, AParameterWithoutANumberMeansTheFirstDisplay) {
  TestModule::Displays = {{0, 0, 100, 50}, {100, 0, 80, 60}};
  setScreenIndex("");
  module->selected_screen = -1;
  EXPECT_EQ(0, module->Load(nullptr));
  EXPECT_EQ(1, module->selected_screen) << "they are counted from 1";
}

TEST_F(AppGuiModule, AnyChosenNumberIsADisplay) {
  TestModule::Displays = {{0, 0, 100, 50}, {100, 0, 80, 60}};
  const int least = std::numeric_limits<int>::min(), largest = std::numeric_limits<int>::max();
  const std::pair<int, int> rows[] = {{least, 0}, {-1, 0}, {0, 0}, {1, 0}, {2, 1}, {3, 1}, {largest, 1}};
  for (const auto& [chosen, expected] : rows) {
    module->selected_screen = chosen;
    int index = -1;
    module->GetScreenBounds(&index);
    EXPECT_EQ(expected, index) << chosen;
  }
}

TEST_F(AppGuiModule, LoadKeepsADisplayThatIsChosenAlreadyAndLowersItToTheirNumber) {
  TestModule::Displays = {{0, 0, 100, 50}, {100, 0, 80, 60}};
  setScreenIndex("1");
  module->selected_screen = 2;
  EXPECT_EQ(0, module->Load(nullptr));
  EXPECT_EQ(2, module->selected_screen);
  module->selected_screen = 7;
  EXPECT_EQ(0, module->Load(nullptr));
  EXPECT_EQ(2, module->selected_screen);
}

TEST_F(AppGuiModule, LoadWithoutDisplaysLeavesTheWindowAlone) {
  EXPECT_EQ(-1, module->Load(nullptr));
  EXPECT_TRUE(take().empty());
  int index = 42;
  const SDL_Rect bounds = module->GetScreenBounds(&index);
  EXPECT_EQ(42, index);
  for (const int number : {bounds.x, bounds.y, bounds.w, bounds.h}) EXPECT_EQ(0, number);
}

TEST_F(AppGuiModule, ADisplayWithoutSizeMovesNothing) {
  TestModule::Displays = {{5, 5, 0, 50}};
  EXPECT_EQ(0, module->Load(nullptr));
  EXPECT_TRUE(take().empty());
}

TEST_F(AppGuiModule, CombinedBoundsAreSums) {
  TestModule::Displays = {{0, 0, 100, 50}, {100, 20, 80, 60}};
  const SDL_Rect all = module->GetCombinedScreenBounds();
  EXPECT_EQ(0, all.x);
  EXPECT_EQ(0, all.y);
  EXPECT_EQ(180, all.w);
  EXPECT_EQ(110, all.h);
  EXPECT_EQ(100, module->GetScreenBounds(nullptr).w);
}

// ---- Components

TEST_F(AppGuiModule, RootsHaveNoParentAndTheSameRulesAsChildren) {
  auto* a = new Root("a");
  TGuiComponent other(nullptr, 0, 0, 1, 1, "other");
  a->setParent(&other);
  EXPECT_EQ(a, module->AddComponent(a));
  EXPECT_EQ(nullptr, a->getParent());
  Root twin("a");
  EXPECT_EQ("application::Component \"a\" already exists in module \"GUI1\".",
            printed([&] { EXPECT_EQ(nullptr, module->AddComponent(&twin)); }));
  auto* bad = new Root("bad");
  bad->mLoadResult = 1;
  EXPECT_EQ("application::load() error for bad while adding on \"GUI1\".",
            printed([&] { EXPECT_EQ(bad, module->AddComponent(bad)); }));
  EXPECT_EQ(nullptr, module->AddComponent(nullptr));
  EXPECT_EQ(a, module->FindComponentByName("a"));
  EXPECT_TRUE(module->FindComponent(bad));
  EXPECT_FALSE(module->FindComponent(&twin));
  EXPECT_FALSE(module->SendComponentToBack(a));
  EXPECT_TRUE(module->SendComponentToBack(bad));
  EXPECT_TRUE(module->BringComponentToFront(a));
  EXPECT_FALSE(module->SendComponentToBack(&twin));
  EXPECT_EQ("application::Dropping component a from GUI1",
            printed([&] { EXPECT_TRUE(module->RemoveComponent(a, true)); }));
  EXPECT_EQ("application::Dropping component bad from GUI1",
            printed([&] { EXPECT_TRUE(module->RemoveComponent(std::string("bad"), true)); }));
  EXPECT_FALSE(module->RemoveComponent(std::string("bad"), true));
}

TEST_F(AppGuiModule, MainLogicRunsForEveryRoot) {
  add("a");
  add("b")->Hide();
  take();
  module->mainLogic();
  EXPECT_EQ((Names{"main a", "main b"}), take());
}

TEST_F(AppGuiModule, DestroyDropsTheLoaderFirstAndEveryRootByName) {
  module->SetLoader(new Root("loader"));
  add("a");
  add("b");
  const std::string folder = testfont::freshFolder("AppGuiModule");
  new TBitmapFont(renderer, "font", testfont::write(folder, "font", 1) + ".fnt");
  EXPECT_NE(nullptr, TBitmapFont::FindBitmapFont("font"));
  take();
  const std::string expected =
    "application::Dropping component a from GUI1application::Dropping component b from GUI1";
  EXPECT_EQ(expected, printed([&] { app.destroyGui(); }).substr(0, expected.size()));
  EXPECT_EQ((Names{"~loader", "~a", "~b", "~module"}), take());
  EXPECT_EQ(nullptr, TBitmapFont::FindBitmapFont("font"));  // gone before the renderer that its atlas belongs to
  EXPECT_EQ(nullptr, TestModule::mpGUIRendererStatic);
  EXPECT_EQ(nullptr, app.GUI());
}

}  // namespace
