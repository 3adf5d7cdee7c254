// The part of the sprite animation that reads its files: whole, foreign and broken ones.
#include <SDL_image.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <algorithm>
#include <memory>

#include "tests/components/SpriteFixture.h"
#include "tests/support/TestPaths.h"

using namespace vendelo_sdl2;

namespace {

// What is read and shows in no picture.
struct Read : Sprites {
  using Sprites::mBackgroundColor;
  using Sprites::mBlendMode;
  using Sprites::mFileName;
  using Sprites::mLoadThread;
  using Sprites::mLoopStopFrame;
  using Sprites::Sprites;
};

bool operator==(const SDL_Color& a, const SDL_Color& b) {
  return a.r == b.r && a.g == b.g && a.b == b.b && a.a == b.a;
}

// What loading an animation says on the standard output, and what it gives.
struct Loaded {
  Loaded(const std::string& file, int w, int h) {
    testing::internal::CaptureStdout();
    sprites = std::make_unique<Read>(0, 0, w, h, file, TSpriteAnimation::NONE);
    sprites->loaded();
    told = testing::internal::GetCapturedStdout();
  }
  long lines() const { return std::count(told.begin(), told.end(), '\n'); }
  std::string told;
  std::unique_ptr<Read> sprites;
};

}  // namespace

// An atlas with all that one can say of a frame, and with a frame of which only the least is said.
class Atlas : public SpriteAnimation {
 protected:
  std::string written() {
    writeCells("cells.png", 4, 20, 20);
    return write("a.b", R"(<TextureAtlas imagePath="cells.png" blendMode="ADD" backgroundColor="1,2,3,4">
      <sprite n="one.png" x="20" y="3" w="10" h="12" r="y" oX="5" oY="6" pX="0.25" pY="0.75" oW="40" oH="44"/>
      <sprite n="two.png" x="0" y="0" w="20" h="20"/></TextureAtlas>)");
  }
  Read sprites{0, 0, 40, 44, written(), TSpriteAnimation::LOOP};
};

TEST_F(Atlas, IsReadWithItsImageItsBlendModeAndItsBackground) {
  EXPECT_EQ(folder + "cells.png", sprites.mFileName);
  EXPECT_EQ("ADD", sprites.mBlendMode);
  EXPECT_TRUE((SDL_Color{1, 2, 3, 4}) == sprites.mBackgroundColor);
}

TEST_F(Atlas, HasTheSizeOfItsFirstFrameAndLoopsOverAll) {
  EXPECT_EQ(40, sprites.GetOriginalWidth());
  EXPECT_EQ(44, sprites.GetOriginalHeight());
  EXPECT_EQ(2, sprites.GetNumFrames());
  EXPECT_EQ(1, sprites.mLoopStopFrame);
}

TEST_F(Atlas, AFrameHasWhatIsSaidOfIt) {
  const TSprite& one = sprites.frame(0);
  EXPECT_EQ(0, one.id);
  EXPECT_EQ(20, one.x);
  EXPECT_EQ(3, one.y);
  EXPECT_EQ(10, one.width);
  EXPECT_EQ(12, one.height);
  EXPECT_EQ(5, one.xoffset);
  EXPECT_EQ(6, one.yoffset);
  EXPECT_EQ(0.25, one.xpivot);
  EXPECT_EQ(0.75, one.ypivot);
  EXPECT_EQ(40, one.original_width);
  EXPECT_EQ(44, one.original_height);
  EXPECT_TRUE(one.rotate);
}

TEST_F(Atlas, AFrameOfWhichLittleIsSaidIsWholeAndUpright) {
  const TSprite& two = sprites.frame(1);
  EXPECT_EQ(1, two.id);
  EXPECT_EQ(0, two.xoffset);
  EXPECT_EQ(0, two.yoffset);
  EXPECT_EQ(0.5, two.xpivot);
  EXPECT_EQ(0.5, two.ypivot);
  EXPECT_EQ(20, two.original_width);
  EXPECT_EQ(20, two.original_height);
  EXPECT_FALSE(two.rotate);
}

