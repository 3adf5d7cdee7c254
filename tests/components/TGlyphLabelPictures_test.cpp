// What glyph labels look like, case by case: one golden picture each.
#include <gtest/gtest.h>
#include <functional>
#include <string>

#include "components/TGlyphLabel.h"
#include "tests/support/FakeClock.h"
#include "tests/support/Golden.h"
#include "tests/support/TestFont.h"
#include "tests/support/WidgetHarness.h"

using namespace vendelo_sdl2;

namespace {

constexpr SDL_Rect kBox{16, 12, 88, 40};

// A label in its box, which is shown lighter than the ground, in a frame that is its parent.
class Stage {
 public:
  Stage() : frame(rectangle({10, 6, 100, 52}, {40, 50, 90, 255})), label(put(harness, kBox, "")) {
    harness.module().BringComponentToFront(label);
  }

  TGuiComponent* rectangle(SDL_Rect place, SDL_Color colour) {
    auto* c = harness.add(new TGuiComponent(nullptr, place.x, place.y, place.w, place.h, ""));
    c->SetTargetTexture(harness.makeTexture(place.w, place.h, colour));
    c->setBlendMode(1);
    return c;
  }
  void show(const char* text, TAlignment align) {
    rectangle(kBox, {80, 90, 140, 255});
    harness.module().BringComponentToFront(label);
    label->SetText(text);
    label->SetAlignment(align);
  }
  // The same as a child of the frame.
  TGlyphLabel* showInFrame(const char* text, TAlignment align) {
    auto* child = new TGlyphLabel(nullptr, 6, 6, 88, 40, text, font, "child");
    frame->AddComponent(child);
    child->SetAlignment(align);
    return child;
  }

  WidgetHarness harness{120, 64};
  FakeClock clock{1000};
  const std::string font = testfont::write(testfont::freshFolder("GlyphLabelPictures"), "dots", 2);
  TGuiComponent* frame;
  TGlyphLabel* label;

