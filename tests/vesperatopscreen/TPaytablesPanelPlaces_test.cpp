// Where the pages and their texts stand, in which fonts, and what may be done to them by whom.
#include <SDL_ttf.h>
#include <algorithm>
#include <filesystem>

#include "common/TBitmapFont.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/TestFont.h"
#include "tests/vesperatopscreen/PaytablesFixture.h"
#include "vendelo-sdl2/MyUtils.h"
#include "vendelo-sdl2/SystemSeams.h"

using namespace paytabletest;
namespace fs = std::filesystem;

namespace {

constexpr const char* kFonts = "/usr/share/fonts/truetype/dejavu/";

// At the full size, so that places are seen to the pixel.
class PaytablePlaces : public Paytables {
 protected:
  PaytablePlaces() : Paytables("paytableplaces", 1) {}

  // The smallest rectangle inside `region` with all pixels of a colour.
  SDL_Rect boundsOf(Uint32 colour, SDL_Rect region) {
    int left = region.x + region.w, top = region.y + region.h, right = -1, bottom = -1;
    for (int y = region.y; y < region.y + region.h; ++y)
      for (int x = region.x; x < region.x + region.w; ++x) {
        if (screen.pixel(x, y) != colour) continue;
        left = std::min(left, x);
        top = std::min(top, y);
        right = std::max(right, x);
        bottom = std::max(bottom, y);
      }
    return {left, top, right - left + 1, bottom - top + 1};
  }
  void expectPlace(const char* name, SDL_Rect wanted) {
    TGuiComponent* const component = screen.find(kPanel + name);
    ASSERT_NE(nullptr, component) << name;
    const SDL_Rect seen = component->getDestRect();
    EXPECT_TRUE(SDL_RectEquals(&wanted, &seen))
      << name << " at " << seen.x << "," << seen.y << " " << seen.w << "," << seen.h;
  }
  void writePage(const std::string& game, int width, int height) {
    fs::create_directories("Games/" + game + "/Icons/paytable");
    testfont::writePicture("Games/" + game + "/Icons/paytable/InfoPage_Paytable.png", width, height,
                           panelskin::kPage);
  }
};

}  // namespace

TEST_F(PaytablePlaces, APageStandsInTheMiddleTowardsTheUpperLeft) {
  const struct {
    int width, height;
    SDL_Rect place;
  } rows[] = {{701, 401, {609, 339, 701, 401}},
              {1920, 1080, {0, 0, 1920, 1080}},
              {1921, 1081, {0, 0, 1921, 1081}},
              {1923, 1085, {-1, -2, 1923, 1085}}};
  for (const auto& row : rows) {
    const std::string game = "Odd" + std::to_string(row.width);
    writePage(game, row.width, row.height);
    open({}, game);
    expectPlace("HelpScreen", row.place);
    expectPlace("Background", {0, 0, 1920, 1080});
  }
}

TEST_F(PaytablePlaces, TheFirstEntryIsPlacedAsAPageIs) {
  open(setup({page("paytable", {Text{}})}, 20, -1));
  turnTo(99);
  expectPlace("HelpScreen", {912, 513, 96, 54});
}

TEST_F(PaytablePlaces, TextsStandAtTheirPlacesOnThePage) {
  Text left = text("L", "line", 50, 3), middle = text("M", "line", 50, 3);
  left.x = 30, left.y = 60, left.w = 400, left.h = 50, left.alignedLeft = 1;
  middle.x = 30, middle.y = 160, middle.w = 400, middle.h = 50, middle.alignedLeft = 2;
  open(setup({page("paytable", {left, middle})}, 20, -1));
  expectPlace("HelpScreen/L_3", {30, 60, 400, 50});
  expectPlace("HelpScreen/M_3", {30, 160, 400, 50});
  // The page stands at (610, 340); the amount is white, as its font is. "250" at six dots of four pixels each has
  // columns of 17 dots.
  const SDL_Rect first = boundsOf(0xFFFFFF, {610 + 30, 340 + 60, 400, 80});
  EXPECT_EQ(640, first.x);
  EXPECT_EQ(400, first.y);
  EXPECT_EQ(17 * 4, first.w);
  const SDL_Rect second = boundsOf(0xFFFFFF, {610 + 30, 340 + 160, 400, 80});
  EXPECT_NEAR(640 + 200, second.x + second.w / 2, 3);
  EXPECT_EQ(500, second.y) << "at the upper edge";
}

