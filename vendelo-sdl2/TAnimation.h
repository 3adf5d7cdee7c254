#pragma once

namespace vendelo_sdl2 {

enum EAnimationType : int {
  AT_LINEAR = 0,
  AT_SINE = 1,
  AT_COS = 2,
  AT_SINE_2 = 3,
  AT_COS_2 = 4,
  AT_COS_FULL = 5,
  AT_QUAD = 6,
  AT_SQRT = 7,
  AT_EXP5 = 8,
  AT_EXP5_NEG = 9,
  AT_CUSTOM = 10
};

enum ELimits : int { LIMIT_NONE = 0, LIMIT_CLAMP = 1, LIMIT_LOOP = 2 };

enum EAnimationState : int { ASTATE_READY = 0, ASTATE_RUNNING = 1, ASTATE_PAUSED = 2, ASTATE_COMPLETED = 3 };

// A number that changes over time from one value to another along a chosen curve. Nothing happens by itself: the
// owner asks for value() and state() when it wants to know.
// Thread: that of the owner; no locks. Times are milliseconds of SDL_GetTicks(); each form without a time reads
// that clock. A tracked animation is not owned and must outlive the one that follows it; a ring of animations that
// track each other is not allowed.
// Bad input: a duration of 0 given to a value constructor throws a const char*; setDuration(0) is accepted.
class TAnimation {
 public:
  using AnimationFunction = float (*)(const TAnimation&, float t);

  TAnimation();
  TAnimation(float from, float to, long duration, EAnimationType type);
  // These take the start, the end or both from another animation's value of now.
  TAnimation(const TAnimation& from, float to, long duration, EAnimationType type);
  TAnimation(float from, const TAnimation& to, long duration, EAnimationType type);
  TAnimation(const TAnimation& from, const TAnimation& to, long duration, EAnimationType type);

  // The value of a curve at t, without an animation.
  static float interpolate(EAnimationType type, float from, float to, float t, ELimits negLimit, ELimits posLimit);

  // While another animation's clock is followed, start() only turns to running; start(t) stores t in any case.
  // A start time in the past is legal.
  void start();
  void start(long timestamp);
  void pause();
  void pause(long timestamp);
  void resume();
  void resume(long timestamp);
  void reset();
  void stop();

  void setLimits(ELimits negLimit, ELimits posLimit);
  void setAnimationType(EAnimationType type);
  void setDuration(long duration);
  void setReverse(bool reverse);
  void setDelay(long delay);
  void setCustomFunction(AnimationFunction function);

  float from() const { return mFrom; }
  float to() const { return mTo; }
  long duration() const { return mDuration; }
  bool reverse() const { return mReverse; }
  long delay() const { return mDelay; }

  float value() const;
  float value(long timestamp) const;
  int intValue() const;
  int intValue(long timestamp) const;
  // The curve at t, after the limits.
  float valueAt(float t) const;

  // Completion is a reading: the stored state stays running until reset() or stop(), and with an upper limit other
  // than clamp it is never reported. At exactly fullDuration() the animation is still running.
  EAnimationState state() const;
  EAnimationState state(long timestamp) const;

  long elapsedMs() const;
  long elapsedMs(long timestamp) const;
  // The elapsed time inside the current interval (delay and run).
  long intervalElapsedMs() const;
  long intervalElapsedMs(long timestamp) const;
  long fullDuration() const { return mDuration + mDelay; }

  // Follows another animation's clock from now on; null goes back to the own one.
  void trackOtherAnimationTime(const TAnimation* animation);

  // For an owner that asks in each frame: when the tick clock has come round to 0 since the start, the start moves
  // in front of 0, so that the run goes on. Without it the run would stand at its beginning for the next 49.7 days.
  void goOnAfterWrap(long timestamp);

  // Changes the end points. With rescaleToTime of 1 or more the start time is moved so that the run goes on from
  // the value of that time; below 1 the animation is reset. A duration of 0 keeps the old one.
  void updateAnimationPoints(float from, float to, long duration, long rescaleToTime);

  long beginTimestampMs() const;
  long endTimestampMs() const;
  long delayTimestampMs() const;
  long intervalBeginTimestampMs(long timestamp) const;
  long intervalEndTimestampMs(long timestamp) const;
  long intervalDelayTimestampMs(long timestamp) const;

 private:
  ELimits mLimits[2] = {LIMIT_CLAMP, LIMIT_CLAMP};  // below t = 0, above t = 1
  float mFrom = 0.0f;
  float mTo = 1.0f;
  long mBeginTs = 0;  // while tracking: an offset from the tracked animation's clock
  long mDuration = 1000;
  long mDelay = 0;
  long mPausedTs = 0;
  bool mReverse = false;
  AnimationFunction mTypeFunction;
  EAnimationType mAnimationType = AT_LINEAR;
  EAnimationState mState = ASTATE_READY;
  const TAnimation* mTracking = nullptr;
};

// The t at which a curve from `from` to `to` has the value. Not the exact inverse for AT_EXP5. No check: equal end
// points and values outside the curve give what the floating point arithmetic gives.
float inversolate(EAnimationType type, float from, float to, float value);

}  // namespace vendelo_sdl2
