// Loaded in front of the libraries of a program (LD_PRELOAD), whose clocks then go as the page of SOAK_CLOCK says:
// faster than the real ones, or ahead by a leap. What sleeps or waits until a moment waits until that moment of
// these clocks. What waits for a descriptor (poll, select) waits in real time. Beside that it counts, on the page
// of SOAK_COUNTS, what of SDL's renderer the program has in use. Without the two variables everything is as it is.
//
// Any thread. The pages are written by tools/soak/soak.py, which has their forms as well.
#include <SDL.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <pthread.h>
#include <semaphore.h>
#include <sys/mman.h>
#include <sys/time.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <ctime>

namespace {

using Nanoseconds = int64_t;
constexpr Nanoseconds kSecond = 1000000000, kMillisecond = 1000000;
// The longest real wait at a stretch: the clock may leap meanwhile.
constexpr Nanoseconds kSlice = 10 * kMillisecond;
// The shortest one: a program that paces itself does not come to spin when the clock runs fast.
constexpr Nanoseconds kLeast = kMillisecond / 2;

struct ClockPage {
  std::atomic<uint64_t> turn;   // odd while it is being written
  Nanoseconds since;            // of the real monotonic clock, when this rate began
  Nanoseconds passed;           // of the program's time until then
  int64_t rate;                 // its thousandths of a second in a real second
  Nanoseconds monotonic, wall;  // where both clocks began
  int64_t ticks;                // by how many milliseconds SDL's ticks are ahead
};

struct CountPage {
  std::atomic<int64_t> frames, textures, refused;
};

template <class Page>
Page* pageOf(const char* variable) {
  const char* file = std::getenv(variable);
  const int descriptor = file ? open(file, O_RDWR | O_CLOEXEC) : -1;
  if (descriptor < 0) return nullptr;
  void* memory = mmap(nullptr, sizeof(Page), PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0);
  close(descriptor);
  return memory == MAP_FAILED ? nullptr : static_cast<Page*>(memory);
}

const ClockPage* clockPage() {
  static const ClockPage* const page = pageOf<ClockPage>("SOAK_CLOCK");
  return page;
}

CountPage& counts() {
  static CountPage none{};
  static CountPage* const page = pageOf<CountPage>("SOAK_COUNTS");
  return page ? *page : none;
}

template <class Function>
Function* next(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}
// The function of this name that stands behind ours.
#define BEHIND(name)                                         \
  ([] {                                                      \
    static auto* const behind = next<decltype(name)>(#name); \
    return behind;                                           \
  }())

Nanoseconds in(const timespec& time) { return time.tv_sec * kSecond + time.tv_nsec; }
timespec from(Nanoseconds time) { return {time / kSecond, time % kSecond}; }

Nanoseconds real(clockid_t clock) {
  timespec now{};
  BEHIND(clock_gettime)(clock, &now);
  return in(now);
}

struct State {
  Nanoseconds passed, monotonic, wall;
  int64_t rate, ticks;
};

State state() {
  const ClockPage& page = *clockPage();
  for (;;) {
    const uint64_t turn = page.turn.load(std::memory_order_acquire);
    const Nanoseconds since = page.since;
    State now{page.passed, page.monotonic, page.wall, page.rate, page.ticks};
    std::atomic_thread_fence(std::memory_order_acquire);
    if (turn % 2 != 0 || turn != page.turn.load(std::memory_order_relaxed)) continue;
    now.passed += (real(CLOCK_MONOTONIC) - since) / 1000 * now.rate;
    return now;
  }
}

bool isOurs(clockid_t clock) {
  return clockPage() && clock != CLOCK_PROCESS_CPUTIME_ID && clock != CLOCK_THREAD_CPUTIME_ID && clock >= 0;
}

Nanoseconds nowOf(clockid_t clock) {
  const State now = state();
  const bool wall = clock == CLOCK_REALTIME || clock == CLOCK_REALTIME_COARSE || clock == CLOCK_TAI;
  return (wall ? now.wall : now.monotonic) + now.passed;
}

// The real wait until something of the program's time is over, or a slice of it.
Nanoseconds sliceOf(Nanoseconds left) {
  const Nanoseconds wait = left / std::max<int64_t>(state().rate, 1) * 1000;
  return std::clamp(wait, std::min(left, kLeast), kSlice);
}

// Calls wait(real deadline of `clock`) until it ends by itself or the deadline of the program's clock is over.
template <class Wait>
int waitUntil(clockid_t clock, const timespec& deadline, const Wait& wait) {
  for (;;) {
    const Nanoseconds left = in(deadline)-nowOf(clock);
    const timespec moment = from(real(clock) + sliceOf(std::max<Nanoseconds>(left, 0)));
    const int result = wait(moment);
    if (result != ETIMEDOUT || in(deadline) <= nowOf(clock)) return result;
  }
}

int count(int result) {
  if (result != 0) counts().refused.fetch_add(1, std::memory_order_relaxed);
  return result;
}

SDL_Texture* count(SDL_Texture* texture) {
  (texture ? counts().textures : counts().refused).fetch_add(1, std::memory_order_relaxed);
  return texture;
}

}  // namespace

extern "C" {

int clock_gettime(clockid_t clock, timespec* time) noexcept {
  if (!isOurs(clock)) return BEHIND(clock_gettime)(clock, time);
  *time = from(nowOf(clock));
  return 0;
}

int gettimeofday(timeval* time, void* zone) noexcept {
  if (!clockPage()) return BEHIND(gettimeofday)(time, zone);
  const Nanoseconds now = nowOf(CLOCK_REALTIME);
  *time = {now / kSecond, now % kSecond / 1000};
  return 0;
}

time_t time(time_t* time) noexcept {
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  if (time) *time = now.tv_sec;
  return now.tv_sec;
}

int nanosleep(const timespec* length, timespec* left) {
  if (!clockPage()) return BEHIND(nanosleep)(length, left);
  const Nanoseconds end = nowOf(CLOCK_MONOTONIC) + in(*length);
  for (Nanoseconds rest = in(*length); rest > 0; rest = end - nowOf(CLOCK_MONOTONIC)) {
    const timespec slice = from(sliceOf(rest));
    if (BEHIND(nanosleep)(&slice, nullptr) == 0) continue;
    if (left) *left = from(std::max<Nanoseconds>(end - nowOf(CLOCK_MONOTONIC), 0));
    errno = EINTR;
    return -1;
  }
  return 0;
}

int usleep(useconds_t length) {
  const timespec time = from(Nanoseconds{length} * 1000);
  return nanosleep(&time, nullptr);
}

unsigned sleep(unsigned length) {
  const timespec time{length, 0};
  timespec left{};
  return nanosleep(&time, &left) == 0 ? 0 : static_cast<unsigned>(left.tv_sec);
}

int clock_nanosleep(clockid_t clock, int flags, const timespec* time, timespec* left) {
  if (!isOurs(clock)) return BEHIND(clock_nanosleep)(clock, flags, time, left);
  const timespec length = flags & TIMER_ABSTIME ? from(std::max<Nanoseconds>(in(*time) - nowOf(clock), 0)) : *time;
  return nanosleep(&length, left) == 0 ? 0 : errno;
}

// An attribute may give a condition another clock; none of what is loaded here does.
int pthread_cond_timedwait(pthread_cond_t* condition, pthread_mutex_t* mutex, const timespec* deadline) {
  if (!clockPage()) return BEHIND(pthread_cond_timedwait)(condition, mutex, deadline);
  return waitUntil(CLOCK_REALTIME, *deadline, [&](const timespec& moment) {
    return BEHIND(pthread_cond_timedwait)(condition, mutex, &moment);
  });
}

int pthread_cond_clockwait(pthread_cond_t* condition, pthread_mutex_t* mutex, clockid_t clock,
                           const timespec* deadline) {
  if (!clockPage()) return BEHIND(pthread_cond_clockwait)(condition, mutex, clock, deadline);
  return waitUntil(clock, *deadline, [&](const timespec& moment) {
    return BEHIND(pthread_cond_clockwait)(condition, mutex, clock, &moment);
  });
}

int sem_timedwait(sem_t* semaphore, const timespec* deadline) {
  if (!clockPage()) return BEHIND(sem_timedwait)(semaphore, deadline);
  const int result = waitUntil(CLOCK_REALTIME, *deadline, [&](const timespec& moment) {
    return BEHIND(sem_timedwait)(semaphore, &moment) == 0 ? 0 : errno;
  });
  errno = result;
  return result == 0 ? 0 : -1;
}

Uint64 SDL_GetTicks64(void) {
  const Uint64 ticks = BEHIND(SDL_GetTicks64)();
  return clockPage() ? ticks + static_cast<Uint64>(state().ticks) : ticks;
}

Uint32 SDL_GetTicks(void) { return static_cast<Uint32>(SDL_GetTicks64()); }

void SDL_RenderPresent(SDL_Renderer* renderer) {
  counts().frames.fetch_add(1, std::memory_order_relaxed);
  BEHIND(SDL_RenderPresent)(renderer);
}

SDL_Texture* SDL_CreateTexture(SDL_Renderer* renderer, Uint32 format, int access, int width, int height) {
  return count(BEHIND(SDL_CreateTexture)(renderer, format, access, width, height));
}

SDL_Texture* SDL_CreateTextureFromSurface(SDL_Renderer* renderer, SDL_Surface* surface) {
  return count(BEHIND(SDL_CreateTextureFromSurface)(renderer, surface));
}

void SDL_DestroyTexture(SDL_Texture* texture) {
  if (texture) counts().textures.fetch_sub(1, std::memory_order_relaxed);
  BEHIND(SDL_DestroyTexture)(texture);
}

int SDL_RenderClear(SDL_Renderer* renderer) { return count(BEHIND(SDL_RenderClear)(renderer)); }

int SDL_RenderCopy(SDL_Renderer* renderer, SDL_Texture* texture, const SDL_Rect* from, const SDL_Rect* to) {
  return count(BEHIND(SDL_RenderCopy)(renderer, texture, from, to));
}

int SDL_RenderCopyEx(SDL_Renderer* renderer, SDL_Texture* texture, const SDL_Rect* from, const SDL_Rect* to,
                     double angle, const SDL_Point* centre, SDL_RendererFlip flip) {
  return count(BEHIND(SDL_RenderCopyEx)(renderer, texture, from, to, angle, centre, flip));
}

int SDL_RenderFillRect(SDL_Renderer* renderer, const SDL_Rect* place) {
  return count(BEHIND(SDL_RenderFillRect)(renderer, place));
}

int SDL_SetRenderTarget(SDL_Renderer* renderer, SDL_Texture* texture) {
  return count(BEHIND(SDL_SetRenderTarget)(renderer, texture));
}

}  // extern "C"
