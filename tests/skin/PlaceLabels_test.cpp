// The labels of the pictures of the places: legible, and over nothing that they speak of.
#include "tools/skincheck/PlaceLabels.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <stdexcept>

#include "Canvas.h"
#include "SkinFiles.h"
#include "ToolRun.h"

namespace {

std::vector<Label> labelsOf(const std::vector<Mark>& marks, int w, int h) {
  std::vector<Label> labels;
  for (size_t m = 0; m < marks.size(); ++m)
    labels.push_back({m, 0, w, h * static_cast<int>(marks[m].files.size()), {}});
  return labels;
}

const View& viewOf(const std::string& name) {
  for (const View& view : views())
    if (name == view.name) return view;
  throw std::runtime_error(name);
}

bool inside(const View& view, const Area& a) {
  return a.x >= 0 && a.y >= 0 && a.x + a.w <= view.width && a.y + a.h <= view.height;
}

const Mark& markOf(const std::vector<Mark>& marks, const std::string& name) {
  for (const Mark& mark : marks)
    for (const SkinFile* file : mark.files)
      if (file->name == name) return mark;
  throw std::runtime_error(name);
}

}  // namespace

TEST(PlaceLabels, NoLabelHidesAnother) {
  for (const View& view : views()) {
    SCOPED_TRACE(view.name);
    const std::vector<Mark> marks = marksOf(view);
    ASSERT_FALSE(marks.empty());
    std::vector<Label> labels = labelsOf(marks, 230, 20);
    placeLabels(view, marks, labels);
    for (size_t i = 0; i < labels.size(); ++i) {
      EXPECT_TRUE(inside(view, labels[i].box));
      EXPECT_EQ(230, labels[i].box.w);
      for (size_t j = 0; j < i; ++j) EXPECT_FALSE(overlap(labels[i].box, labels[j].box)) << i << ' ' << j;
      for (const Mark& mark : marks)
        for (size_t p = 0; p < mark.places.size(); ++p) {
          EXPECT_FALSE(overlap(labels[i].box, mark.badges[p])) << mark.files.front()->name;
          EXPECT_FALSE(!mark.everywhere && overlap(labels[i].box, mark.places[p])) << mark.files.front()->name;
        }
    }
  }
}

TEST(PlaceLabels, NoBadgeHidesAnother) {
  for (const View& view : views()) {
    SCOPED_TRACE(view.name);
    std::vector<Area> badges;
    for (const Mark& mark : marksOf(view))
      for (const Area& badge : mark.badges) {
        EXPECT_TRUE(inside(view, badge)) << mark.files.front()->name;
        for (const Area& other : badges) EXPECT_FALSE(overlap(badge, other)) << mark.files.front()->name;
        badges.push_back(badge);
      }
  }
}

TEST(PlaceLabels, PlacesAreScaledWithThePicture) {
  const std::vector<Mark> marks = marksOf(viewOf("jackpots"));
  const Area title = markOf(marks, "JACKPOT.png").places.front();
  EXPECT_EQ(430, title.x);
  EXPECT_EQ(13, title.y);
  EXPECT_EQ(420, title.w);
  EXPECT_EQ(104, title.h);
}

TEST(PlaceLabels, FilesOfOnePlaceShareAMark) {
  const std::vector<Mark> marks = marksOf(viewOf("jackpots"));
  EXPECT_EQ(&markOf(marks, "GOLD_RIGHT.png"), &markOf(marks, "GOLD_LEFT.png"));
  EXPECT_NE(&markOf(marks, "GOLD_RIGHT.png"), &markOf(marks, "SILVER_RIGHT.png"));
  EXPECT_EQ(4U, markOf(marks, "bar.png").places.size());
}

