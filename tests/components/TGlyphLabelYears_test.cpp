// Labels that are made anew with every change of the platform's state, for years, without their font's file or with
// a broken one: what one of them costs is given back.
#include <gtest/gtest.h>
#include <atomic>
#include <cstdlib>
#include <new>
#include <string>

#include "common/TBitmapFont.h"
#include "components/TGlyphLabel.h"
#include "tests/support/LogLines.h"
#include "tests/support/TestFont.h"
#include "tests/support/WidgetHarness.h"

namespace {
std::atomic<long> living{0};
}

[[gnu::noinline]] void* operator new(std::size_t size) {
  void* memory = std::malloc(size ? size : 1);
  if (!memory) throw std::bad_alloc();
  ++living;
  return memory;
}
[[gnu::noinline]] void operator delete(void* memory) noexcept {
  if (memory) --living;
  std::free(memory);
}
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept { operator delete(memory); }

namespace {

class GlyphLabelYears : public testing::Test {
 protected:
  // What `count` labels, one after the other, leave on the heap. Each is drawn.
  long left(const std::string& name, int count) {
    const long before = living;
    for (int i = 0; i < count; ++i) {
      TGlyphLabel label(harness.renderer(), 0, 0, 50, 20, "12.50", folder + name, "label");
      label.draw();
      mFont = label.Font();
      EXPECT_NE(nullptr, mFont);
    }
    return living - before;
  }

  LogLines log;
  WidgetHarness harness{100, 50};
  const std::string folder = testfont::freshFolder("GlyphLabelYears");
  TBitmapFont* mFont = nullptr;
};

TEST_F(GlyphLabelYears, AMissingOrBrokenFontIsKeptOnce) {
  testfont::writePicture(folder + "atlas.png", 8, 8, {255, 255, 255, 255});
  testfont::writeText(folder + "text.fnt", "info face=\"x\"\n");
  testfont::writeText(folder + "letterless.fnt",
                      "<font><info padding=\"1,2,3,4\"/><common lineHeight=\"20\" base=\"16\"/>"
                      "<pages><page file=\"atlas.png\"/></pages></font>");
  for (const char* name : {"missing", "text", "letterless"}) {
    SCOPED_TRACE(name);
    left(name, 3);
    const TBitmapFont* first = mFont;
    const size_t lines = log.size();
    EXPECT_EQ(0, left(name, 500));
    EXPECT_EQ(first, mFont);
    EXPECT_EQ(lines, log.size()) << "what is wrong was said";
  }
  EXPECT_EQ(20, mFont->LineHeight());
  EXPECT_EQ(2u, log.size());
}

TEST_F(GlyphLabelYears, AFileThatComesLaterIsReadByTheNextLabel) {
  TGlyphLabel before(harness.renderer(), 0, 0, 50, 20, "1", folder + "late", "before");
  testfont::write(folder, "late", 2);
  left("late", 1);
  EXPECT_EQ(TBitmapFont::FindBitmapFont(folder + "late"), mFont);
  EXPECT_NE(before.Font(), mFont) << "which keeps the font that it has";
  EXPECT_EQ(nullptr, before.Font()->FindGlyph('1'));
}

TEST_F(GlyphLabelYears, WhatIsWrongIsSaidAgainWhenItChanges) {
  testfont::writeText(folder + "worse.fnt", "text");
  left("worse", 2);
  testfont::writeText(folder + "worse.fnt", "<atlas/>");
  left("worse", 2);
  testfont::writeText(folder + "worse.fnt", "text");
  left("worse", 2);
  EXPECT_EQ(3u, log.size());
}

}  // namespace
