#include "tests/components/GlyphLabelFixture.h"
#include "tests/support/Golden.h"

using namespace glyphlabeltest;

namespace {

TEST_F(GlyphLabel, MakesItsFontOnceAndSharesIt) {
  Label* first = make({0, 0, 200, 40}, "A");
  Label* second = make({0, 0, 200, 40}, "A");
  ASSERT_NE(nullptr, first->Font());
  EXPECT_EQ(first->Font(), second->Font());
  EXPECT_EQ(first->Font(), TBitmapFont::FindBitmapFont(fontName));
  EXPECT_EQ("A", first->GetText());
  EXPECT_EQ(nullptr, first->GetTargetTexture());  // rendered at the first draw
  harness.frame();
  EXPECT_NE(nullptr, first->GetTargetTexture());
  Label bare(nullptr, 0, 0, 10, 10, fontName, "bare");
  EXPECT_EQ("", bare.GetText());
  EXPECT_EQ("bare", bare.getName());
}

TEST_F(GlyphLabel, RebuildsOnlyWhenSomethingChanged) {
  Label* label = make({0, 0, 200, 40}, "A");
  harness.frame();
  SDL_SetTextureUserData(label->GetTargetTexture(), this);  // a new texture at the same address has none
  const auto kept = [&] { return SDL_GetTextureUserData(label->GetTargetTexture()) == this; };
  harness.frame();
  EXPECT_TRUE(kept());
  label->SetText("A");
  harness.frame();
  EXPECT_TRUE(kept());
  label->SetFont(fontName);
  harness.frame();
  EXPECT_TRUE(kept());
  label->SetText("B");
  EXPECT_TRUE(kept());  // only stored
  harness.frame();
  EXPECT_FALSE(kept());
  SDL_SetTextureUserData(label->GetTargetTexture(), this);
  label->SetAlignment(CENTER_CENTER);  // the same, and yet
  harness.frame();
  EXPECT_FALSE(kept());
}

TEST_F(GlyphLabel, AnEmptyTextShowsNothing) {
  Label* label = make({0, 0, 200, 40}, "A");
  EXPECT_GT(drawn().w, 0);
  label->SetText("");
  EXPECT_NE(nullptr, label->GetTargetTexture());
  EXPECT_EQ(0, drawn().w);
  EXPECT_EQ(nullptr, label->GetTargetTexture());
}

TEST_F(GlyphLabel, AnEmptyTextLeavesTheBoxThatTheLastOneHasMade) {
  Label* label = make({0, 0, 10, 10}, "A");
  label->SetAutosize(true, true);
  harness.frame();
  label->SetText("");
  harness.frame();
  EXPECT_EQ(200, label->getWidth());
  EXPECT_EQ(40, label->getHeight());
}

TEST_F(GlyphLabel, WithoutAFontNothingShows) {
  Label* label = make({0, 0, 200, 40}, "A");
  label->SetFont("no such font");
  EXPECT_EQ(nullptr, label->Font());
  EXPECT_EQ(0, drawn().w);
  label->SetFont(fontName);
  EXPECT_GT(drawn().w, 0);
}

TEST_F(GlyphLabel, AHiddenLabelRebuildsWhenShown) {
  Label* label = make({0, 0, 200, 40}, "A");
  label->Hide();
  label->draw();
  EXPECT_EQ(nullptr, label->GetTargetTexture());
  label->Show();
  harness.frame();
  EXPECT_NE(nullptr, label->GetTargetTexture());
}

TEST_F(GlyphLabel, NinePlaces) {
  Label* label = make({10, 20, 120, 90}, "B");  // texture 20 by 40, ink 15 by 20 at its start
  const struct {
    const char* name;
    TAlignment align;
    int x, y;
  } rows[] = {
    {"LEFT_UP", LEFT_UP, 10, 20},
    {"CENTER_UP", CENTER_UP, 60 + 3, 20},
    {"RIGHT_UP", RIGHT_UP, 110 + 5, 20},
    {"LEFT_CENTER", LEFT_CENTER, 10, 45},
    {"CENTER_CENTER", CENTER_CENTER, 60 + 3, 45},
    {"RIGHT_CENTER", RIGHT_CENTER, 110 + 5, 45},
    {"LEFT_DOWN", LEFT_DOWN, 10, 70},
    {"CENTER_DOWN", CENTER_DOWN, 60 + 3, 70},
    {"RIGHT_DOWN", RIGHT_DOWN, 110 + 5, 70},
  };
  for (const auto& row : rows) {  // the alignment works inside the texture as well: 5 spare pixels
    SCOPED_TRACE(row.name);
    label->SetAlignment(row.align);
    expectDrawn({row.x, row.y, 15, 20});
  }
}

TEST_F(GlyphLabel, ATextLargerThanItsBoxGrowsFromTheTopLeft) {
  Label* label = make({10, 20, 50, 10}, "A");
  for (TAlignment align : {LEFT_UP, CENTER_CENTER, RIGHT_DOWN}) {
    label->SetAlignment(align);
    const SDL_Rect r = drawn();
    EXPECT_EQ(20, r.y);
    EXPECT_EQ(40, r.h);
    EXPECT_EQ(10 + (align == LEFT_UP ? 0 : align == CENTER_CENTER ? 3 : 5), r.x);
  }
}

TEST_F(GlyphLabel, ResizeFitsTheBox) {
  Label* label = make({0, 0, 100, 50}, "A");
  label->SetAlignment(LEFT_DOWN);
  label->SetResize(true);
  SDL_Rect r = drawn();  // f = 0.5: 100 by 20 at the bottom of 50
  EXPECT_EQ(30, r.y);
  EXPECT_EQ(20, r.h);
  EXPECT_NEAR(97.5, r.w, 1.0);
  label->setWidth(260);
  label->setHeight(120);
  r = drawn();  // f = min(1.3, 3)
  EXPECT_EQ(52, r.h);
  EXPECT_EQ(120 - 52, r.y);
  label->SetResizeOnlyDown(true);
  r = drawn();
  EXPECT_EQ(40, r.h);
  EXPECT_EQ(80, r.y);
}

TEST_F(GlyphLabel, ModesSwitchEachOtherOff) {
  Label* label = make({0, 0, 100, 50}, "A");
  label->SetAutosize(true, true);
  EXPECT_TRUE(label->autosize());
  label->SetResizeOnlyDown(false);  // on all the same
  EXPECT_TRUE(label->resize());
  EXPECT_TRUE(label->onlyDown());
  EXPECT_FALSE(label->autosize());
  label->SetResize(false);
  EXPECT_FALSE(label->resize());
  EXPECT_FALSE(label->onlyDown());
  label->SetResize(true);
  label->SetAutosize(true, false);
  EXPECT_FALSE(label->resize());
  harness.frame();
  EXPECT_EQ(200, label->getWidth());
  EXPECT_EQ(50, label->getHeight());
  label->SetAutosize(false, true);
  label->SetText("B");
  harness.frame();
  EXPECT_EQ(200, label->getWidth());
  EXPECT_EQ(40, label->getHeight());
  label->SetAutosize(true, true);
  label->SetResize(false);
  EXPECT_FALSE(label->autosize());
}

TEST_F(GlyphLabel, UnderAParentItFollowsWithoutWritingItsRectangle) {
  auto* parent = harness.add(new TGuiComponent(nullptr, 30, 40, 100, 100, "parent"));
  auto* label = new Label(nullptr, 5, 6, 20, 40, "B", fontName, "label");
  parent->AddComponent(label);
  label->SetAlignment(LEFT_UP);
  expectDrawn({35, 46, 15, 20});
  EXPECT_EQ(5, label->getX());
  label->SetOffset(-2, 3);
  expectDrawn({33, 49, 15, 20});
}

TEST_F(GlyphLabel, TwoFactorsScaleAboutTheCentre) {
  Label* label = make({100, 100, 20, 40}, "B");
  label->SetAlignment(LEFT_UP);
  label->SetResizeFactor(2.0, 1.0);
  expectDrawn({100, 100, 15, 20});  // one alone does nothing
  label->SetResizeFactor(1.0, 0.5);
  expectDrawn({100, 100, 15, 20});
  label->SetResizeFactor(2.0, 0.5);  // 40 by 20, from 90 and 110 on
  expectDrawn({90, 110, 30, 10});
}

TEST_F(GlyphLabel, UnderAParentTheFactorsScaleThePositionInAnyCase) {
  auto* parent = harness.add(new TGuiComponent(nullptr, 30, 40, 100, 100, "parent"));
  auto* label = new Label(nullptr, 5, 7, 20, 40, "B", fontName, "label");
  parent->AddComponent(label);
  label->SetAlignment(LEFT_UP);
  label->SetResizeFactor(2.0, 1.0);
  expectDrawn({40, 47, 15, 20});
  label->SetResizeFactor(2.0, 0.5);
  expectDrawn({40, 43, 30, 10});  // 3.5 is cut
}

TEST_F(GlyphLabel, AlphaAndRotation) {
  Label* label = make({50, 50, 20, 40}, "B");
  label->SetAlignment(LEFT_UP);
  label->setAlpha(128 + 256);  // the low 8 bits
  harness.frame();
  EXPECT_EQ(0x808080u, harness.pixel(55, 55));
  label->setAlpha(255);
  label->SetRotation(-90.0);
  expectDrawn({50, 50, 15, 20});
  label->SetRotation(180.0);  // 20 by 40 about its centre
  expectDrawn({55, 70, 15, 20});
  Label* wide = make({50, 120, 200, 40}, "A");
  wide->SetAlignment(LEFT_UP);
  label->Hide();
  expectDrawn({50, 120, 195, 40});
  wide->SetRotation(1.0);
  EXPECT_GT(drawn().h, 41) << "one degree is a turn";
}

TEST_F(GlyphLabel, ChildrenAreNotDrawn) {
  Label* label = make({0, 0, 20, 40}, "");
  auto* child = new TGuiComponent(nullptr, 0, 0, 10, 10, "child");
  child->SetTargetTexture(harness.makeTexture(10, 10, {255, 255, 255, 255}));
  label->AddComponent(child);
  EXPECT_EQ(0, drawn().w);
  label->SetText("B");
  label->SetAlignment(RIGHT_DOWN);
  expectDrawn({5, 0, 15, 20});
}

TEST_F(GlyphLabel, CharacterCodes) {
  const Label label(nullptr, 0, 0, 1, 1, "", fontName, "");
  EXPECT_EQ('A', label.GetCharCode("AB"));
  EXPECT_EQ(0x20AC, label.GetCharCode("\xe2\x82\xac"));
  EXPECT_EQ(0, label.GetCharCode(""));
  EXPECT_EQ(-1, label.GetCharCode("\xf0")) << "a sequence that the end cuts";
}

TEST_F(GlyphLabel, PixelsAreLittleEndianInEverySize) {
  Label label(nullptr, 0, 0, 1, 1, "", fontName, "");
  const struct {
    int bits;
    Uint32 format, expected;
  } rows[] = {
    {8, SDL_PIXELFORMAT_INDEX8, 0x44},
    {16, SDL_PIXELFORMAT_RGB565, 0x3344},
    {24, SDL_PIXELFORMAT_RGB24, 0x223344},
    {32, SDL_PIXELFORMAT_ARGB8888, 0x11223344},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.bits);
    SDL_Surface* surface = SDL_CreateRGBSurfaceWithFormat(0, 4, 4, row.bits, row.format);
    label.putpixel(surface, 2, 3, 0x11223344, true);
    EXPECT_EQ(row.expected, label.getpixel(surface, 2, 3));
    EXPECT_EQ(0u, label.getpixel(surface, 1, 3));
    EXPECT_EQ(0u, label.getpixel(surface, 3, 3));
    const auto* bytes = static_cast<const Uint8*>(surface->pixels) + 3 * surface->pitch + 2 * row.bits / 8;
    EXPECT_EQ(0x44, bytes[0]);
    SDL_FreeSurface(surface);
  }
}

