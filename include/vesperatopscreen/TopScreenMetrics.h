#pragma once

#include <cstdint>
#include <string>

#include "vesperatopscreen/TopScreenFacts.h"

// The facts as figures in the text format of Prometheus: each with its help and type, in seconds and counts.
std::string metricsText(const TopScreenFacts& facts, unsigned long passes, uint64_t uptimeMs,
                        Uint32 longestFrameMs);

// The file that METRICS_FILE names. A new text takes the place of the old one at once; it is written on a thread of
// its own, and one that comes while the last is still being written is left out. A failure is told to the log, and
// the next one only after a success. Main thread.
class TMetricsFile {
 public:
  // Reads the environment.
  TMetricsFile();
  bool wanted() const { return !mPath.empty(); }
  void write(std::string text);

 private:
  std::string mPath;
};
