#include "PlaceLabels.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <stdexcept>
#include <utility>

namespace {

constexpr Area kScreen{0, 0, 1920, 1080};
constexpr int kBadge = 20;
constexpr int kGap = 2;  // between a label and what it must not touch

Area larger(const Area& a, int by) { return {a.x - by, a.y - by, a.w + 2 * by, a.h + 2 * by}; }

Area common(const Area& a, const Area& b) {
  const int x = std::max(a.x, b.x), y = std::max(a.y, b.y);
  return {x, y, std::min(a.x + a.w, b.x + b.w) - x, std::min(a.y + a.h, b.y + b.h) - y};
}

bool operator==(const Area& a, const Area& b) { return a.x == b.x && a.y == b.y && a.w == b.w && a.h == b.h; }

// Whether the file is shown where levels would be. The other files of their scene stand beside levels.
bool replacesLevels(const SkinFile& file) {
  return file.name == "logo.png" || file.name == "Fonts/jackpot_win_label" || file.name == "topscreen.jpg" ||
         file.scene == Scene::Every;
}

// Where the demo's dots of 44 by 44 pixels circle, when the circle is largest.
constexpr Area kDots{838, 418, 244, 244};

// First place of the file that the view looks into.
Area insideOf(const View& view) {
  for (const SkinFile& file : skinFiles())
    if (file.name == view.inside && !file.places.empty()) return file.places.front();
  throw std::runtime_error(std::string("the inventory has no place for ") + view.inside);
}

bool contains(const Area& outer, const Area& inner) { return common(outer, inner) == inner; }

// What the paytable of the demo's games brings besides: the page and the fonts' fields are as the platform says.
constexpr int kPageX = 220, kPageY = 110;  // of 1480 x 860 in the middle

using Places = std::vector<Area>;

SkinFile onPaytable(SkinFileKind kind, const char* name, Fit fit, int width, int height, Places places) {
  return {kind, name, fit, width, height, Scene::Paytable, std::move(places), {}};
}

SkinFile page(const char* name) {
  return onPaytable(SkinFileKind::Picture, name, Fit::Exact, 1480, 860, {{kPageX, kPageY, 1480, 860}});
}

// Three fields of one width below each other on the page.
SkinFile prizes(int x, std::array<int, 3> ys, int width) {
  Places places;
  for (const int y : ys) places.push_back({kPageX + x, kPageY + y, width, 56});
  return onPaytable(SkinFileKind::BitmapFont, "prize.fnt", Fit::OwnSize, width, 56, std::move(places));
}

const std::vector<SkinFile>& firstPage() {
  static const std::vector<SkinFile> files = {page("paytable/InfoPage_Paytable.png"),
                                              prizes(280, {202, 288, 374}, 190),
                                              onPaytable(SkinFileKind::TrueTypeFont, "prize.ttf", Fit::OwnSize, 300,
                                                         34, {{10, 1036, 300, 34}, {1610, 1036, 300, 34}})};
  return files;
}

const std::vector<SkinFile>& secondPage() {
  static const std::vector<SkinFile> files = {page("paytable/InfoPage_Paytable_Bonus.png"),
                                              prizes(250, {470, 575, 680}, 290)};
  return files;
}

// How far a label is from the outline that it names, and how far from beside or above it.
double distance(const Area& label, const Area& place, bool everywhere) {
  if (everywhere)
    return std::min({label.x - place.x, label.y - place.y, place.x + place.w - label.x - label.w,
                     place.y + place.h - label.y - label.h});
  const int dx = std::max({place.x - label.x - label.w, label.x - place.x - place.w, 0});
  const int dy = std::max({place.y - label.y - label.h, label.y - place.y - place.h, 0});
  const int cx = label.x + label.w / 2, cy = label.y + label.h / 2;
  const int ax = std::max({place.x - cx, cx - place.x - place.w, 0});
  const int ay = std::max({place.y - cy, cy - place.y - place.h, 0});
  return std::hypot(dx, dy) + std::min(ax, ay);
}

// Whether a box hides something that the picture is about.
bool taken(const Area& box, const std::vector<Mark>& marks, const std::vector<Area>& pictures) {
  if (std::any_of(pictures.begin(), pictures.end(), [&](const Area& other) { return overlap(box, other); }))
    return true;
  for (const Mark& mark : marks)
    for (size_t i = 0; i < mark.places.size(); ++i)
      if (overlap(box, mark.badges[i]) || (!mark.everywhere && overlap(box, mark.places[i]))) return true;
  return false;
}

}  // namespace

