// Pictures of what shows images: lists, animations, bars.
#include "components/TProgressBar.h"
#include "tests/components/PictureFixture.h"

using namespace vendelo_sdl2;

namespace {

struct Bar : TProgressBar {
  using TProgressBar::mCurrentPos;
  using TProgressBar::mTargetPos;
  using TProgressBar::TProgressBar;
  void stand(int level) {
    mTargetPos = level;
    mCurrentPos = level;
  }
};

class ImagePictures : public WidgetPictures {};

}  // namespace

TEST_F(ImagePictures, Images) {
  expect(
    {{"imagelist_fit",
      [&] {
        Panel panel(0, 0);
        int x = 5;
        for (const auto alignment : {TImageList::ALEFT, TImageList::ARIGHT, TImageList::AUP, TImageList::ADOWN}) {
          for (const bool tall : {false, true}) {
            TImageList* list = addImage(panel, x, tall ? 105 : 5, 90, 90, tall ? 60 : 150, tall ? 150 : 60);
            list->SetFitProportionally(true, alignment);
            list->DisplayImage(0, 0);
            outline(x, tall ? 105 : 5, 90, 90);
          }
          x += 98;
        }
        panel.draw();
      }},
     {"imagelist_resize_factors",
      [&] {
        Panel panel(0, 0);
        const struct { double x, y; } factors[] = {{0.5, 1.0}, {1.0, 0.5}, {1.4, 1.4}};
        int x = 20;
        for (const auto& factor : factors) {
          TImageList* list = addImage(panel, x, 30, 80, 80, 80, 80);
          list->SetResizeFactor(factor.x, factor.y);
          list->DisplayImage(0, 0);
          x += 90;
        }
        panel.draw();
      }},
     {"imagelist_angles",
      [&] {
        Panel panel(0, 0);
        int x = 15;
        for (const double angle : {-90.0, 30.0, 90.0, 200.0}) {
          TImageList* list = addImage(panel, x, 60, 80, 50, 80, 50);
          list->setAngle(angle);
          list->DisplayImage(0, 0, solid(30, 20, kWhite), 50, 40);
          x += 98;
        }
        panel.draw();
      }},
     {"imagelist_blend_modes",
      [&] {
        Panel panel(0, 0);
        for (int mode = 0; mode < 4; ++mode) {
          TImageList* list = addImage(panel, 140, 4 + 49 * mode, 120, 45, 120, 45);
          list->DisplayImage(0, 0);
          list->setBlendMode(mode);
        }
        panel.draw();
      }},
     {"imagelist_alpha_through_parents", [&] {
        Panel panel(0, 0);
        auto* inner = new Panel(0, 0);
        panel.AddComponent(inner);
        addImage(panel, 20, 20, 100, 100, 100, 100)->DisplayImage(0, 0, solid(40, 40, kWhite), 80, 80);
        addImage(*inner, 220, 20, 100, 100, 100, 100)->DisplayImage(0, 0, solid(40, 40, kWhite), 80, 80);
        panel.setAlpha(128);
        inner->setAlpha(128);
        panel.draw();
      }}});
}

TEST_F(ImagePictures, ImagesSliding) {
  Panel panel(0, 0);
  const struct {
    TImageList::TAnimationDirection direction;
    int x, y;
  } rows[] = {{TImageList::LEFT, 280, 10},
              {TImageList::RIGHT, 40, 70},
              {TImageList::UP, 130, 100},
              {TImageList::DOWN, 210, 70}};
  for (const auto& row : rows) {
    TImageList* list = addImage(panel, row.x, row.y, 60, 40, 60, 40);
    list->SetAnimation(row.direction);
    list->DisplayImage(0, 600, solid(20, 10, kWhite), 50, 40);
  }
  // 5 pixels a step; the data lie below and to the right.
  expect({{"imagelist_slide_0", [&] { panel.draw(); }},
          {"imagelist_slide_in_10",
           [&] {
             slide(10);
             panel.draw();
           }},
          {"imagelist_slide_resting_26",
           [&] {
             slide(16);
             panel.draw();
           }},
          {"imagelist_slide_out_50", [&] {
             slide(24);
             panel.draw();
           }}});
}