TEST_F(Atlas, FramesAreCutAsTheyAreAndAreNoTexturesYet) {
  sprites.loaded();
  for (const size_t i : {0, 1}) {
    const TSprite& sprite = sprites.frame(i);
    SDL_Surface* surface = sprite.surface;
    ASSERT_NE(nullptr, surface);
    EXPECT_EQ(nullptr, sprite.texture) << "a texture comes with the first draw";
    EXPECT_EQ(sprite.width, surface->w);
    EXPECT_EQ(sprite.height, surface->h);
    SDL_BlendMode mode = SDL_BLENDMODE_BLEND;
    SDL_GetSurfaceBlendMode(surface, &mode);
    EXPECT_EQ(SDL_BLENDMODE_NONE, mode);
  }
}

TEST_F(SpriteAnimation, FilesThatAreNoAtlasGiveNoFramesAndOneLine) {
  const std::string head = "<TextureAtlas imagePath=\"a.png\">";
  std::string deep = head;
  for (int i = 0; i < 100000; ++i) deep += "<n>";
  const struct {
    const char* name;
    std::string xml;  // "-": no file at all
    const char* told;
  } rows[] = {
    {"nofile", "-", "the file cannot be read"},
    {"empty", "", "there is no element TextureAtlas"},
    {"blank", " \n\t ", "there is no element TextureAtlas"},
    {"otherroot", "<Other imagePath=\"a.png\"><sprite n=\"a\"/></Other>", "there is no element TextureAtlas"},
    {"text", "frames = 12", "expected <"},
    {"picture", std::string("\x89PNG\r\n\x1a\n\0\0\0\rIHDR", 16), "expected <"},
    {"zeros", std::string(100, '\0'), "there is no element TextureAtlas"},
    {"cut in the root", "<TextureAtlas imagePa", "expected ="},
    {"cut in a sprite", head + "<sprite n=\"a\" x=\"0", "expected ' or \""},
    {"cut before the end", head + "<sprite n=\"a\" x=\"0\" y=\"0\" w=\"1\" h=\"1\"/>", "unexpected end of data"},
    {"deep", deep, "its elements are nested too deep"},
    {"json", "{\"frames\": [1, 2]}", "expected <"}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    if (row.xml != "-") write(row.name, row.xml);
    Loaded one(folder + row.name, 10, 10);
    EXPECT_EQ("Animation " + folder + row.name + ".xml: " + row.told + "\n", one.told);
    Read& sprites = *one.sprites;
    EXPECT_EQ(0, sprites.GetNumFrames());
    EXPECT_EQ(-1, sprites.mLoopStopFrame);
    EXPECT_EQ(nullptr, sprites.mLoadThread);
    EXPECT_EQ(-1, drawn(sprites, 1000));
    EXPECT_EQ(0, inked(0).w);
    EXPECT_EQ(nullptr, sprites.GetFrame(0));
    sprites.drawFrame(0, SDL_Rect{0, 0, 1, 1});
  }
}

TEST_F(SpriteAnimation, EveryCutOfAnAtlasIsToldOnceOrReadsLess) {
  writeCells("cells.png", 3, 20, 20);
  const std::string whole = R"(<?xml version="1.0"?><TextureAtlas imagePath="cells.png" backgroundColor="1,2,3,4">
    <sprite n="a.png" x="0" y="0" w="20" h="20" oX="1" oY="2" oW="30" oH="30"/></TextureAtlas>)";
  for (size_t length = 0; length < whole.size(); ++length) {
    SCOPED_TRACE(length);
    const Loaded one(write("cut", whole.substr(0, length)), 20, 20);
    EXPECT_EQ(1, one.lines()) << one.told;
    EXPECT_EQ(0, one.sprites->GetNumFrames());
  }
  EXPECT_EQ("", Loaded(write("cut", whole), 20, 20).told);
}

