#include "vendelo-sdl2/TAnimation.h"

#include <SDL.h>
#include <algorithm>
#include <cassert>
#include <cmath>

namespace vendelo_sdl2 {
namespace {

constexpr double kPi = 3.141592653589793;

// The curves: double precision from the float t.
float linear(const TAnimation&, float t) { return t; }
float sine(const TAnimation&, float t) { return static_cast<float>((std::sin(t * kPi) + 1) / 2); }
float cosine(const TAnimation&, float t) { return static_cast<float>((std::cos(t * kPi) + 1) / 2); }
float sine2(const TAnimation&, float t) { return static_cast<float>(std::sin(t * kPi / 2)); }
float cosine2(const TAnimation&, float t) { return static_cast<float>(std::cos(t * kPi / 2)); }
float cosineFull(const TAnimation&, float t) { return static_cast<float>((std::cos(t * kPi * 2) + 1) / 2); }
float quad(const TAnimation&, float t) { return static_cast<float>(static_cast<double>(t) * t); }
float squareRoot(const TAnimation&, float t) { return static_cast<float>(std::sqrt(static_cast<double>(t))); }

// By design exp(-1) is taken off and not exp(-5): the curve runs from -0.3636 to 0.6364.
float exp5(const TAnimation&, float t) {
  const float exponent = 5.0f * (t - 1.0f);
  return static_cast<float>((std::exp(static_cast<double>(exponent)) - std::exp(-1.0)) / (1.0 - std::exp(-5.0)));
}

float exp5Neg(const TAnimation&, float t) {
  const double e = std::exp(-5.0);
  const float exponent = -5.0f * (1.0f + t);
  return static_cast<float>((std::exp(static_cast<double>(exponent)) - e * e) / (e * (1.0 - e)));
}

// By EAnimationType, AT_CUSTOM excepted.
constexpr TAnimation::AnimationFunction kCurves[] = {linear,     sine, cosine,     sine2, cosine2,
                                                     cosineFull, quad, squareRoot, exp5,  exp5Neg};

}  // namespace

TAnimation::TAnimation() : mTypeFunction(linear) {}

TAnimation::TAnimation(float from, float to, long duration, EAnimationType type)
  : mFrom(from), mTo(to), mDuration(duration), mTypeFunction(linear), mAnimationType(type) {
  if (duration == 0) throw "TAnimation ERROR: Duration cannot be zero!";
}

TAnimation::TAnimation(const TAnimation& from, float to, long duration, EAnimationType type)
  : TAnimation(from.value(), to, duration, type) {}

TAnimation::TAnimation(float from, const TAnimation& to, long duration, EAnimationType type)
  : TAnimation(from, to.value(), duration, type) {}

TAnimation::TAnimation(const TAnimation& from, const TAnimation& to, long duration, EAnimationType type)
  : TAnimation(from.value(), to.value(), duration, type) {}

float TAnimation::interpolate(EAnimationType type, float from, float to, float t, ELimits negLimit,
                              ELimits posLimit) {
  TAnimation animation(from, to, 1, type);
  animation.setLimits(negLimit, posLimit);
  return animation.valueAt(t);
}

void TAnimation::start() {
  if (mTracking)
    mState = ASTATE_RUNNING;
  else
    start(SDL_GetTicks());
}

void TAnimation::start(long timestamp) {
  mBeginTs = timestamp;
  mState = ASTATE_RUNNING;
}

void TAnimation::pause() { pause(SDL_GetTicks()); }

void TAnimation::pause(long timestamp) {
  if (state() != ASTATE_RUNNING) return;
  mPausedTs = timestamp;
  mState = ASTATE_PAUSED;
}

void TAnimation::resume() { resume(SDL_GetTicks()); }

void TAnimation::resume(long timestamp) {
  if (state() != ASTATE_PAUSED) return;
  mBeginTs += timestamp - mPausedTs;
  mPausedTs = 0;
  mState = ASTATE_RUNNING;
}

void TAnimation::reset() { mState = ASTATE_READY; }
void TAnimation::stop() { mState = ASTATE_COMPLETED; }

void TAnimation::setLimits(ELimits negLimit, ELimits posLimit) {
  mLimits[0] = negLimit;
  mLimits[1] = posLimit;
}

void TAnimation::setAnimationType(EAnimationType type) { mAnimationType = type; }
void TAnimation::setDuration(long duration) { mDuration = duration; }
void TAnimation::setReverse(bool reverse) { mReverse = reverse; }
void TAnimation::setDelay(long delay) { mDelay = delay; }
void TAnimation::setCustomFunction(AnimationFunction function) { mTypeFunction = function; }

float TAnimation::value() const { return value(SDL_GetTicks()); }

float TAnimation::value(long timestamp) const {
  long elapsed = 0;
  if (mState == ASTATE_RUNNING)
    elapsed = elapsedMs(timestamp);
  else if (mState == ASTATE_PAUSED)
    elapsed = elapsedMs(mPausedTs);
  else if (mState == ASTATE_COMPLETED)
    elapsed = fullDuration();

  // The delay of every interval begun so far does not count; inside a delay the curve stands at its beginning.
  long inCurve = 0;
  if (fullDuration() == 0)
    inCurve = mDuration;
  else if (elapsed <= 0 || intervalElapsedMs(timestamp) >= mDelay)
    inCurve = elapsed - mDelay * (elapsed / fullDuration() + 1);

  float t = mDuration == 0 ? 1.0f : static_cast<float>(inCurve) / static_cast<float>(mDuration);
  if (mReverse) t = 1.0f - t;
  return valueAt(t);
}

int TAnimation::intValue() const { return intValue(SDL_GetTicks()); }
int TAnimation::intValue(long timestamp) const { return static_cast<int>(roundf(value(timestamp))); }

float TAnimation::valueAt(float t) const {
  // A remainder below 0 stays below 0, and a loop turns 1 into 0.
  if (mLimits[0] == LIMIT_CLAMP)
    t = std::max(0.0f, t);
  else if (mLimits[0] == LIMIT_LOOP && t < 0.0f)
    t = std::fmod(t, 1.0f);
  if (mLimits[1] == LIMIT_CLAMP)
    t = std::min(1.0f, t);
  else if (mLimits[1] == LIMIT_LOOP && t > 0.0f)
    t = std::fmod(t, 1.0f);

  AnimationFunction curve = linear;
  if (mAnimationType == AT_CUSTOM)
    curve = mTypeFunction;
  else if (mAnimationType >= AT_LINEAR && mAnimationType <= AT_EXP5_NEG)
    curve = kCurves[mAnimationType];
  return mFrom + (mTo - mFrom) * curve(*this, t);
}

EAnimationState TAnimation::state() const { return state(SDL_GetTicks()); }

EAnimationState TAnimation::state(long timestamp) const {
  if (mState == ASTATE_RUNNING && mLimits[1] == LIMIT_CLAMP && elapsedMs(timestamp) > fullDuration())
    return ASTATE_COMPLETED;
  return mState;
}

long TAnimation::elapsedMs() const { return elapsedMs(SDL_GetTicks()); }

long TAnimation::elapsedMs(long timestamp) const {
  if (mState == ASTATE_READY) return 0;
  if (mTracking) return mTracking->elapsedMs(timestamp - mBeginTs);
  return timestamp - beginTimestampMs();
}

long TAnimation::intervalElapsedMs() const { return intervalElapsedMs(SDL_GetTicks()); }

long TAnimation::intervalElapsedMs(long timestamp) const {
  const long full = fullDuration();
  return full == 0 ? elapsedMs(timestamp) : elapsedMs(timestamp) % full;
}

void TAnimation::trackOtherAnimationTime(const TAnimation* animation) {
  for (const TAnimation* other = animation; other; other = other->mTracking) assert(other != this);
  mTracking = animation;
  mBeginTs = 0;
}

void TAnimation::goOnAfterWrap(long timestamp) {
  constexpr long round = 1L << 32;
  if (mState == ASTATE_RUNNING && !mTracking && mBeginTs - timestamp > round / 2) mBeginTs -= round;
}

void TAnimation::updateAnimationPoints(float from, float to, long duration, long rescaleToTime) {
  if (rescaleToTime >= 1) {
    const float requiredT = inversolate(mAnimationType, from, to, value(rescaleToTime));
    // The factor is (1 - requiredT) by design. Out of the curve's range it is no number, and the start stays.
    const float shift = roundf(static_cast<float>(duration) * (1.0f - requiredT));
    const bool usable = std::isfinite(shift) && std::fabs(shift) < 9e18f;
    mBeginTs = rescaleToTime - (usable ? static_cast<long>(shift) : 0);
    if (mTracking) mBeginTs = mTracking->beginTimestampMs() - mBeginTs;
  } else {
    reset();
  }
  mFrom = from;
  mTo = to;
  if (duration != 0) mDuration = duration;
}

long TAnimation::beginTimestampMs() const { return mTracking ? mTracking->beginTimestampMs() : mBeginTs; }
long TAnimation::endTimestampMs() const { return beginTimestampMs() + fullDuration(); }
long TAnimation::delayTimestampMs() const { return beginTimestampMs() + mDelay; }
long TAnimation::intervalBeginTimestampMs(long timestamp) const { return timestamp - intervalElapsedMs(timestamp); }
long TAnimation::intervalEndTimestampMs(long timestamp) const {
  return intervalBeginTimestampMs(timestamp) + fullDuration();
}
long TAnimation::intervalDelayTimestampMs(long timestamp) const {
  return intervalBeginTimestampMs(timestamp) + mDelay;
}

float inversolate(EAnimationType type, float from, float to, float value) {
  const double v = (value - from) / (to - from);
  const double e = std::exp(-5.0);
  switch (type) {
    case AT_SINE:
      return static_cast<float>(std::asin(2 * v - 1) / kPi);
    case AT_COS:
      return static_cast<float>(std::acos(2 * v - 1) / kPi);
    case AT_SINE_2:
      return static_cast<float>(std::asin(v) * 2 / kPi);
    case AT_COS_2:
      return static_cast<float>(std::acos(v) * 2 / kPi);
    case AT_COS_FULL:
      return static_cast<float>(std::acos(2 * v - 1) * 0.5 / kPi);
    case AT_QUAD:
      return static_cast<float>(std::sqrt(v));
    case AT_SQRT:
      return static_cast<float>(v * v);
    case AT_EXP5:  // 4 by design, although the curve has 5
      return static_cast<float>(std::log(v * (std::exp(4.0) - 1) + 1) / 4);
    case AT_EXP5_NEG:
      return static_cast<float>(-(std::log(v * e * (1 - e) + e * e) / 5 + 1));
    default:
      return static_cast<float>(v);
  }
}

}  // namespace vendelo_sdl2