TEST_F(ImagePictures, Sprites) {
  expect({{"sprites_trims_and_offsets",
           [&] {
             Panel panel(0, 0);
             int x = 10;
             for (int frame = 0; frame < 3; ++frame) {
               TSpriteAnimation* sprites = addSprites(panel, x, 20, atlas(""));
               sprites->SetFrame(frame, false);
               outline(x, 20, 80, 60);
               TSpriteAnimation* moved = addSprites(panel, x, 110, atlas(""));
               moved->SetFrame(frame, false);
               moved->SetOffset(30, 10);
               outline(x, 110, 80, 60);
               x += 130;
             }
             panel.draw();
           }},
          {"sprites_blend_modes",
           [&] {
             Panel panel(0, 0);
             int y = 2;
             for (const char* mode : {"BLEND", "ADD", "MOD", "NONE"}) {
               addSprites(panel, 170, y, atlas((std::string("blendMode=\"") + mode + "\"").c_str()))->setAlpha(200);
               y += 50;
             }
             panel.draw();
           }},
          {"sprites_alpha_through_parents",
           [&] {
             Panel panel(0, 0);
             auto* inner = new Panel(0, 0);
             panel.AddComponent(inner);
             addSprites(panel, 60, 70, atlas(""));
             addSprites(*inner, 260, 70, atlas(""));
             panel.setAlpha(128);
             inner->setAlpha(128);
             panel.draw();
           }},
          {"sprites_resize_factors",
           [&] {
             Panel panel(0, 0);
             const struct { double x, y; } factors[] = {{0.5, 2.0}, {1.5, 0.5}, {1.2, 1.2}};
             int x = 40;
             for (const auto& factor : factors) {
               TSpriteAnimation* sprites = addSprites(panel, x, 50, atlas(""));
               sprites->SetFrame(1, false);
               sprites->SetResizeFactor(factor.x, factor.y);
               x += 90;
             }
             panel.draw();
           }},
          {"sprites_angles",
           [&] {
             Panel panel(0, 0);
             int x = 60;
             for (const double angle : {-30.0, 30.0, 180.0}) {
               addSprites(panel, x, 70, atlas(""))->setAngle(angle);
               x += 110;
             }
             panel.draw();
           }},
          {"sprites_at_ticks",
           [&] {
             Panel panel(0, 0);
             // 25 frames a second: one each 40 ms, and 160 ms past the end of the first pass.
             TSpriteAnimation sprites(nullptr, 0, 0, 80, 60, atlas(""), TSpriteAnimation::LOOP, "loop");
             sprites.SetFrame(0, false);
             sprites.SetRefreshRate(25.0f);
             int i = 0;
             for (const Uint32 tick : {0u, 39u, 40u, 80u, 120u, 160u, 200u, 360u}) {
               clock.set(5000 + tick);
               sprites.SetPos(10 + i % 4 * 98, 20 + i / 4 * 90);
               sprites.draw();
               ++i;
             }
           }},
          {"sprites_full_screen", [&] {
             Panel panel(0, 0);
             pictureFile("full.png", 1920, 1080);
             testfont::writeText(folder + "full.xml", R"(<TextureAtlas imagePath="full.png">
          <sprite n="a" x="0" y="0" w="1920" h="1080"/></TextureAtlas>)");
             TSpriteAnimation sprites(nullptr, 0, 0, 1920, 1080, folder + "full", TSpriteAnimation::LOOP, "full");
             sprites.SetFrame(0, false);
             sprites.SetResizeFactor(390.0 / 1920, 190.0 / 1080);
             sprites.draw();
           }}});
}

TEST_F(ImagePictures, Bars) {
  const std::string empty = pictureFile("empty.png", 160, 20);
  testfont::writePicture(folder + "full.png", 160, 20, kGold);
  auto make = [&](int x, int y) {
    auto bar = std::make_unique<Bar>(nullptr, x, y, 160, 20, "bar" + std::to_string(y));
    bar->SetEmptyImage(empty);
    bar->SetFullImage(folder + "full.png");
    return bar;
  };
  auto levels = [&](bool toTheLeft) {
    int i = 0;
    for (const int level : {0, 1, 10, 25, 50, 75, 99, 100}) {
      auto bar = make(20 + i % 2 * 200, 20 + i / 2 * 40);
      if (toTheLeft) bar->SetRunToLeft();
      bar->stand(level);
      bar->draw();
      ++i;
    }
  };
  expect({{"bar_levels_right", [&] { levels(false); }},
          {"bar_levels_left", [&] { levels(true); }},
          {"bar_rising",
           [&] {
             auto bar = make(20, 0);
             Panel panel(0, 0);
             auto* shown = bar.release();
             panel.AddComponent(shown);
             for (int frame = 0; frame <= 60; ++frame) {
               panel.setY(frame / 10 * 28);
               shown->draw();
             }
           }},
          {"bar_alpha_through_parents", [&] {
             Panel panel(0, 0);
             auto* inner = new Panel(0, 0);
             panel.AddComponent(inner);
             auto half = make(120, 40), quarter = make(120, 120);
             half->stand(40);
             quarter->stand(40);
             panel.AddComponent(half.release());
             inner->AddComponent(quarter.release());
             panel.setAlpha(128);
             inner->setAlpha(128);
             panel.draw();
           }}});
}
