#pragma once

#include <string>

namespace vendelo_sdl2 {

// A lock between processes by a file, which dies with the process that holds it, however that ends; the file stays
// and names the process. What the process starts does not hold it. One thread at a time.
class TFileLock {
 public:
  enum TResult { HELD, HELD_BY_ANOTHER, IMPOSSIBLE };

  TFileLock() = default;
  ~TFileLock() { Release(); }
  TFileLock(const TFileLock&) = delete;
  TFileLock& operator=(const TFileLock&) = delete;

  // Does not wait. IMPOSSIBLE where the file can neither be made nor opened for writing, or its file system has no
  // locks.
  TResult Take(const std::string& File);
  void Release();

  // Behind HELD_BY_ANOTHER the process that holds it, as the file names it; behind IMPOSSIBLE the reason.
  const std::string& Detail() const { return mDetail; }

 private:
  int mFile = -1;
  std::string mDetail;
};

}  // namespace vendelo_sdl2
