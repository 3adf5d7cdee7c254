// Frames that are packed, by the library and by the tool, and read back by the program's own sprite reader.
#include "tools/skin/AtlasPack.h"

#include <gtest/gtest.h>

#include <fstream>

#include "SkinFiles.h"
#include "ToolRun.h"
#include "components/TSpriteAnimation.h"
#include "tests/support/WidgetHarness.h"

namespace fs = std::filesystem;

namespace {

constexpr int kWidth = 60, kHeight = 40;
constexpr Uint32 kBackdrop = 0x102030;

struct Box {
  int x, y, w, h;
  Uint32 rgb;
};

// Trimmed on all sides; the second again elsewhere; one that fills the frame; one of nothing; one at the far
// corner.
const Box kBoxes[] = {{3, 5, 20, 8, 0xff8000},   {7, 1, 11, 30, 0x20c040},
                      {40, 9, 11, 30, 0x20c040}, {0, 0, kWidth, kHeight, 0x4060ff},
                      {0, 0, 0, 0, 0},           {kWidth - 1, kHeight - 1, 1, 1, 0xffffff}};

void paint(const Canvas& canvas, const Box& box) {
  for (int y = box.y; y < box.y + box.h; ++y)
    for (int x = box.x; x < box.x + box.w; ++x)
      Canvas::put(canvas.row(y), x, static_cast<unsigned char>(box.rgb >> 16),
                  static_cast<unsigned char>(box.rgb >> 8), static_cast<unsigned char>(box.rgb), 255);
  canvas.changed();
}

AtlasReport packBoxes(const std::string& name, int maxSize = 8192) {
  AtlasPack atlas("BLEND", maxSize);
  int number = 0;
  for (const Box& box : kBoxes) {
    const Canvas canvas(kWidth, kHeight);
    paint(canvas, box);
    atlas.add("frame<&\">" + std::to_string(number++), canvas);
  }
  return atlas.save(name);
}

// Every pixel of every frame as the program draws it.
void expectBoxesOnScreen(const std::string& name) {
  WidgetHarness harness(kWidth, kHeight);
  harness.setBackdrop({0x10, 0x20, 0x30, 255});
  auto* sprites =
    harness.add(new TSpriteAnimation(harness.renderer(), 0, 0, kWidth, kHeight, name, TSpriteAnimation::NONE, "s"));
  ASSERT_EQ(static_cast<int>(std::size(kBoxes)), sprites->GetNumFrames());
  EXPECT_EQ(kWidth, sprites->GetOriginalWidth());
  EXPECT_EQ(kHeight, sprites->GetOriginalHeight());
  for (int frame = 0; frame < sprites->GetNumFrames(); ++frame) {
    SCOPED_TRACE(frame);
    sprites->SetFrame(frame, false);
    harness.frame();
    const Box& box = kBoxes[frame];
    for (int y = 0; y < kHeight; ++y)
      for (int x = 0; x < kWidth; ++x) {
        const bool inside = x >= box.x && x < box.x + box.w && y >= box.y && y < box.y + box.h;
        ASSERT_EQ(inside ? box.rgb : kBackdrop, harness.pixel(x, y)) << x << ", " << y;
      }
  }
}

std::string reasonOf(const std::function<void()>& work) {
  try {
    work();
  } catch (const std::runtime_error& error) {
    return error.what();
  }
  return "accepted";
}

}  // namespace

TEST(AtlasPack, TheProgramDrawsEveryFrameAsItWas) {
  const ScratchFolder folder("atlaspack");
  packBoxes(folder + "boxes");
  expectBoxesOnScreen(folder + "boxes");
}

TEST(AtlasPack, FramesAreTrimmedAndEqualOnesStoredOnce) {
  const ScratchFolder folder("atlaspack");
  const AtlasReport report = packBoxes(folder + "boxes");
  EXPECT_EQ(6, report.frames);
  EXPECT_EQ(5, report.distinct);
  EXPECT_EQ(20 * 8 + 11 * 30 + kWidth * kHeight + 1 + 1, report.used);
  EXPECT_GE(report.pixels(), report.used);
  EXPECT_LT(report.waste(), 0.4);
  const skinfiles::Surface image = skinfiles::load(folder + "boxes.png");
  ASSERT_TRUE(image);
  EXPECT_EQ(report.width, image->w);
  EXPECT_EQ(report.height, image->h);
}

TEST(AtlasPack, PartsStandWhereTheyBelong) {
  const ScratchFolder folder("atlaspack");
  AtlasPack atlas("BLEND");
  for (const Box& box : kBoxes) {
    const Canvas part(box.w + 2, box.h + 2);
    paint(part, {1, 1, box.w, box.h, box.rgb});
    if (box.w == 0)
      atlas.addPart("nothing", part, 0, 0, kWidth, kHeight);
    else
      atlas.addPart("part", part, box.x - 1, box.y - 1, kWidth, kHeight);
  }
  atlas.save(folder + "parts");
  expectBoxesOnScreen(folder + "parts");
}

TEST(AtlasPack, TwoRunsAreTheSame) {
  const ScratchFolder folder("atlaspack");
  packBoxes(folder + "a");
  fs::create_directories(folder + "again");
  packBoxes(folder + "again/a");
  for (const char* file : {"a.png", "a.xml"})
    EXPECT_EQ(skinfiles::readFile(folder + file), skinfiles::readFile(folder + "again/" + file)) << file;
}