TEST_F(PaytablePlaces, ATextLargerThanItsRectangleKeepsItsSize) {
  Text small = text("A", "line", 50, 3);
  small.x = 30, small.y = 60, small.w = 5, small.h = 5, small.alignedLeft = 1;
  open(setup({page("paytable", {small})}, 20, -1));
  EXPECT_EQ(17 * 4, boundsOf(0xFFFFFF, {640, 400, 400, 80}).w);
}

TEST_F(PaytablePlaces, ThePrizeTextStandsInTheMiddleOfTheBottomAndOnlyShrinks) {
  MyUtils::SetImageDir(testfont::freshFolder("paytablefonts"));
  fs::create_directories(MyUtils::ImageDir() + "Fonts");
  testfont::write(MyUtils::ImageDir() + "Fonts/", "uni_font", 2);  // lower than the rectangle
  open(setup({page("paytable", {Text{}})}, 20, -1));
  expectPlace("prizeLabel", {0, 1055, 1920, 25});
  auto* prizes = screen.find<TGlyphLabel>(kPanel + "prizeLabel");
  EXPECT_EQ(MyUtils::ImageDir() + "Fonts/uni_font", prizes->Font()->Name());
  const auto boundsOfText = [&](const std::string& words) {
    prizes->SetText(words);
    screen.find("infoLabel")->_setVisible(false);
    screen.find(kPanel + "minBetLabel")->_setVisible(false);
    screen.find(kPanel + "maxBetLabel")->_setVisible(false);
    screen.skip(20);
    return boundsOf(0xFFFFFF, {0, 1040, 1920, 40});
  };
  const SDL_Rect word = boundsOfText("HI");
  EXPECT_EQ(7 * 2, word.h) << "not stretched to the rectangle";
  EXPECT_NEAR(960, word.x + word.w / 2, 3);
  EXPECT_NEAR(1055 + 12, word.y + word.h / 2, 4);
  const SDL_Rect longText = boundsOfText(std::string(300, 'H'));
  EXPECT_GE(longText.x, 0);
  EXPECT_GT(longText.w, 1800) << "as wide as the screen";
  EXPECT_LT(longText.h, 7 * 2) << "and lower for it";
}

TEST_F(PaytablePlaces, TheBetLabelsHaveTheirShadowsTwoPixelsOff) {
  Text last;
  last.fontSize = 40;
  last.color = 0x20F0F0;
  open(setup({page("paytable", {last})}, 20, -1));
  screen.find("infoLabel")->_setVisible(false);
  screen.find(kPanel + "prizeLabel")->_setVisible(false);
  for (const char* name : {"minBetLabel", "maxBetLabel"}) {
    SCOPED_TRACE(name);
    screen.find(kPanel + "minBetLabel")->_setVisible(name == std::string("minBetLabel"));
    screen.find(kPanel + "maxBetLabel")->_setVisible(name == std::string("maxBetLabel"));
    screen.skip(20);
    const SDL_Rect bottom{0, 1000, 1920, 80};
    const SDL_Rect letters = boundsOf(0x20F0F0, bottom), shadow = boundsOf(0, bottom);
    EXPECT_EQ(letters.x + letters.w + 2, shadow.x + shadow.w);
    EXPECT_EQ(letters.y + letters.h + 2, shadow.y + shadow.h);
  }
}

