#pragma once

#include <mutex>
#include <string>
#include <vector>

struct xcb_connection_t;

namespace kslsim {

// Pictures of the top screen, taken from its window on an X server. The connection is made with the first picture,
// and anew when the server has gone meanwhile. Any thread, locked inside; one picture is taken at a time.
class Screen {
 public:
  // `display` as in the environment, that one when empty. `title` names the window; when empty, or when no window
  // has it, the largest one that is shown is taken.
  Screen(const std::string& display, const std::string& title);
  ~Screen();
  Screen(const Screen&) = delete;
  Screen& operator=(const Screen&) = delete;

  // A PNG of the part of the window that lies on the X screen, at most kWidth pixels wide. False when there is
  // nothing to take, and `error` says why.
  bool take(std::string& png, std::string& error);

  static constexpr int kWidth = 960;

 private:
  struct Window;
  bool connect(std::string& error);
  bool find(Window& window) const;
  std::string titleOf(uint32_t window) const;

  const std::string mDisplay, mTitle;
  std::mutex mMutex;  // guards the rest
  xcb_connection_t* mConnection = nullptr;
};

// Three bytes a pixel, red first, as a PNG. Quick rather than small.
std::string pngOf(const std::vector<uint8_t>& rgb, int width, int height);

}  // namespace kslsim