TEST_F(SpriteAnimation, MissingAttributesFallBackAndAreToldInOneLine) {
  writeCells("cells.png", 2, 20, 20);
  const std::string colour = "<TextureAtlas imagePath=\"cells.png\" backgroundColor=\"9,8,7\">";
  const std::string root = "<TextureAtlas imagePath=\"cells.png\">", end = "</TextureAtlas>";
  const std::string good = "<sprite n=\"b\" x=\"20\" y=\"0\" w=\"20\" h=\"20\"/>";
  const struct {
    const char* name;
    std::string xml, told;
  } rows[] = {
    {"colour", colour + good + end, "the background colour needs r, g, b and a"},
    {"image", "<TextureAtlas>" + good + end, "the element TextureAtlas has no attribute imagePath"},
    {"sprites", root + end, "there is no element sprite"},
    {"name", root + "<sprite x=\"20\" y=\"0\" w=\"20\" h=\"20\"/>" + end, "sprite 0 has no attribute n"},
    {"height", root + good + "<sprite n=\"a\" x=\"0\" y=\"0\" w=\"20\"/>" + end, "sprite 1 has no attribute h"},
    {"all of one", root + good + "<sprite/>" + end, "sprite 1 has no attribute n, and 4 more faults"},
    {"several", colour + "<sprite n=\"a\" x=\"0\" y=\"0\" w=\"20\"/>" + good + end,
     "the background colour needs r, g, b and a, and 1 more faults"},
    {"blend mode", "<TextureAtlas imagePath=\"cells.png\" blendMode=\"add\">" + good + end,
     "the blend mode \"add\" is none of BLEND, ADD, MOD and NONE"}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    const Loaded one(write("gaps", row.xml), 20, 20);
    EXPECT_EQ("Animation " + folder + "gaps.xml: " + row.told + "\n", one.told);
    EXPECT_EQ(0, one.sprites->mBackgroundColor.r);
    EXPECT_EQ(255, one.sprites->mBackgroundColor.a);
  }
  for (const char* mode : {"BLEND", "ADD", "MOD", "NONE"}) {
    const std::string atlas = std::string("<TextureAtlas imagePath=\"cells.png\" blendMode=\"") + mode + "\">";
    EXPECT_EQ("", Loaded(write("gaps", atlas + good + end), 20, 20).told) << mode;
  }
  const Loaded gap(write("gaps", rows[6].xml), 20, 20);
  EXPECT_EQ(nullptr, gap.sprites->frame(0).surface);
  EXPECT_EQ(-1, drawn(*gap.sprites, 1000));
  gap.sprites->SetFrame(1, false);
  EXPECT_EQ(1, drawn(*gap.sprites, 1001)) << "the whole one plays";
  const Loaded blind(write("gaps", rows[1].xml), 20, 20);
  EXPECT_EQ(1, blind.sprites->GetNumFrames());
  EXPECT_EQ(-1, drawn(*blind.sprites, 1000));
}

TEST_F(SpriteAnimation, RectanglesOutOfTheImage) {
  writeCells("cells.png", 2, 20, 20);
  const char* const outside = "sprite 0 stands out of the image of 40 by 20";
  const struct {
    const char* name;
    const char* place;
    SDL_Rect shown;  // of the frame drawn at 0, 0
    const char* told;
  } rows[] = {{"inside", R"(x="20" y="0" w="20" h="20")", {0, 0, 20, 20}, ""},
              {"to the right", R"(x="40" y="0" w="20" h="20")", {0, 0, 0, 0}, outside},
              {"above", R"(x="0" y="-20" w="20" h="20")", {0, 0, 0, 0}, outside},
              {"far away", R"(x="2147483647" y="-2147483648" w="20" h="20")", {0, 0, 0, 0}, outside},
              {"numbers past counting", R"(x="99999999999999999999" y="0" w="20" h="20")", {0, 0, 0, 0}, outside},
              {"over the right edge", R"(x="30" y="0" w="20" h="20")", {0, 0, 10, 20}, outside},
              {"over the left upper corner", R"(x="-5" y="-8" w="20" h="20")", {5, 8, 15, 12}, outside},
              {"larger than the image", R"(x="0" y="0" w="41" h="20")", {0, 0, 0, 0}, outside},
              {"larger than any memory", R"(x="0" y="0" w="2147483647" h="2147483647")", {0, 0, 0, 0}, outside},
              {"no size", R"(x="0" y="0" w="0" h="0")", {0, 0, 0, 0}, ""},
              {"a size below nothing", R"(x="10" y="10" w="-20" h="-5")", {0, 0, 0, 0}, ""},
              {"no numbers", R"(x="left" y="top" w="wide" h="high")", {0, 0, 0, 0}, ""}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    const Loaded one(write("place", std::string("<TextureAtlas imagePath=\"cells.png\"><sprite n=\"a\" ") +
                                      row.place + " oW=\"10\" oH=\"10\"/></TextureAtlas>"),
                     20, 20);
    EXPECT_EQ(*row.told ? "Animation " + folder + "cells.png: " + row.told + "\n" : "", one.told);
    drawn(*one.sprites, 1000);
    EXPECT_EQ(row.shown, inked(0));
  }
}