TEST_F(GlyphLabel, PixelsOfOtherSizesAreLeftAlone) {
  Label label(nullptr, 0, 0, 1, 1, "", fontName, "");
  for (const Uint8 size : {0, 5, 8}) {
    Uint8 bytes[32] = {};
    SDL_PixelFormat format{};
    format.BytesPerPixel = size;
    SDL_Surface surface{};
    surface.format = &format;
    surface.pixels = bytes;
    surface.pitch = 16;
    label.putpixel(&surface, 1, 1, 0x11223344, false);
    for (const Uint8 byte : bytes) EXPECT_EQ(0, byte) << int{size};
    for (Uint8& byte : bytes) byte = 0x55;
    EXPECT_EQ(0u, label.getpixel(&surface, 1, 1)) << int{size};
  }
}

TEST_F(GlyphLabel, Picture) {
  WidgetHarness* h = &harness;
  h->setBackdrop({24, 32, 56, 255});
  const std::string dots = testfont::write(folder, "dots", 2);
  auto* frame = h->add(new TGuiComponent(nullptr, 0, 0, 300, 200, "frame"));
  const struct {
    const char* text;
    SDL_Rect place;
    TAlignment align;
    int mode;  // 0 plain, 1 resize, 2 only down
  } rows[] = {
    {"JACKPOT", {10, 10, 130, 40}, CENTER_CENTER, 0},
    {"12.345,67", {160, 10, 130, 40}, RIGHT_DOWN, 0},
    {"FIT IN THIS BOX", {10, 60, 130, 40}, CENTER_CENTER, 1},
    {"UP", {160, 60, 130, 40}, LEFT_UP, 1},
    {"NOT UP", {10, 110, 130, 40}, LEFT_DOWN, 2},
    {"two lines\nto the right", {160, 110, 130, 40}, RIGHT_CENTER, 2},
    {"overflowing text", {10, 165, 50, 10}, CENTER_CENTER, 0},
  };
  for (const auto& row : rows) {
    auto* box = new TGuiComponent(nullptr, row.place.x, row.place.y, row.place.w, row.place.h, "");
    box->SetTargetTexture(h->makeTexture(row.place.w, row.place.h, {70, 80, 120, 255}));
    frame->AddComponent(box);
    auto* label = new Label(nullptr, row.place.x, row.place.y, row.place.w, row.place.h, row.text, dots, "");
    label->SetAlignment(row.align);
    if (row.mode == 1) label->SetResize(true);
    if (row.mode == 2) label->SetResizeOnlyDown(true);
    frame->AddComponent(label);
  }
  h->frame();
  EXPECT_GOLDEN(h->renderer(), "components/GlyphLabel_Modes");
}

}  // namespace