 private:
  TGlyphLabel* put(WidgetHarness& to, SDL_Rect place, const char* text) {
    return to.add(new TGlyphLabel(nullptr, place.x, place.y, place.w, place.h, text, font, "label"));
  }
};

struct Case {
  const char* name;
  std::function<void(Stage&)> make;
};

void PrintTo(const Case& c, std::ostream* out) { *out << c.name; }

enum Fit { PLAIN, RESIZE, ONLY_DOWN };

Case aligned(const char* name, TAlignment align) {
  return {name, [align](Stage& s) { s.show("WIN", align); }};
}

Case lines(const char* name, TAlignment align) {
  return {name, [align](Stage& s) { s.show("TWO\nLINES", align); }};
}

Case fitted(const char* name, const char* text, TAlignment align, Fit fit) {
  return {name, [=](Stage& s) {
            s.show(text, align);
            if (fit == RESIZE) s.label->SetResize(true);
            if (fit == ONLY_DOWN) s.label->SetResizeOnlyDown(true);
          }};
}

Case autosized(const char* name, bool x, bool y) {
  return {name, [=](Stage& s) {
            s.show("SIZE", CENTER_CENTER);
            s.label->SetAutosize(x, y);
          }};
}

Case scaled(const char* name, double x, double y, bool inFrame) {
  return {name, [=](Stage& s) {
            if (!inFrame) s.show("X2", CENTER_CENTER);
            (inFrame ? s.showInFrame("X2", CENTER_CENTER) : s.label)->SetResizeFactor(x, y);
          }};
}

const Case kCases[] = {
  aligned("Align_LeftUp", LEFT_UP),
  aligned("Align_CenterUp", CENTER_UP),
  aligned("Align_RightUp", RIGHT_UP),
  aligned("Align_LeftCenter", LEFT_CENTER),
  aligned("Align_CenterCenter", CENTER_CENTER),
  aligned("Align_RightCenter", RIGHT_CENTER),
  aligned("Align_LeftDown", LEFT_DOWN),
  aligned("Align_CenterDown", CENTER_DOWN),
  aligned("Align_RightDown", RIGHT_DOWN),
  lines("Lines_Left", LEFT_CENTER),
  lines("Lines_Center", CENTER_CENTER),
  lines("Lines_Right", RIGHT_CENTER),
  {"Lines_OneEmpty", [](Stage& s) { s.show("A\n\nB", CENTER_UP); }},
  {"Lines_LastBreak", [](Stage& s) { s.show("A\n", CENTER_UP); }},
  fitted("Plain_Overflow", "OVERFLOWING", CENTER_CENTER, PLAIN),
  fitted("Plain_OverflowRight", "OVERFLOWING", RIGHT_DOWN, PLAIN),
  fitted("Resize_Up", "UP", CENTER_CENTER, RESIZE),
  fitted("Resize_Down", "SHRINKS TO FIT", CENTER_CENTER, RESIZE),
  fitted("Resize_DownAtTheBottom", "SHRINKS TO FIT", RIGHT_DOWN, RESIZE),
  fitted("Resize_Lines", "MANY\nLINES\nSHRINK", LEFT_UP, RESIZE),
  fitted("OnlyDown_Stays", "UP", CENTER_CENTER, ONLY_DOWN),
  fitted("OnlyDown_Shrinks", "SHRINKS TO FIT", CENTER_CENTER, ONLY_DOWN),
  autosized("Autosize_X", true, false),
  autosized("Autosize_Y", false, true),
  autosized("Autosize_Both", true, true),
  scaled("Factor_Both", 2.0, 1.5, false),
  scaled("Factor_One", 2.0, 1.0, false),
  scaled("Factor_InFrame", 2.0, 1.5, true),
  scaled("Factor_OneInFrame", 2.0, 1.0, true),
  {"Offset",
   [](Stage& s) {
     s.show("WIN", LEFT_UP);
     s.label->SetOffset(20, 10);
   }},
  {"Rotation_30",
   [](Stage& s) {
     s.show("TURNED", CENTER_CENTER);
     s.label->SetRotation(30.0);
   }},
  {"Rotation_90",
   [](Stage& s) {
     s.show("TURN", CENTER_CENTER);
     s.label->SetRotation(90.0);
   }},
  {"Rotation_Minus30",
   [](Stage& s) {
     s.show("NOT", CENTER_CENTER);
     s.label->SetRotation(-30.0);
   }},
  {"Alpha_Half",
   [](Stage& s) {
     s.show("HALF", CENTER_CENTER);
     s.label->setAlpha(128);
   }},
  {"Alpha_ThroughTheFrame",
   [](Stage& s) {
     s.showInFrame("HALF", CENTER_CENTER)->setAlpha(128);
     s.frame->setAlpha(128);
   }},
  {"Fade_HalfIn",
   [](Stage& s) {
     s.show("FADE", CENTER_CENTER);
     s.label->_setVisible(false);
     s.label->fadeIn();
     s.clock.advance(250);
   }},
  {"Text_Changed",
   [](Stage& s) {
     s.show("OLD TEXT", CENTER_CENTER);
     s.harness.frame();
     s.label->SetText("NEW");
   }},
  {"Text_Emptied",
   [](Stage& s) {
     s.show("OLD TEXT", CENTER_CENTER);
     s.harness.frame();
     s.label->SetText("");
   }},
  {"Text_Money", [](Stage& s) { s.show("1,50 \xe2\x82\xac", RIGHT_CENTER); }},
  {"Text_MissingGlyphs", [](Stage& s) { s.show("A[]B", LEFT_CENTER); }},
};

class Pictures : public testing::TestWithParam<Case> {};

TEST_P(Pictures, AreTheGoldenOnes) {
  Stage stage;
  GetParam().make(stage);
  stage.harness.frame();
  EXPECT_GOLDEN(stage.harness.renderer(), std::string("components/glyphlabel/") + GetParam().name);
}

INSTANTIATE_TEST_SUITE_P(GlyphLabel, Pictures, testing::ValuesIn(kCases),
                         [](const testing::TestParamInfo<Case>& info) { return std::string(info.param.name); });

}  // namespace