const std::vector<View>& views() {
  static const std::vector<View> all = {
    {.name = "jackpots", .screenshot = "four-levels", .scene = Scene::Jackpots},
    {.name = "frame",
     .screenshot = "four-levels",
     .scene = Scene::Jackpots,
     .inside = "EMERALD_RIGHT.png",
     .width = 1100,
     .height = 400},
    {.name = "texts", .screenshot = "integrity-text", .scene = Scene::Jackpots, .levels = false},
    {.name = "win", .screenshot = "win-gold", .scene = Scene::Win},
    {.name = "game", .screenshot = "game-overlay", .scene = Scene::Jackpots, .skin = false, .games = true},
    {.name = "paytable",
     .screenshot = "paytable",
     .scene = Scene::Paytable,
     .skin = false,
     .games = true,
     .more = firstPage},
    {.name = "bonus", .screenshot = "paytable-bonus", .scene = Scene::Paytable, .more = secondPage},
    {.name = "instructions", .screenshot = "instructions", .scene = Scene::Instructions},
    {.name = "button",
     .screenshot = "instructions",
     .scene = Scene::Instructions,
     .inside = "buttonE.png",
     .width = 900,
     .height = 480},
    {.name = "loader", .screenshot = "loader", .scene = Scene::Loader}};
  return all;
}

bool overlap(const Area& a, const Area& b) {
  return a.x < b.x + b.w && b.x < a.x + a.w && a.y < b.y + b.h && b.y < a.y + a.h;
}

Area cropOf(const View& view) {
  if (!view.inside) return kScreen;
  const Area file = insideOf(view);
  // Room around it for the labels, in the shape of the picture that is made.
  const int h = std::max(file.h * 8 / 5, (file.w + 40) * view.height / view.width);
  const int w = h * view.width / view.height;
  return {file.x + file.w / 2 - w / 2, file.y + file.h / 2 - h / 2, w, h};
}

namespace {

// Whether another view shows a place of the file enlarged.
bool hasCloseUp(const View& view, const SkinFile& file) {
  for (const View& other : views()) {
    if (!other.inside || other.scene != view.scene) continue;
    const Area outer = insideOf(other);
    for (const Area& place : file.places)
      if (contains(outer, place) && !(place == outer)) return true;
  }
  return false;
}

std::vector<Area> placesIn(const View& view, const SkinFile& file) {
  std::vector<Area> places;
  const bool beside = view.scene != Scene::Jackpots || view.levels != replacesLevels(file);
  const bool everywhere = file.scene == Scene::Every && !view.levels;
  if (!everywhere && (file.scene != view.scene || !beside)) return places;
  if (file.name == "../../AppFontBold.ttf") return places;  // hidden, as a rule
  if (file.name == "dot.png") places.push_back(kDots);
  for (const Area& place : file.places)
    if (view.inside ? contains(insideOf(view), place) : overlap(kScreen, place))
      places.push_back(common(kScreen, place));
  if (file.kind == SkinFileKind::Animation && places.size() > 1) places.resize(1);
  if (!view.inside && hasCloseUp(view, file)) places.clear();
  return places;
}

Area scaledTo(const View& view, const Area& place) {
  const Area crop = cropOf(view);
  const double scale = static_cast<double>(view.width) / crop.w;
  const auto scaled = [&](int pixels) { return static_cast<int>(std::lround(pixels * scale)); };
  return common({scaled(place.x - crop.x), scaled(place.y - crop.y), scaled(place.w), scaled(place.h)},
                {0, 0, view.width, view.height});
}

// Where the pictures of the skin stand in a view that is about a game: they are not to be hidden either.
std::vector<Area> around(View view) {
  std::vector<Area> areas;
  if (view.skin) return areas;
  view.skin = true;
  for (const SkinFile& file : skinFiles())
    if (file.kind == SkinFileKind::Picture && file.fit == Fit::Exact)
      for (const Area& place : placesIn(view, file)) areas.push_back(scaledTo(view, place));
  return areas;
}

// Puts the numbers on the upper edges of their places, each as far to the left as those before it leave free.
void placeBadges(std::vector<Mark>& marks, std::vector<Area> placed) {
  for (Mark& mark : marks) {
    size_t letters = 0;
    for (const std::string& number : mark.numbers) letters += number.size() + 1;
    for (const Area& place : mark.places) {
      Area badge{place.x, place.y < kBadge ? place.y : place.y - kBadge + 1, 9 * static_cast<int>(letters) + 2,
                 kBadge};
      while (std::any_of(placed.begin(), placed.end(), [&](const Area& other) { return overlap(badge, other); }))
        badge.x += 4;
      placed.push_back(badge);
      mark.badges.push_back(badge);
    }
  }
}

}  // namespace