TEST_F(SpriteAnimation, AFaultOfAPlaceThatIsToldTwiceCountsTwice) {
  writeCells("cells.png", 2, 20, 20);
  const std::string sprite = R"(<sprite n="a" x="30" y="0" w="20" h="20"/>)";
  const Loaded one(write("twice", R"(<TextureAtlas imagePath="cells.png">)" + sprite + sprite + "</TextureAtlas>"),
                   20, 20);
  EXPECT_EQ("Animation " + folder + "cells.png: sprite 0 stands out of the image of 40 by 20, and 1 more faults\n",
            one.told);
}

TEST_F(SpriteAnimation, AFrameLongerThanAnyTextureShowsNothing) {
  writeCells("long.png", 1, 32768, 1);
  const Loaded one(write("long", R"(<TextureAtlas imagePath="long.png"><sprite n="a" x="0" y="0" w="32768" h="1"/>
    <sprite n="b" x="0" y="0" w="32767" h="1"/></TextureAtlas>)"),
                   20, 20);
  EXPECT_EQ("Animation " + folder + "long.png: sprite 0 is longer than 32767 pixels\n", one.told);
  EXPECT_EQ(nullptr, one.sprites->frame(0).surface);
  EXPECT_NE(nullptr, one.sprites->frame(1).surface);
}

TEST_F(SpriteAnimation, OffsetsPastAllSenseDrawNothingHere) {
  writeCells("cells.png", 2, 20, 20);
  const Loaded one(write("offsets", R"(<TextureAtlas imagePath="cells.png"><sprite n="a" x="0" y="0" w="20" h="20"
    oX="2147483647" oY="-2147483648" oW="2147483647" oH="9999999999"/></TextureAtlas>)"),
                   20, 20);
  EXPECT_EQ("", one.told);
  drawn(*one.sprites, 1000);
  EXPECT_EQ(0, inked(0).w);
}

TEST_F(SpriteAnimation, AHundredThousandFramesLoadAndPlay) {
  writeCells("cells.png", 2, 20, 20);
  std::string xml = "<TextureAtlas imagePath=\"cells.png\">";
  for (int i = 0; i < 100000; ++i) xml += "<sprite n=\"f\" x=\"1\" y=\"1\" w=\"2\" h=\"2\"/>";
  xml += "<sprite n=\"f\" x=\"900\" y=\"0\" w=\"2\" h=\"2\"/><sprite x=\"900\" y=\"0\" w=\"2\" h=\"2\"/>";
  const Loaded one(write("crowd", xml + "</TextureAtlas>"), 2, 2);
  EXPECT_EQ(2, one.lines()) << "one of the reading, one of the cutting: " << one.told;
  EXPECT_EQ(100002, one.sprites->GetNumFrames());
  one.sprites->SetFrame(99999, false);
  EXPECT_EQ(0, drawn(*one.sprites, 1000));
}

TEST_F(SpriteAnimation, AnImageThatCannotBeLoadedGivesFramesThatShowNothing) {
  testfont::writeText(folder + "zero.png", "");
  testfont::writeText(folder + "text.png", "no picture at all");
  for (const char* image : {"nothing.png", "zero.png", "text.png"}) {
    SCOPED_TRACE(image);
    const Loaded one(write("noimage", std::string("<TextureAtlas imagePath=\"") + image +
                                        "\"><sprite n=\"a\" x=\"0\" y=\"0\" w=\"20\" h=\"20\"/></TextureAtlas>"),
                     20, 20);
    EXPECT_NE(std::string::npos, one.told.find("Unable to load image file " + folder)) << one.told;
    EXPECT_EQ(3, one.lines()) << "one message, between empty lines";
    EXPECT_EQ(1, one.sprites->GetNumFrames());
    EXPECT_EQ(-1, drawn(*one.sprites, 1000));
    SDL_Texture* frame = one.sprites->GetFrame(0);
    EXPECT_NE(nullptr, frame);
    SDL_DestroyTexture(frame);
  }
}

