#pragma once

namespace vendelo_sdl2 {

/// Marks a piece of detached work that uses the application, for as long as the object lives. The end of the
/// application waits until no such object is left, so the work must be finite. Any thread; make it on the thread
/// that starts the work and move it into the work, so that there is no moment at which the work is not counted.
class TAsyncJob {
 public:
  TAsyncJob();
  TAsyncJob(TAsyncJob&& Other) noexcept;
  TAsyncJob& operator=(TAsyncJob&&) = delete;
  ~TAsyncJob();

  /// How many are under way in the process.
  static int Count();
  /// Returns when none is. Not from inside a job.
  static void WaitForAll();

 private:
  bool mCounted;
};

}  // namespace vendelo_sdl2