TEST_F(PaytablePlaces, TheBetLabelsAreWrittenInTheFontOfTheLastText) {
  const std::string icons = "Games/Reels/Icons/";
  fs::copy(kFonts + std::string("DejaVuSans.ttf"), icons + "plain.otf");
  fs::copy(kFonts + std::string("DejaVuSans.ttf"), icons + "both.otf");
  fs::copy(kFonts + std::string("DejaVuSans-Bold.ttf"), icons + "both.ttf");
  const struct {
    const char* font;
    const char* style;
  } rows[] = {{"plain", "Book"}, {"both", "Bold"}, {"digits", "Bold"}};
  for (const auto& row : rows)
    for (int size : {20, 37}) {
      SCOPED_TRACE(row.font);
      Text last = text("B", "line", 1, 3);
      last.font = row.font;
      last.fontSize = size;
      open(setup({page("paytable", {Text{}, last}), page("paytableBonus", {Text{}})}, 20, -1));
      auto* minimum = screen.find<Tlabel>(kPanel + "minBetLabel");
      ASSERT_NE(nullptr, minimum);
      ASSERT_NE(nullptr, minimum->GetFont());
      EXPECT_EQ(minimum->GetFont(), screen.find<Tlabel>(kPanel + "maxBetLabel")->GetFont());
      EXPECT_STREQ(row.style, TTF_FontFaceStyleName(minimum->GetFont()));
      TTF_Font* const same = TTF_OpenFont((std::string(kFonts) + "DejaVuSans.ttf").c_str(), size);
      EXPECT_EQ(TTF_FontHeight(same), TTF_FontHeight(minimum->GetFont()));
      TTF_CloseFont(same);
    }
}

TEST_F(PaytablePlaces, TheLabelsAreMadeHiddenWithTheirCaptions) {
  open({});
  screen.app().deliver({{T_EXTRA_DATA, xmlrpc_c::value_struct(setup({page("paytable", {Text{}})}, 20, -1))}});
  panel()->createPaytable("Reels");
  EXPECT_EQ("250", shown("A_3"));
  EXPECT_EQ("MIN", screen.find<Tlabel>(kPanel + "minBetLabel")->GetText());
  EXPECT_EQ("MAX", screen.find<Tlabel>(kPanel + "maxBetLabel")->GetText());
  EXPECT_EQ("PRIZES ARE SHOWN AT THE PRESENT BET", screen.find<TGlyphLabel>(kPanel + "prizeLabel")->GetText());
  for (const char* name : {"HelpScreen/A_3", "minBetLabel", "maxBetLabel", "prizeLabel"})
    EXPECT_FALSE(screen.visible(kPanel + name)) << name;
  EXPECT_EQ(0, panel()->updatePaytable());
  EXPECT_EQ("MIN: 20", screen.find<Tlabel>(kPanel + "minBetLabel")->GetText());
  panel()->paytableVisible(0);
  for (const char* name : {"HelpScreen/A_3", "minBetLabel", "maxBetLabel", "prizeLabel"})
    EXPECT_TRUE(screen.visible(kPanel + name)) << name;
  panel()->paytableVisible(2);
  for (const char* name : {"HelpScreen/A_3", "minBetLabel", "maxBetLabel", "prizeLabel"})
    EXPECT_FALSE(screen.visible(kPanel + name)) << name;
}

TEST_F(PaytablePlaces, ABonusPageAloneHasNoBetLabels) {
  open(setup({page("paytableBonus", {Text{}})}, 20, -1));
  EXPECT_EQ("250", shown("A_3"));
  EXPECT_EQ(nullptr, screen.find(kPanel + "minBetLabel"));
  EXPECT_EQ(nullptr, screen.find(kPanel + "maxBetLabel"));
  EXPECT_FALSE(screen.visible(kPage + "A_3"));
  EXPECT_FALSE(screen.visible(kPanel + "prizeLabel"));
  turnTo(2);
  EXPECT_TRUE(screen.visible(kPage + "A_3"));
  EXPECT_TRUE(screen.visible(kPanel + "prizeLabel"));
}

TEST_F(PaytablePlaces, WarningsAreForWhatIsMissingAlone) {
  Text place = text("A", "line", 50, 3), edge = text("B", "line", 50, 3), corner = text("C", "line", 50, 3);
  place.x = 0, place.y = 10;
  edge.x = 10, edge.y = 0;
  corner.x = corner.y = 0;
  const std::string output = opened(setup({page("paytable", {place, edge, corner})}, 20, -1));
  EXPECT_EQ(std::string::npos, output.find("Could not find font"));
  EXPECT_EQ(std::string::npos, output.find("symbol \"A_3\""));
  EXPECT_EQ(std::string::npos, output.find("symbol \"B_3\""));
  EXPECT_NE(std::string::npos, output.find("WARNING: Could not find position for symbol \"C_3\"!\n"));
}