// The files of tests/data/atlas, whose README says what they show and how they were made.
TEST_F(SpriteAnimation, ReadsWhatAPackerForDesignersWrites) {
  const std::string data = std::string(testpaths::source) + "/tests/data/atlas/";
  auto shape = [](int k) { return SDL_Rect{4 + 3 * k, 6 + k, 10 + k, 8 + 2 * k}; };
  const struct {
    const char* file;
    std::vector<int> frames;  // in the order of the file, which is the order played
  } rows[] = {{"trimmed", {5, 7, 6, 4, 2, 1, 0, 3}}, {"whole", {0, 1, 2, 3, 4, 5, 6, 7}}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.file);
    const Loaded one(data + row.file, 48, 40);
    EXPECT_EQ("", one.told);
    Read& sprites = *one.sprites;
    ASSERT_EQ(8, sprites.GetNumFrames());
    EXPECT_EQ(48, sprites.GetOriginalWidth());
    EXPECT_EQ(40, sprites.GetOriginalHeight());
    EXPECT_EQ("BLEND", sprites.mBlendMode);
    for (int i = 0; i < 8; ++i) {
      SCOPED_TRACE(i);
      const int frame = row.frames[static_cast<size_t>(i)];
      const int k = frame == 3 ? 2 : frame;  // the fourth is the third again
      const SDL_Rect expected = frame == 5 ? SDL_Rect{0, 0, 0, 0} : shape(k);
      sprites.SetFrame(i, false);
      clear(0, 0, 0);
      sprites.draw();
      EXPECT_EQ(expected, inked(0));
      if (frame != 5) {
        const Uint32 colour = static_cast<Uint32>(250 - 30 * k) << 16 | static_cast<Uint32>(40 + 25 * k) << 8 | 90;
        EXPECT_EQ(colour, pixel(expected.x, expected.y));
      }
      SDL_Texture* whole = sprites.GetFrame(i);
      int w = 0, h = 0;
      SDL_QueryTexture(whole, nullptr, nullptr, &w, &h);
      EXPECT_EQ(48, w);
      EXPECT_EQ(40, h);
      SDL_DestroyTexture(whole);
    }
  }
}

TEST_F(SpriteAnimation, TurnedFramesOfThePackerAreFlaggedAndStayInTheImage) {
  // It gives the sizes of turned frames as they are upright, so what is cut for them is not what was drawn.
  const Loaded one(std::string(testpaths::source) + "/tests/data/atlas/rotated", 48, 40);
  ASSERT_EQ(8, one.sprites->GetNumFrames());
  EXPECT_NE(std::string::npos, one.told.find("sprite 1 stands out of the image of 62 by 57")) << one.told;
  EXPECT_EQ(1, one.lines());
  for (int i = 0; i < 8; ++i) {
    EXPECT_EQ(i == 1 || i == 2, one.sprites->frame(static_cast<size_t>(i)).rotate) << i;
    one.sprites->SetFrame(i, false);
    drawn(*one.sprites, 1000);
  }
}

TEST_F(SpriteAnimation, AnAtlasOfSubTexturesIsToldToHaveNoSprites) {
  const std::string file = std::string(testpaths::source) + "/tests/data/atlas/subtexture";
  const Loaded one(file, 48, 40);
  EXPECT_EQ("Animation " + file + ".xml: there is no element sprite\n", one.told);
  EXPECT_EQ(0, one.sprites->GetNumFrames());
  EXPECT_EQ(-1, drawn(*one.sprites, 1000));
}

TEST_F(SpriteAnimation, DrawNeverWaitsForTheLoader) {
  // The image is a pipe, on which the loader hangs until it is opened from here; then it finds the PNG beside it.
  writeCells("slow.png", 3, 20, 20);
  ASSERT_EQ(0, mkfifo((folder + "slow.pipe").c_str(), 0600));
  const std::string base = write("slow", R"(<TextureAtlas imagePath="slow.pipe">
    <sprite n="a" x="0" y="0" w="20" h="20"/><sprite n="b" x="20" y="0" w="20" h="20"/></TextureAtlas>)");
  testing::internal::CaptureStdout();
  Sprites sprites(0, 0, 20, 20, base, TSpriteAnimation::LOOP);
  sprites.SetRefreshRate(25.0f);
  EXPECT_EQ(-1, drawn(sprites, 1500));
  EXPECT_EQ(-1, drawn(sprites, 2000));

  // A copy made now shares frames that are still to come.
  Sprites copy(0, 0, 20, 20, "", TSpriteAnimation::LOOP);
  copy.CopyData(&sprites);
  EXPECT_EQ(-1, drawn(copy, 2000));

  close(open((folder + "slow.pipe").c_str(), O_WRONLY));
  int first = -1;
  while ((first = drawn(sprites, 2000)) < 0) copy.draw();  // beside the loader
  testing::internal::GetCapturedStdout();
  EXPECT_EQ(0, first);
  EXPECT_EQ(0, drawn(copy, 2000));
  EXPECT_EQ(1, drawn(sprites, 2040)) << "it has begun with the first draw of a frame";
}