std::vector<Mark> marksOf(const View& view) {
  std::vector<Mark> marks;
  const auto take = [&](const SkinFile& file, const std::string& number) {
    const std::vector<Area> places = placesIn(view, file);
    if (places.empty()) return;
    auto mark = std::find_if(marks.begin(), marks.end(), [&](const Mark& other) {
      return std::equal(other.screen.begin(), other.screen.end(), places.begin(), places.end(),
                        [](const Area& a, const Area& b) { return a == b; });
    });
    if (mark == marks.end()) {
      mark = marks.insert(marks.end(), Mark{});
      mark->screen = places;
    }
    mark->numbers.push_back(number);
    mark->files.push_back(&file);
  };
  int number = 0;
  for (const bool games : {false, true})
    for (const SkinFile& file : games ? gameFiles() : skinFiles()) {
      ++number;
      if (games ? view.games : view.skin) take(file, std::to_string(number));
    }
  char letter = 'a';
  if (view.more)
    for (const SkinFile& file : view.more()) take(file, std::string(1, letter++));

  for (Mark& mark : marks) {
    for (const Area& place : mark.screen) mark.places.push_back(scaledTo(view, place));
    mark.everywhere = mark.places.front().w * mark.places.front().h > view.width * view.height * 4 / 5;
  }
  placeBadges(marks, around(view));
  return marks;
}

void placeLabels(const View& view, const std::vector<Mark>& marks, std::vector<Label>& labels) {
  // What lies inside another place has less to choose from.
  std::stable_sort(labels.begin(), labels.end(), [&](const Label& a, const Label& b) {
    const Area &first = marks[a.mark].places[a.place], &second = marks[b.mark].places[b.place];
    return first.w * first.h < second.w * second.h;
  });
  const std::vector<Area> pictures = around(view);
  std::vector<Area> placed;
  for (Label& label : labels) {
    const Mark& mark = marks[label.mark];
    const Area& place = mark.places[label.place];
    double best = 0;
    for (int y = kGap; y + label.h + kGap <= view.height; ++y)
      for (int x = kGap; x + label.w + kGap <= view.width; x += 2) {
        const Area box{x, y, label.w, label.h};
        const double cost = distance(box, place, mark.everywhere);
        if ((label.box.w != 0 && cost >= best) || cost < 0) continue;
        const Area room = larger(box, kGap);
        if (std::any_of(placed.begin(), placed.end(), [&](const Area& other) { return overlap(room, other); }))
          continue;
        if (taken(room, marks, pictures)) continue;
        best = cost;
        label.box = box;
      }
    if (label.box.w == 0) throw std::runtime_error("there is no room for the label of " + mark.files.front()->name);
    placed.push_back(label.box);
  }
}
