// skinplaces SCREENSHOT VIEW -o OUT: a screenshot with the places of the skin's files drawn on it.
// skinplaces --list: the views, each with the station of the demo that it is drawn on.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <exception>

#include "Canvas.h"
#include "PlaceLabels.h"
#include "Typeface.h"

namespace {

constexpr double kTextSize = 15;
constexpr int kLine = 17, kPadding = 5;
constexpr double kDimmed = 0.8;  // so that the outlines stand out
constexpr int kJpegQuality = 64;
constexpr Colour kInk{0.02, 0.02, 0.03, 1};

// Bright, and far from each other; marks take them in turn.
const Colour kColours[] = {{1.00, 0.85, 0.20, 1}, {0.35, 0.90, 1.00, 1}, {1.00, 0.50, 0.85, 1},
                           {0.50, 1.00, 0.45, 1}, {1.00, 0.62, 0.30, 1}, {0.72, 0.70, 1.00, 1},
                           {1.00, 1.00, 1.00, 1}, {0.40, 1.00, 0.80, 1}};

// What a label says: number, name and size of each file; where a file is looked at closely also the upper left
// corner of the place, as it lies in that file.
std::vector<std::string> linesOf(const View& view, const std::vector<Mark>& marks, const Label& label) {
  const Mark& mark = marks[label.mark];
  const Area& place = mark.screen[label.place];
  const auto isInside = [&](const SkinFile* file) { return view.inside && file->name == view.inside; };
  std::string corner;
  for (const Mark& other : marks)
    if (&other != &mark && std::any_of(other.files.begin(), other.files.end(), isInside))
      corner = " at (" + std::to_string(place.x - other.screen.front().x) + ", " +
               std::to_string(place.y - other.screen.front().y) + ")";
  std::vector<std::string> lines;
  for (size_t i = 0; i < mark.files.size(); ++i) {
    const SkinFile& file = *mark.files[i];
    // A font is no larger here or there: what counts is the room of this place.
    const bool own = file.kind == SkinFileKind::Picture || file.kind == SkinFileKind::Animation;
    lines.push_back(mark.numbers[i] + "  " + file.name + (own && file.fit == Fit::OwnSize ? "  up to " : "  ") +
                    std::to_string(own ? file.width : place.w) + " x " +
                    std::to_string(own ? file.height : place.h) + corner);
  }
  return lines;
}

// Broken where an animation comes and goes.
void outline(cairo_t* cr, const Area& area, const Colour& colour, bool broken) {
  constexpr double kDashes[] = {9, 6};
  const auto stroke = [&](double width, const Colour& with) {
    cairo_rectangle(cr, area.x + 1, area.y + 1, area.w - 2, area.h - 2);
    cairo_set_source_rgba(cr, with.r, with.g, with.b, with.a);
    cairo_set_line_width(cr, width);
    cairo_set_dash(cr, kDashes, broken ? 2 : 0, 0);
    cairo_stroke(cr);
    cairo_set_dash(cr, kDashes, 0, 0);
  };
  stroke(4, kInk.withAlpha(0.75));
  stroke(2, colour);
}

void writeText(cairo_t* cr, const Typeface& face, const std::string& line, double x, double baseline,
               const Colour& colour) {
  cairo_new_path(cr);
  face.appendText(cr, line, x, baseline, 0);
  cairo_set_source_rgba(cr, colour.r, colour.g, colour.b, colour.a);
  cairo_fill(cr);
}

void fillBox(cairo_t* cr, const Area& box, double radius, const Colour& colour) {
  roundRect(cr, box.x, box.y, box.w, box.h, radius);
  cairo_set_source_rgba(cr, colour.r, colour.g, colour.b, colour.a);
  cairo_fill(cr);
}

// From the label to the nearest point of the place, where the two do not touch.
void leader(cairo_t* cr, const Area& box, const Area& place, const Colour& colour) {
  const auto nearest = [](double from, double low, double high) { return std::clamp(from, low, high); };
  const double cx = box.x + box.w / 2.0, cy = box.y + box.h / 2.0;
  const double px = nearest(cx, place.x + 1.0, place.x + place.w - 1.0);
  const double py = nearest(cy, place.y + 1.0, place.y + place.h - 1.0);
  const double bx = nearest(px, box.x, box.x + box.w), by = nearest(py, box.y, box.y + box.h);
  if (std::hypot(px - bx, py - by) < 8) return;
  for (const bool halo : {true, false}) {
    const Colour& c = halo ? kInk : colour;
    cairo_move_to(cr, bx, by);
    cairo_line_to(cr, px, py);
    cairo_set_source_rgba(cr, c.r, c.g, c.b, halo ? 0.75 : 1);
    cairo_set_line_width(cr, halo ? 4 : 1.6);
    cairo_stroke(cr);
    cairo_arc(cr, px, py, halo ? 4.5 : 3, 0, 2 * M_PI);
    cairo_fill(cr);
  }
}

void draw(const View& view, const std::string& screenshot, const std::string& out) {
  const Canvas screen(screenshot);
  if (screen.width() != 1920 || screen.height() != 1080) throw std::runtime_error(screenshot + ": not 1920 x 1080");
  const Area crop = cropOf(view);
  Canvas picture(view.width, view.height);
  cairo_t* cr = picture.cr();
  cairo_set_source_rgb(cr, 0, 0, 0);
  cairo_paint(cr);
  cairo_save(cr);
  const double scale = static_cast<double>(view.width) / crop.w;
  cairo_scale(cr, scale, scale);
  picture.paint(screen, -crop.x, -crop.y, kDimmed);
  cairo_restore(cr);

  const Typeface face(fontfile::kBold, kTextSize);
  const std::vector<Mark> marks = marksOf(view);
  std::vector<Label> labels;
  for (size_t m = 0; m < marks.size(); ++m)
    for (size_t p = 0; p < (view.inside ? marks[m].places.size() : 1); ++p) {
      Label& label = labels.emplace_back(Label{m, p, 0, 0, {}});
      const auto lines = linesOf(view, marks, label);
      for (const std::string& line : lines)
        label.w = std::max(label.w, static_cast<int>(std::ceil(face.textWidth(line, 0))) + 2 * kPadding);
      label.h = kLine * static_cast<int>(lines.size()) + kPadding;
    }
  placeLabels(view, marks, labels);

  const auto colourOf = [](size_t mark) { return kColours[mark % std::size(kColours)]; };
  for (size_t m = 0; m < marks.size(); ++m)
    for (const Area& place : marks[m].places)
      outline(cr, place, colourOf(m), marks[m].files.front()->kind == SkinFileKind::Animation);
  for (const Label& label : labels)
    if (!marks[label.mark].everywhere)
      leader(cr, label.box, marks[label.mark].places[label.place], colourOf(label.mark));
  for (size_t m = 0; m < marks.size(); ++m)
    for (size_t p = 0; p < marks[m].places.size(); ++p) {
      const Area& badge = marks[m].badges[p];
      fillBox(cr, badge, 6, colourOf(m));
      std::string numbers;
      for (const std::string& number : marks[m].numbers) numbers += (numbers.empty() ? "" : " ") + number;
      writeText(cr, face, numbers, badge.x + (badge.w - face.textWidth(numbers, 0)) / 2, badge.y + 15, kInk);
    }
  for (const Label& label : labels) {
    fillBox(cr, label.box, 5, kInk.withAlpha(0.88));
    const auto lines = linesOf(view, marks, label);
    for (size_t i = 0; i < lines.size(); ++i)
      writeText(cr, face, lines[i], label.box.x + kPadding, label.box.y + kLine * static_cast<double>(i + 1) - 3,
                colourOf(label.mark));
  }
  if (out.size() > 4 && out.substr(out.size() - 4) == ".jpg")
    picture.saveJpeg(out, kJpegQuality);
  else
    picture.save(out);
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app{"Draws the places of the skin's files, with their numbers, names and sizes, on a screenshot."};
  std::string screenshot, name, out;
  std::vector<std::string> names;
  for (const View& view : views()) names.emplace_back(view.name);
  bool list = false;
  app.add_flag("--list", list, "only name the views, each with the station of the demo that it is drawn on");
  app.add_option("SCREENSHOT", screenshot, "PNG of the whole screen, 1920 x 1080");
  app.add_option("VIEW", name, "what it shows")->check(CLI::IsMember(names));
  app.add_option("-o,--output", out, "picture to write: .jpg, or else PNG");
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : 2;
  }
  if (!list && (name.empty() || out.empty())) {
    std::fprintf(stderr, "skinplaces: a screenshot, a view and -o are needed\n");
    return 2;
  }
  try {
    for (const View& view : views()) {
      if (list) std::printf("%s %s\n", view.name, view.screenshot);
      if (!list && name == view.name) draw(view, screenshot, out);
    }
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "skinplaces: %s\n", error.what());
    return 1;
  }
}