TEST(AtlasPack, WhatTheReaderCouldNotTakeIsRefused) {
  const ScratchFolder folder("atlaspack");
  const Canvas canvas(8, 8), other(8, 9), large(40, 40);
  paint(large, {0, 0, 40, 40, 0xffffff});
  EXPECT_NE(std::string::npos, reasonOf([] { AtlasPack("SCREEN"); }).find("blend mode SCREEN"));
  EXPECT_NE(std::string::npos,
            reasonOf([&] { AtlasPack("ADD").save(folder + "none"); }).find("at least one frame"));
  EXPECT_NE(std::string::npos, reasonOf([&] { AtlasPack("ADD").add("", canvas); }).find("no name"));
  EXPECT_NE(std::string::npos, reasonOf([&] {
                                 AtlasPack atlas("ADD");
                                 atlas.add("first", canvas);
                                 atlas.add("second", other);
                               }).find("frame second is 8 by 9, the first one 8 by 8"));
  EXPECT_NE(std::string::npos, reasonOf([&] {
                                 AtlasPack atlas("ADD");
                                 atlas.add("first", canvas);
                                 atlas.save(folder + "strip.png");
                               }).find("strip"));
  EXPECT_NE(std::string::npos, reasonOf([&] {
                                 AtlasPack atlas("ADD", 32);
                                 atlas.add("first", large);
                                 atlas.save(folder + "large");
                               }).find("do not fit into 32 by 32"));
  EXPECT_NE(std::string::npos,
            reasonOf([&] { AtlasPack("ADD").addPart("out", large, 30, 0, 60, 60); }).find("reaches out"));
  EXPECT_NE("accepted", reasonOf([&] { packBoxes(folder + "no/such/folder"); }));
  EXPECT_FALSE(fs::exists(folder + "none.xml"));
}

TEST(AtlasPackTool, PacksAFolderInTheOrderOfItsNames) {
  const ScratchFolder folder("atlaspack");
  fs::create_directories(folder + "the frames \xc3\xa4");
  // 2 before 10: numbers count as numbers.
  const int numbers[] = {1, 2, 3, 9, 10, 11};
  for (size_t i = 0; i < std::size(kBoxes); ++i) {
    const Canvas canvas(kWidth, kHeight);
    paint(canvas, kBoxes[i]);
    canvas.save(folder + "the frames \xc3\xa4/f" + std::to_string(numbers[i]) + (i == 2 ? ".PNG" : ".png"));
  }
  std::ofstream(folder + "the frames \xc3\xa4/readme.txt") << "no frame";
  const ToolRun run = runTool(ATLASPACK " '" + (folder + "the frames \xc3\xa4") + "' -o '" +
                              (folder + "the atlas \xc3\xa4") + "' --blend BLEND");
  EXPECT_EQ(0, run.code) << run.text;
  EXPECT_NE(std::string::npos, run.text.find("6 frames, 5 pictures, ")) << run.text;
  EXPECT_NE(std::string::npos, run.text.find("% waste")) << run.text;
  expectBoxesOnScreen(folder + "the atlas \xc3\xa4");
}

TEST(AtlasPackTool, SaysWhatIsWrong) {
  const ScratchFolder folder("atlaspack");
  fs::create_directories(folder + "frames");
  const std::string frames = "'" + (folder + "frames") + "'", out = " -o '" + (folder + "out") + "'";
  EXPECT_EQ(2, runTool(ATLASPACK).code);
  EXPECT_EQ(2, runTool(ATLASPACK " " + frames).code) << "no output named";
  EXPECT_EQ(2, runTool(ATLASPACK " " + frames + out + " --max 3").code);
  EXPECT_EQ(2, runTool(ATLASPACK " " + frames + out + " --blend add").code);
  EXPECT_EQ(0, runTool(ATLASPACK " --help").code);
  EXPECT_EQ(1, runTool(ATLASPACK " " + frames + out).code) << "an empty folder";
  EXPECT_EQ(1, runTool(ATLASPACK " '" + (folder + "nowhere") + "'" + out).code);
  const auto expectRefused = [](const std::string& arguments, const std::string& text) {
    SCOPED_TRACE(arguments);
    const ToolRun run = runTool(ATLASPACK " " + arguments);
    EXPECT_EQ(1, run.code);
    EXPECT_NE(std::string::npos, run.text.find(text)) << run.text;
  };
  expectRefused(frames + out, "there is no PNG file in the folder");
  expectRefused("'" + (folder + "nowhere") + "'" + out, "nowhere\" cannot be read: No such file");
  std::ofstream(folder + "frames/a.png") << "this is no picture";
  expectRefused(frames + out, "a.png: cannot be read as a PNG picture");
  const Canvas canvas(8, 8);
  canvas.saveJpeg(folder + "frames/a.png", 90);
  expectRefused(frames + out, "a.png: cannot be read as a PNG picture");
  canvas.save(folder + "frames/a.png");
  const std::string before = skinfiles::readFile(folder + "frames/a.png");
  expectRefused(frames + " -o '" + (folder + "frames/../frames/a") + "'", "among the frames");
  expectRefused("'" + (folder + "frames/a.png") + "'" + out, "a.png\" cannot be read: Not a directory");
  for (const char* name : {"", "out.xml", ".hidden", "frames/"})
    expectRefused(frames + " -o '" + (folder + name) + "'", *name == 'f' ? "among the frames" : "is no name");
  expectRefused(frames + " -o ''", "is no name");
  EXPECT_EQ(before, skinfiles::readFile(folder + "frames/a.png"));
  EXPECT_FALSE(fs::exists(folder + "out.xml"));
}
