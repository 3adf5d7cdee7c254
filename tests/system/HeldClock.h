#pragma once

#include <atomic>
#include <cstdint>

namespace systest {

// A page of memory that a test shares with a program into which HeldClock.cpp is loaded.
struct HeldClock {
  static constexpr const char* kVariable = "HELD_CLOCK_PAGE";  // names its file

  std::atomic<uint32_t> held;    // written by the test: the thread that draws sees no time pass
  std::atomic<uint32_t> frames;  // how often that thread has come to the pause at the end of a frame
};

}  // namespace systest