TEST_F(PaytablePlaces, AFontWithoutTheDigitZeroIsTold) {
  testfont::Description letters;
  letters.glyphs = {{'1', 0, 0, 8, 8, 0, 0, 8}, {'2', 0, 0, 8, 8, 0, 0, 8}};
  testfont::writePicture("Games/Reels/Icons/atlas.png", 16, 16, {255, 255, 255, 255});
  testfont::writeText("Games/Reels/Icons/nozero.fnt", testfont::toXml(letters));
  Text bare = text("A", "line", 50, 3);
  bare.font = "nozero";
  EXPECT_NE(std::string::npos, opened(setup({page("paytable", {bare})}, 20, -1))
                                 .find("WARNING: Could not find font \"Games/Reels/Icons/nozero\"!\n"));
  EXPECT_EQ("250", shown("A_3"));
}

TEST_F(PaytablePlaces, AScreenOfAnotherSizeHasItsOwnEdges) {
  auto* small = new TPaytablesPanel(screen.renderer(), 0, 0, 800, 600, "small");
  screen.screen().AddComponent(small);
  const auto place = [&](const char* name) { return screen.find(std::string("small/") + name)->getDestRect(); };
  const auto is = [](SDL_Rect seen, SDL_Rect wanted) { return SDL_RectEquals(&seen, &wanted) == SDL_TRUE; };
  EXPECT_TRUE(is(place("Background"), {0, 0, 800, 600}));
  EXPECT_TRUE(is(place("HelpScreen"), {0, 0, 800, 600}));
  open(setup({page("paytable", {Text{}})}, 20, -1));
  small->UpdateLanguage({"", "MIN", "MAX", "", "PRIZES"});
  EXPECT_EQ(-1, small->UpdateData(false));
  ASSERT_TRUE(screen.until([&] { return small->updatePaytable() == 0; }));
  EXPECT_TRUE(is(place("HelpScreen"), {50, 100, 700, 400}));
  EXPECT_TRUE(is(place("prizeLabel"), {0, 575, 800, 25}));
  screen.skip(20);
  EXPECT_EQ(10, place("minBetLabel").x);
  EXPECT_EQ(800 - 10, place("maxBetLabel").x + place("maxBetLabel").w);
  EXPECT_NEAR(600 - 24 - 10 + 12, place("minBetLabel").y + place("minBetLabel").h / 2, 1);
}

TEST_F(PaytablePlaces, NobodyButTheDrawThreadTouchesThem) {
  screen.app().getState()->ActiveGame = GAME_MENU;
  const struct {
    const char* name;
    std::function<void()> call;
  } rows[] = {{"clearPaytable", [this] { panel()->clearPaytable(); }},
              {"createPaytable", [this] { panel()->createPaytable(""); }},
              {"updatePaytable", [this] { panel()->updatePaytable(); }},
              {"UpdateData", [this] { panel()->UpdateData(false); }},
              {"paytableVisible", [this] { panel()->paytableVisible(0); }}};
  const auto prepare = [] {
    SystemSeams.Reboot = [](int) { return -1; };
    SystemSeams.System = [](const char*) { return 0; };
  };
  endAll(
    rows,
    [&](const auto& row) {
      return std::make_unique<ChildProcess>([&] {
        prepare();
        row.call();
      });
    },
    [](const auto&, ChildProcess& child) { EXPECT_EQ(child.end(), "exit 99"); });
  endAll(
    rows,
    [&](const auto& row) {
      return std::make_unique<ChildProcess>([&] {
        prepare();
        screen.app().asMainThread(row.call);
      });
    },
    [](const auto&, ChildProcess& child) { EXPECT_EQ(child.end(), "signal 6"); });
}
