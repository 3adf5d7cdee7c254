// What a component asks of SDL when it is drawn, to the letter.
#include <dlfcn.h>

#include "tests/support/WidgetHarness.h"
#include "tests/vendelo-sdl2/TGuiComponentFixture.h"

using namespace guitest;

namespace {

Names calls;
SDL_Texture* picture = nullptr;  // the texture that the calls name

std::string text(const SDL_Rect* r) {
  if (!r) return "all";
  return std::to_string(r->x) + "," + std::to_string(r->y) + "," + std::to_string(r->w) + "," +
         std::to_string(r->h);
}
std::string name(SDL_Texture* texture) { return texture ? texture == picture ? " picture " : " other " : " null "; }

}  // namespace

// Linked in front of SDL's.
extern "C" {

int SDL_SetTextureAlphaMod(SDL_Texture* texture, Uint8 alpha) {
  calls.push_back("alpha" + name(texture) + std::to_string(alpha));
  static const auto sdl =
    reinterpret_cast<decltype(&SDL_SetTextureAlphaMod)>(dlsym(RTLD_NEXT, "SDL_SetTextureAlphaMod"));
  return sdl(texture, alpha);
}

int SDL_RenderCopy(SDL_Renderer*, SDL_Texture* texture, const SDL_Rect* from, const SDL_Rect* to) {
  calls.push_back("copy" + name(texture) + text(from) + " to " + text(to));
  return 0;
}

int SDL_RenderCopyEx(SDL_Renderer*, SDL_Texture* texture, const SDL_Rect* from, const SDL_Rect* to,
                     const double angle, const SDL_Point* centre, const SDL_RendererFlip flip) {
  calls.push_back("turned" + name(texture) + text(from) + " to " + text(to) + " by " + std::to_string(angle) +
                  (centre ? " centre" : "") + (flip ? " flip" : ""));
  return 0;
}

void SDL_DestroyTexture(SDL_Texture* texture) {
  calls.push_back("destroy" + name(texture));
  static const auto sdl = reinterpret_cast<decltype(&SDL_DestroyTexture)>(dlsym(RTLD_NEXT, "SDL_DestroyTexture"));
  sdl(texture);
}

}  // extern "C"

namespace {

class ComponentCalls : public testing::Test {
 protected:
  ComponentCalls() {
    picture = harness.makeTexture(10, 10, {255, 255, 255, 255});
    calls.clear();
  }
  static Names taken() {
    Names all;
    all.swap(calls);
    return all;
  }
  Names drawn() {
    calls.clear();
    component.draw();
    return taken();
  }
  WidgetHarness harness{20, 20};
  TGuiComponent component{nullptr, 3, 4, 10, 20, "c"};
};

TEST_F(ComponentCalls, TheAlphaIsSetAlsoWithoutATexture) {
  EXPECT_EQ((Names{"alpha null 255"}), drawn());
  component.setAlpha(7);
  component.setAngle(10);
  EXPECT_EQ((Names{"alpha null 7"}), drawn());
}

TEST_F(ComponentCalls, AlphaIsCutTo8Bits) {
  const struct {
    int alpha;
    const char* expected;
  } rows[] = {{0, "0"}, {255, "255"}, {256, "0"}, {300, "44"}, {-1, "255"}};
  component.SetTargetTexture(picture);
  for (const auto& row : rows) {
    component.setAlpha(row.alpha);
    EXPECT_EQ(std::string("alpha picture ") + row.expected, drawn().at(0));
  }
}

TEST_F(ComponentCalls, OnlyAnglesAbove0TurnThePicture) {
  component.SetTargetTexture(picture);
  component.setSrcRect({1, 2, 5, 6});
  const struct {
    double angle;
    const char* expected;
  } rows[] = {{0.0, "copy picture 1,2,5,6 to 3,4,10,20"},
              {-0.001, "copy picture 1,2,5,6 to 3,4,10,20"},
              {-30.0, "copy picture 1,2,5,6 to 3,4,10,20"},
              {0.001, "turned picture 1,2,5,6 to 3,4,10,20 by 0.001000"},
              {30.0, "turned picture 1,2,5,6 to 3,4,10,20 by 30.000000"},
              {450.0, "turned picture 1,2,5,6 to 3,4,10,20 by 450.000000"}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.angle);
    component.setAngle(row.angle);
    EXPECT_EQ((Names{"alpha picture 255", row.expected}), drawn());
  }
}

TEST_F(ComponentCalls, AChildIsDrawnAfterItsParentAtTheNewPlace) {
  component.SetTargetTexture(picture);
  auto* child = new TGuiComponent(nullptr, 100, 200, 1, 2, "child");
  child->SetTargetTexture(harness.makeTexture(1, 2, {0, 0, 0, 255}));
  component.AddComponent(child);
  component.setX(50);
  component.setAlpha(100);
  EXPECT_EQ((Names{"alpha picture 100", "copy picture 0,0,10,20 to 50,4,10,20", "alpha other 100",
                   "copy other 0,0,1,2 to 150,204,1,2"}),
            drawn());
}

TEST_F(ComponentCalls, TheProductOfTwoAlphasIsTruncatedInSinglePrecision) {
  const struct {
    int parent, own, expected;
  } rows[] = {{128, 128, 64}, {255, 255, 255}, {255, 1, 1},     {0, 200, 0},   {200, 0, 0},
              {100, 200, 78}, {254, 255, 254}, {300, 128, 150}, {147, 85, 49}, {187, 165, 121}};
  auto* child = new TGuiComponent(nullptr, 0, 0, 1, 1, "child");
  component.AddComponent(child);
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::Message() << row.parent << " and " << row.own);
    component.setAlpha(row.parent);
    child->setAlpha(row.own);
    EXPECT_EQ("alpha null " + std::to_string(row.expected), drawn().back());
    EXPECT_EQ(row.own, child->alpha());
  }
}

TEST_F(ComponentCalls, TheTextureOutlivesItsComponent) {
  auto* child = new TGuiComponent(nullptr, 0, 0, 1, 1, "child");
  child->SetTargetTexture(picture);
  component.AddComponent(child);
  testing::internal::CaptureStdout();
  component.RemoveComponent(child, true);
  testing::internal::GetCapturedStdout();
  auto* root = new TGuiComponent(nullptr, 0, 0, 1, 1, "root");
  root->SetTargetTexture(picture);
  delete root;
  EXPECT_TRUE(taken().empty());
}

}  // namespace