TEST(PlaceLabels, WhatLiesInAFileIsDrawnInItsCloseUpAlone) {
  EXPECT_THROW(markOf(marksOf(viewOf("jackpots")), "Fonts/currency"), std::runtime_error);
  const std::vector<Mark> frame = marksOf(viewOf("frame"));
  EXPECT_EQ(2U, markOf(frame, "Fonts/currency").places.size());
  EXPECT_EQ(1U, markOf(frame, "Fonts/emerald_hours_font").places.size());
  EXPECT_THROW(markOf(frame, "bar.png"), std::runtime_error);
  EXPECT_EQ(1U, markOf(marksOf(viewOf("button")), "buttonE.png").places.size());
}

TEST(PlaceLabels, LevelsAndWhatTakesTheirPlaceAreApart) {
  EXPECT_THROW(markOf(marksOf(viewOf("jackpots")), "logo.png"), std::runtime_error);
  const std::vector<Mark> texts = marksOf(viewOf("texts"));
  EXPECT_NO_THROW(markOf(texts, "logo.png"));
  EXPECT_TRUE(markOf(texts, "Background.png").everywhere);
  EXPECT_THROW(markOf(texts, "JACKPOT.png"), std::runtime_error);
}

TEST(PlaceLabels, EveryFileThatHasAPlaceIsInAPicture) {
  std::vector<std::string> missing;
  for (const auto* files : {&skinFiles(), &gameFiles()})
    for (const SkinFile& file : *files) {
      bool found = file.places.empty();
      for (const View& view : views())
        for (const Mark& mark : marksOf(view))
          for (const SkinFile* drawn : mark.files) found = found || drawn->name == file.name;
      if (!found) missing.push_back(file.name);
    }
  // Hidden as a rule; and shown alone, all over the screen.
  EXPECT_EQ((std::vector<std::string>{"../../AppFontBold.ttf", "topscreen.jpg"}), missing);
}

TEST(PlaceLabels, ALabelWithoutRoomIsAnError) {
  const View& view = viewOf("jackpots");
  const std::vector<Mark> marks = marksOf(view);
  std::vector<Label> labels = labelsOf(marks, 1300, 20);
  EXPECT_THROW(placeLabels(view, marks, labels), std::runtime_error);
}

TEST(SkinPlaces, DrawsEveryViewInItsSize) {
  const ScratchFolder folder("skinplaces");
  const Canvas screen(1920, 1080);
  screen.save(folder + "screen.png");
  for (const View& view : views()) {
    const ToolRun run =
      runTool(SKINPLACES " '" + (folder + "screen.png") + "' " + view.name + " -o '" + (folder + "out.jpg") + "'");
    ASSERT_EQ(0, run.code) << run.text;
    const skinfiles::Surface drawn = skinfiles::load(folder + "out.jpg");
    ASSERT_TRUE(drawn) << view.name;
    EXPECT_EQ(view.width, drawn->w);
    EXPECT_EQ(view.height, drawn->h);
    // The lower outline of the first mark, dashed or not, on a screen that was black.
    const Area place = marksOf(view).front().places.front();
    int brightest = 0;
    for (int x = place.x; x < place.x + place.w; ++x) {
      const SDL_Color line = skinfiles::pixel(drawn, x, place.y + place.h - 2);
      brightest = std::max(brightest, line.r + line.g + line.b);
    }
    EXPECT_GT(brightest, 300) << view.name;
  }
}

TEST(SkinPlaces, SaysWhatIsWrong) {
  const ScratchFolder folder("skinplaces-wrong");
  const Canvas small(640, 480);
  small.save(folder + "small.png");
  const ToolRun size =
    runTool(SKINPLACES " '" + (folder + "small.png") + "' win -o '" + (folder + "out.png") + "'");
  EXPECT_EQ(1, size.code);
  EXPECT_NE(std::string::npos, size.text.find("not 1920 x 1080")) << size.text;
  EXPECT_EQ(1, runTool(SKINPLACES " /nowhere.png win -o '" + (folder + "out.png") + "'").code);
  EXPECT_EQ(2, runTool(SKINPLACES " '" + (folder + "small.png") + "' kitchen -o out.png").code);
  EXPECT_EQ(2, runTool(SKINPLACES " '" + (folder + "small.png") + "'").code);
  EXPECT_FALSE(std::ifstream(folder + "out.png"));
}
