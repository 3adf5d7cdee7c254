#include "tools/kslsim/Screen.h"

#include <png.h>
#include <xcb/xcb.h>
#include <algorithm>
#include <cstdlib>
#include <memory>

namespace kslsim {
namespace {

struct Free {
  void operator()(void* reply) const { std::free(reply); }
};
template <typename T>
using Reply = std::unique_ptr<T, Free>;

constexpr int kBytesPerPixel = 4;
constexpr int kMostWindows = 1000;  // looked at, in the first two layers of the tree

xcb_atom_t atom(xcb_connection_t* connection, const std::string& name) {
  const Reply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(
    connection, xcb_intern_atom(connection, 1, static_cast<uint16_t>(name.size()), name.c_str()), nullptr));
  if (!reply) return XCB_ATOM_NONE;
  return reply->atom;
}

std::string property(xcb_connection_t* connection, xcb_window_t window, xcb_atom_t name) {
  if (name == XCB_ATOM_NONE) return "";
  const Reply<xcb_get_property_reply_t> reply(xcb_get_property_reply(
    connection, xcb_get_property(connection, 0, window, name, XCB_GET_PROPERTY_TYPE_ANY, 0, 256), nullptr));
  if (!reply || reply->format != 8) return "";
  return std::string(static_cast<const char*>(xcb_get_property_value(reply.get())),
                     static_cast<size_t>(xcb_get_property_value_length(reply.get())));
}

std::vector<xcb_window_t> childrenOf(xcb_connection_t* connection, xcb_window_t window) {
  const Reply<xcb_query_tree_reply_t> reply(
    xcb_query_tree_reply(connection, xcb_query_tree(connection, window), nullptr));
  if (!reply) return {};
  const xcb_window_t* begin = xcb_query_tree_children(reply.get());
  return std::vector<xcb_window_t>(begin, begin + xcb_query_tree_children_length(reply.get()));
}

// Every `step`-th pixel's square of `step` by `step`, averaged. Four bytes a pixel, blue first, come in.
std::vector<uint8_t> reduced(const uint8_t* data, int width, int height, int step) {
  const int outWidth = width / step, outHeight = height / step;
  std::vector<uint8_t> out(static_cast<size_t>(outWidth) * static_cast<size_t>(outHeight) * 3);
  std::vector<unsigned> sums(static_cast<size_t>(outWidth) * 3);
  uint8_t* to = out.data();
  for (int y = 0; y < outHeight; ++y) {
    std::fill(sums.begin(), sums.end(), 0);
    for (int row = 0; row < step; ++row) {
      const uint8_t* from = data + (static_cast<size_t>(y) * step + row) * width * kBytesPerPixel;
      for (int x = 0; x < outWidth * step; ++x, from += kBytesPerPixel)
        for (int part = 0; part < 3; ++part) sums[static_cast<size_t>(x / step) * 3 + part] += from[2 - part];
    }
    for (unsigned sum : sums) *to++ = static_cast<uint8_t>(sum / static_cast<unsigned>(step * step));
  }
  return out;
}

}  // namespace

struct Screen::Window {
  xcb_window_t id = 0;
  int width = 0, height = 0;
};

Screen::Screen(const std::string& display, const std::string& title) : mDisplay(display), mTitle(title) {}

Screen::~Screen() {
  if (mConnection) xcb_disconnect(mConnection);
}

bool Screen::connect(std::string& error) {
  if (mConnection && !xcb_connection_has_error(mConnection)) return true;
  if (mConnection) xcb_disconnect(mConnection);
  const char* inherited = std::getenv("DISPLAY");
  const std::string display = mDisplay.empty() && inherited ? inherited : mDisplay;
  mConnection = display.empty() ? nullptr : xcb_connect(display.c_str(), nullptr);
  if (mConnection && !xcb_connection_has_error(mConnection)) return true;
  error = display.empty() ? "There is no DISPLAY." : "The X server " + display + " does not answer.";
  return false;
}

std::string Screen::titleOf(uint32_t window) const {
  const std::string title = property(mConnection, window, atom(mConnection, "_NET_WM_NAME"));
  return title.empty() ? property(mConnection, window, XCB_ATOM_WM_NAME) : title;
}

