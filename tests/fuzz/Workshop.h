#pragma once

#include <string>

#include "tests/fuzz/CrashSignals.h"
#include "tests/support/WidgetHarness.h"

namespace fuzz {

// A folder in memory for the file that is being read, with the picture "atlas.png" of 64 by 64 beside it, and a
// renderer into a surface. One for each process, which takes it along.
class Workshop {
 public:
  explicit Workshop(const std::string& target, const CrashSignals& = {});

  const std::string& folder() const { return mFolder; }  // with a slash at its end
  SDL_Renderer* renderer() const { return mHarness.renderer(); }
  void write(const std::string& name, const std::string& content) const;

 private:
  const std::string mFolder;
  WidgetHarness mHarness;
};

}  // namespace fuzz
