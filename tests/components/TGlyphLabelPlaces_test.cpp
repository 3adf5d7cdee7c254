// The glyph label's arithmetic: what is cut, what is rounded, and when the picture is made anew.
#include "tests/components/GlyphLabelFixture.h"
#include "vendelo-sdl2/TDirtyRects.h"

using namespace glyphlabeltest;

namespace {

class GlyphLabelPlaces : public GlyphLabel {
 protected:
  Label* under(int parentX, int parentY, SDL_Rect place, const std::string& text) {
    auto* parent = harness.add(new TGuiComponent(nullptr, parentX, parentY, 300, 200, "parent"));
    auto* label = new Label(nullptr, place.x, place.y, place.w, place.h, text, fontName, "label");
    parent->AddComponent(label);
    return label;
  }
};

// "B" is 20 by 40 with its ink of 15 by 20 at the start, "A" is 200 by 40 with 195 by 40.

TEST_F(GlyphLabelPlaces, NegativePlacesUnderAParentAreCutTowardsNothing) {
  const struct { double x, y; } rows[] = {{0.5, 1.0}, {1.0, 0.5}};  // -7.5 and -3, -15 and -1.5
  for (const auto& row : rows) {
    Label* label = under(0, 0, {-15, -3, 200, 40}, "A");
    label->SetAlignment(LEFT_UP);
    label->SetResizeFactor(row.x, row.y);
    const SDL_Rect r = drawn();
    EXPECT_EQ(195 + static_cast<int>(-15 * row.x), r.w) << row.x;
    EXPECT_EQ(40 + static_cast<int>(-3 * row.y), r.h) << row.y;
    harness.module().RemoveComponent("parent", true);
  }
}

TEST_F(GlyphLabelPlaces, TheParentsPlaceIsAddedBeforeTheCut) {
  // 3.5 - 10 is -6.5: -6; 2.5 - 10 is -7.5: -7. Cut before, they would be -7 and -8.
  Label* label = under(-10, -10, {7, 5, 200, 40}, "A");
  label->SetAlignment(LEFT_UP);
  label->SetResizeFactor(0.5, 1.0);
  EXPECT_EQ(195 - 6, drawn().w);
  label->SetResizeFactor(1.0, 0.5);
  EXPECT_EQ(40 - 7, drawn().h);
}

TEST_F(GlyphLabelPlaces, TheStepsOfTheAlignmentAreCutTowardsNothing) {
  // Boxes wider by an odd number: -20 + 2.5 is -17.5, which is cut to -17; at the bottom -10 + 1.5 is -8.5: -8.
  Label* label = make({-20, -10, 205, 43}, "A");
  label->SetAlignment(CENTER_CENTER);  // the ink begins 3 pixels right of the texture
  SDL_Rect r = drawn();
  EXPECT_EQ(-17 + 3 + 195, r.x + r.w);
  EXPECT_EQ(-8 + 40, r.y + r.h);
  label = make({20, 100, 205, 43}, "A");
  label->SetAlignment(CENTER_CENTER);
  r = drawn();
  EXPECT_EQ(22 + 3 + 195, r.x + r.w);
  EXPECT_EQ(101 + 40, r.y + r.h);
}

TEST_F(GlyphLabelPlaces, AFittedSizeIsCut) {
  Label* label = make({10, 10, 99, 100}, "A");
  label->SetAlignment(LEFT_DOWN);
  label->SetResize(true);
  const SDL_Rect r = drawn();  // f = 0.495: 99 by 19.8, at 10 + 80.2
  EXPECT_EQ(90, r.y);
  EXPECT_EQ(19, r.h);
}

TEST_F(GlyphLabelPlaces, TheFitTakesTheLesserOfBothSides) {
  Label* label = make({0, 0, 200, 20}, "A");
  label->SetAlignment(LEFT_UP);
  label->SetResize(true);
  EXPECT_EQ(20, drawn().h);
  label->setHeight(100);
  EXPECT_EQ(40, drawn().h);
}

TEST_F(GlyphLabelPlaces, FactorsRoundTheSizeAndHalveTheDifference) {
  Label* label = make({100, 100, 20, 40}, "B");
  label->SetAlignment(LEFT_UP);
  label->SetResizeFactor(1.27, 0.69);  // 25.4 by 27.6: 25 by 28, from 97.5 and 106 on
  SDL_Rect r = drawn();
  EXPECT_EQ(97, r.x);
  EXPECT_EQ(106, r.y);
  EXPECT_EQ(14, r.h);
  label->SetResizeFactor(1.3, 1.01);  // 26 by 40.4: 40
  r = drawn();
  EXPECT_EQ(97, r.x);
  EXPECT_EQ(100, r.y);
  EXPECT_EQ(20, r.h);
}

TEST_F(GlyphLabelPlaces, FactorsRoundTheSizeUnderAParentToo) {
  const struct {
    double x, y;
    int w, h;
  } rows[] = {{0.503, 0.66, 101, 26}, {0.502, 0.69, 100, 28}};  // 100.6 by 26.4, 100.4 by 27.6
  Label* label = under(0, 0, {0, 0, 200, 40}, "A");
  label->SetAlignment(RIGHT_UP);  // the ink ends with the texture
  for (const auto& row : rows) {
    label->SetResizeFactor(row.x, row.y);
    const SDL_Rect r = drawn();
    EXPECT_EQ(row.w, r.x + r.w);
    EXPECT_EQ(row.h, r.h);
  }
}

TEST_F(GlyphLabelPlaces, OffsetsComeAfterTheAlignmentAndBeforeTheFactors) {
  Label* label = make({100, 100, 30, 40}, "B");
  label->SetAlignment(RIGHT_UP);
  label->SetOffset(7, -9);
  expectDrawn({100 + 10 + 5 + 7, 91, 15, 20});
}

TEST_F(GlyphLabelPlaces, OnlyAnAngleTurns) {
  Label* label = make({100, 100, 20, 40}, "B");
  label->SetAlignment(LEFT_UP);
  label->SetRotation(0.0);
  expectDrawn({100, 100, 15, 20});
  label->SetRotation(90.0);
  expectDrawn({110, 110, 20, 15});
}

TEST_F(GlyphLabelPlaces, ALabelBeginsAsDocumented) {
  Label* label = make({10, 20, 120, 90}, "B");
  EXPECT_FALSE(label->resize());
  EXPECT_FALSE(label->onlyDown());
  EXPECT_FALSE(label->autosize());
  expectDrawn({60 + 3, 45, 15, 20});  // centred both ways, at its own size, without an offset
}

TEST_F(GlyphLabelPlaces, AutosizeLeavesTheOtherSide) {
  Label* label = make({0, 0, 77, 66}, "A");
  label->SetAutosize(false, true);
  harness.frame();
  EXPECT_EQ(77, label->getWidth());
  EXPECT_EQ(40, label->getHeight());
  label->SetAutosize(true, false);
  harness.frame();
  EXPECT_EQ(77, label->getWidth()) << "only with a new picture";
  label->SetText("B");
  harness.frame();
  EXPECT_EQ(20, label->getWidth());
}

TEST_F(GlyphLabelPlaces, ALabelWithoutATextureTriesAgainAtEachDraw) {
  Label* label = make({0, 0, 200, 40}, "A");
  label->SetFont("no such font");
  EXPECT_EQ(0, drawn().w);
  label->SetFont(fontName);  // which marks nothing
  EXPECT_GT(drawn().w, 0);
}

TEST_F(GlyphLabelPlaces, AFontThatIsTakenAwayLeavesThePictureUntilTheTextChanges) {
  Label* label = make({0, 0, 200, 40}, "A");
  harness.frame();
  label->SetFont("no such font");
  EXPECT_GT(drawn().w, 0);
  label->SetText("B");
  EXPECT_EQ(0, drawn().w);
}

// What a label says before it draws holds for what it draws then; and a text in its rectangle does say it.
TEST_F(GlyphLabelPlaces, ALabelKnowsWhetherItStaysInItsRectangle) {
  const SDL_Rect place{40, 50, 60, 60};
  const struct {
    const char* what;
    const char* text;
    void (*change)(Label&);
    bool inside;
  } rows[] = {
    {"as it begins", "B", [](Label&) {}, true},
    {"wider than the label", "A", [](Label&) {}, false},
    {"grown with its text", "A", [](Label& l) { l.SetAutosize(true, false); }, true},
    {"shrunk into it", "A", [](Label& l) { l.SetResize(true); }, true},
    {"moved to the right", "B", [](Label& l) { l.SetOffset(30, 0); }, false},
    {"moved upwards", "B", [](Label& l) { l.SetOffset(0, -30); }, false},
    {"turned", "B", [](Label& l) { l.SetRotation(30); }, false},
    {"larger by a factor", "B", [](Label& l) { l.SetResizeFactor(4, 4); }, false},
  };
  for (const auto& row : rows) {
    Label* label = make(place, row.text);
    EXPECT_FALSE(label->staysInside()) << row.what << ": not rendered yet";
    row.change(*label);
    harness.frame();
    EXPECT_EQ(row.inside, label->staysInside()) << row.what;
    const SDL_Rect own = label->getDestRect(), seen = drawn();
    if (row.inside) {
      EXPECT_TRUE(contains(own, seen)) << row.what;
    }
    label->SetText("AB");
    EXPECT_FALSE(label->staysInside()) << row.what << ": another text comes";
    label->_setVisible(false);
  }
}

TEST_F(GlyphLabelPlaces, WithoutAPictureNothingIsKnown) {
  Label* label = make({0, 0, 30, 40}, "B");
  harness.frame();
  label->SetFont("no such font");
  label->SetText("A");
  harness.frame();
  EXPECT_FALSE(label->staysInside());
  label->SetFont(fontName);
  EXPECT_FALSE(label->staysInside()) << "the next draw makes a wide one";
}

}  // namespace
