#include "tools/kslsim/GrowingPool.h"

namespace kslsim {

void GrowingPool::enqueue(std::function<void()> work) {
  std::unique_lock lock(mMutex);
  mWork.push_back(std::move(work));
  const bool grow = mWork.size() > mFree && mThreads.size() < mLargest;
  lock.unlock();
  if (grow)
    mThreads.emplace_back([this] { run(); });
  else
    mCondition.notify_one();
}

void GrowingPool::shutdown() {
  {
    std::lock_guard lock(mMutex);
    mEnding = true;
  }
  mCondition.notify_all();
  for (std::thread& thread : mThreads) thread.join();
  mThreads.clear();
}

void GrowingPool::run() {
  std::unique_lock lock(mMutex);
  while (true) {
    ++mFree;
    mCondition.wait(lock, [this] { return !mWork.empty() || mEnding; });
    --mFree;
    if (mWork.empty()) return;
    const std::function<void()> work = std::move(mWork.front());
    mWork.pop_front();
    lock.unlock();
    work();
    lock.lock();
  }
}

}  // namespace kslsim