bool Screen::find(Window& best) const {
  const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(mConnection)).data->root;
  // A window manager puts a frame of its own around each window.
  std::vector<xcb_window_t> windows = childrenOf(mConnection, root);
  for (size_t i = 0, frames = windows.size(); i < frames && windows.size() < kMostWindows; ++i)
    for (xcb_window_t child : childrenOf(mConnection, windows[i])) windows.push_back(child);
  bool named = false;
  for (xcb_window_t window : windows) {
    const Reply<xcb_get_window_attributes_reply_t> shown(
      xcb_get_window_attributes_reply(mConnection, xcb_get_window_attributes(mConnection, window), nullptr));
    if (!shown || shown->map_state != XCB_MAP_STATE_VIEWABLE || shown->_class != XCB_WINDOW_CLASS_INPUT_OUTPUT)
      continue;
    const Reply<xcb_get_geometry_reply_t> place(
      xcb_get_geometry_reply(mConnection, xcb_get_geometry(mConnection, window), nullptr));
    if (!place) continue;
    const bool hasTitle = !mTitle.empty() && titleOf(window) == mTitle;
    if (named && !hasTitle) continue;
    if (hasTitle == named && place->width * place->height <= best.width * best.height) continue;
    named = hasTitle;
    best = {window, place->width, place->height};
  }
  return best.id != 0;
}

bool Screen::take(std::string& png, std::string& error) {
  std::lock_guard lock(mMutex);
  if (!connect(error)) return false;
  Window window;
  if (!find(window)) {
    error = "No window is shown.";
    return false;
  }
  const xcb_screen_t* screen = xcb_setup_roots_iterator(xcb_get_setup(mConnection)).data;
  const Reply<xcb_translate_coordinates_reply_t> place(xcb_translate_coordinates_reply(
    mConnection, xcb_translate_coordinates(mConnection, window.id, screen->root, 0, 0), nullptr));
  if (!place) {
    error = "The window has just gone.";
    return false;
  }
  // What lies beside the X screen cannot be read.
  const int left = std::max(0, -place->dst_x), top = std::max(0, -place->dst_y);
  const int width = std::min<int>(window.width, screen->width_in_pixels - place->dst_x) - left;
  const int height = std::min<int>(window.height, screen->height_in_pixels - place->dst_y) - top;
  const int step = std::max(1, (width + kWidth - 1) / kWidth);
  if (width < step || height < step) {
    error = "The window lies beside the screen.";
    return false;
  }
  const Reply<xcb_get_image_reply_t> image(xcb_get_image_reply(
    mConnection,
    xcb_get_image(mConnection, XCB_IMAGE_FORMAT_Z_PIXMAP, window.id, static_cast<int16_t>(left),
                  static_cast<int16_t>(top), static_cast<uint16_t>(width), static_cast<uint16_t>(height), ~0u),
    nullptr));
  if (!image || xcb_get_image_data_length(image.get()) != width * height * kBytesPerPixel) {
    error = image ? "The X screen has no 24 bits a pixel." : "The window cannot be read.";
    return false;
  }
  png = pngOf(reduced(xcb_get_image_data(image.get()), width, height, step), width / step, height / step);
  return true;
}

std::string pngOf(const std::vector<uint8_t>& rgb, int width, int height) {
  std::string out;
  png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
  png_infop info = png_create_info_struct(png);
  png_set_write_fn(
    png, &out,
    [](png_structp to, png_bytep data, size_t length) {
      static_cast<std::string*>(png_get_io_ptr(to))->append(reinterpret_cast<const char*>(data), length);
    },
    nullptr);
  png_set_IHDR(png, info, static_cast<png_uint_32>(width), static_cast<png_uint_32>(height), 8, PNG_COLOR_TYPE_RGB,
               PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
  png_set_compression_level(png, 1);
  png_set_filter(png, 0, PNG_FILTER_SUB);
  png_write_info(png, info);
  for (int y = 0; y < height; ++y) png_write_row(png, rgb.data() + static_cast<size_t>(y) * width * 3);
  png_write_end(png, nullptr);
  png_destroy_write_struct(&png, &info);
  return out;
}

}  // namespace kslsim
