#include "vendelo-sdl2/TEndLimit.h"

#include <poll.h>
#include <pthread.h>
#include <sys/eventfd.h>
#include <unistd.h>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <system_error>
#include <utility>

#include "common/Logger.h"
#include "vendelo-sdl2/SystemSeams.h"

namespace vendelo_sdl2 {

namespace {

// With the second that the very last steps may take these are ten.
constexpr int kLongestEndMs = 9000;

void Wake(int descriptor) {
  const uint64_t one = 1;
  [[maybe_unused]] const ssize_t written = write(descriptor, &one, sizeof one);
}

}  // namespace

TEndLimit::TEndLimit(TExpired Expired) : mExpired(std::move(Expired)), mWake(eventfd(0, EFD_CLOEXEC)) {
  sigset_t kept, former;
  sigfillset(&kept);
  for (const int crash : {SIGILL, SIGABRT, SIGFPE, SIGSEGV, SIGBUS, SIGTRAP}) sigdelset(&kept, crash);
  pthread_sigmask(SIG_BLOCK, &kept, &former);
  try {
    mThread = std::thread([this] { Run(); });
    pthread_setname_np(mThread.native_handle(), "EndLimit");
  } catch (const std::system_error& error) {
    KLOG(LogApp, logs::Error, "No thread to limit the end: %s", error.what());
  }
  pthread_sigmask(SIG_SETMASK, &former, nullptr);
}

TEndLimit::~TEndLimit() {
  mCalledOff = true;
  Wake(mWake);
  if (mThread.joinable()) mThread.join();
  close(mWake);
}

void TEndLimit::Begin(int Code) {
  int none = kNoEnd;
  if (mCode.compare_exchange_strong(none, Code)) Wake(mWake);
}

void TEndLimit::BeginWith(int Code) {
  if (mCode.exchange(Code) == kNoEnd) Wake(mWake);
}

void TEndLimit::Run() {
  const auto isCalledOff = [this](auto wait, int longestMs) {
    pollfd woken{mWake, POLLIN, 0};
    while (wait(&woken, 1, longestMs) < 0 && errno == EINTR) {
    }
    return mCalledOff.load();
  };
  do {  // a forked process that ends wakes this one, too
    if (isCalledOff(::poll, -1)) return;
    uint64_t count = 0;
    [[maybe_unused]] const ssize_t begun = read(mWake, &count, sizeof count);
  } while (mCode == kNoEnd);
  do {
    if (isCalledOff(SystemSeams.Poll, kLongestEndMs)) return;
  } while (!mExpired(mCode));
}

}  // namespace vendelo_sdl2
