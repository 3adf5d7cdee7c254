#pragma once

#include <SDL.h>
#include <atomic>
#include <functional>
#include <mutex>

namespace vendelo_sdl2 {

// What is known of a frame at its end. `picture` holds what is on the screen once anything has been presented; null
// is the window. A frame in which nothing has changed presents nothing. Milliseconds of the tick clock.
struct TFrameEnd {
  SDL_Renderer* renderer;
  SDL_Texture* picture;
  bool presented;
  Uint32 now;
  Uint32 targetMs;  // how long a frame takes at the rate that is wanted
};

// Looks on at the frames: counts them, and gives a picture to whoever has asked for one.
// frameDone belongs to the draw thread, outside the draw mutex; everything else is for any thread.
class TFrameWatch {
 public:
  // Called on the draw thread with a surface that it owns from then on; what takes long belongs elsewhere.
  using TPictureTaker = std::function<void(SDL_Surface*)>;

  void frameDone(const TFrameEnd& end);

  unsigned long frames() const { return mFrames; }
  unsigned long presented() const { return mPresented; }
  // Frames that ended when the next one was due as well, or later.
  unsigned long late() const { return mLate; }
  // The longest time from the end of one frame to that of the next since the last call.
  Uint32 takeLongestMs() { return mLongestMs.exchange(0); }

  // What is on the screen after the next frame is given to `taker`. A wish that has not been served yet is
  // replaced.
  void askForPicture(TPictureTaker taker);

 private:
  void givePicture(const TFrameEnd& end);

  std::atomic<unsigned long> mFrames{0}, mPresented{0}, mLate{0};
  std::atomic<Uint32> mLongestMs{0};
  Uint32 mLastEnd = 0;  // draw thread
  std::atomic<bool> mAsked{false};
  std::mutex mTakerMutex;
  TPictureTaker mTaker;  // mTakerMutex
};

}  // namespace vendelo_sdl2
