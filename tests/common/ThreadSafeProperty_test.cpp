#include "common/ThreadSafeProperty.h"

#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "common/Logger.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/TestApplication.h"

namespace {

// Counts instead of locking.
class CountingLock : public ILockable {
 public:
  void Lock() const override {
    ++locks;
    ILockable::Lock();
  }
  void Unlock() const override {
    ++unlocks;
    ILockable::Unlock();
  }
  mutable int locks = 0, unlocks = 0;
};

// Writes down who was locked and unlocked, in the order of the calls.
class NamedLock : public ILockable {
 public:
  NamedLock(std::string& record, const char* name) : mRecord(record), mName(name) {}
  void Lock() const override {
    mRecord += std::string("+") + mName;
    ILockable::Lock();
  }
  void Unlock() const override {
    mRecord += std::string("-") + mName;
    ILockable::Unlock();
  }

 private:
  std::string& mRecord;
  const char* const mName;
};

void inThread(const std::function<void()>& work) { std::thread(work).join(); }

bool isHeld(const Lockable<std::recursive_mutex>& lock) {
  bool held = false;
  inThread([&] {
    held = !lock.native().try_lock();
    if (!held) lock.native().unlock();
  });
  return held;
}

const std::string destroyedLocked = "Warning|Mutex destroyed while locked!";

TEST(Lockable, RecordsTheOwnerOnlyForTheThreadThatLocked) {
  Lockable<std::mutex> lock;
  EXPECT_FALSE(lock.IsLocked());
  lock.Lock();
  EXPECT_TRUE(lock.IsLocked());
  inThread([&] { EXPECT_FALSE(lock.IsLocked()); });
  lock.Unlock();
  EXPECT_FALSE(lock.IsLocked());
  EXPECT_TRUE(lock.native().try_lock());
  lock.native().unlock();
}

TEST(Lockable, RootLocksNothingAndOnlyRecords) {
  ILockable root;
  root.Lock();
  inThread([&] { root.Lock(); });  // would hang on a mutex
  EXPECT_FALSE(root.IsLocked());   // the other thread's record stands now
  root.Unlock();
}

TEST(Lockable, CheckedFormsActOnceAndSaySo) {
  CountingLock lock;
  EXPECT_FALSE(lock.UnlockChecked());
  EXPECT_EQ(lock.unlocks, 0);
  EXPECT_TRUE(lock.LockChecked());
  EXPECT_FALSE(lock.LockChecked());
  EXPECT_EQ(lock.locks, 1);
  inThread([&] { EXPECT_FALSE(lock.UnlockChecked()); });
  EXPECT_EQ(lock.unlocks, 0);
  EXPECT_TRUE(lock.UnlockChecked());
  EXPECT_EQ(lock.unlocks, 1);
}

TEST(Lockable, InnerUnlockClearsTheRecordWhileTheMutexIsStillHeld) {
  NoticeCapture notices;
  {
    Lockable<std::recursive_mutex> lock;
    lock.Lock();
    lock.Lock();
    lock.Unlock();
    EXPECT_FALSE(lock.IsLocked());
    EXPECT_TRUE(isHeld(lock));
    EXPECT_FALSE(lock.UnlockChecked());
    EXPECT_TRUE(isHeld(lock));
    InverseScopedLock inverse(lock);
    EXPECT_TRUE(inverse.Expired());
    EXPECT_TRUE(isHeld(lock));
    lock.native().unlock();
  }
  EXPECT_TRUE(notices.trace.lines().empty());
}

TEST(Lockable, WarnsWhenItIsDestroyedWithItsRecordSet) {
  NoticeCapture notices;
  { Lockable<std::mutex> lock; }
  EXPECT_FALSE(notices.trace.contains(destroyedLocked));
  {
    ILockable lock;
    lock.Lock();
  }
  EXPECT_EQ(notices.trace.count(destroyedLocked), 1);
}

TEST(Lockable, TheWarningIsOneOfTheApplicationsOwn) {
  std::vector<const logs::LogCategory*> categories;
  logs::Logger::Output = [&](const logs::LogEntry& entry) { categories.push_back(&entry.Category); };
  {
    Lockable<std::recursive_mutex> lock;
    lock.Lock();
    lock.native().unlock();
  }
  logs::Logger::Output = nullptr;
  EXPECT_EQ(categories, std::vector<const logs::LogCategory*>{&LogApp});
}

// The caller of the destructor is not to hear of a log that fails.
TEST(Lockable, ALogThatThrowsDoesNotLeaveTheDestructor) {
  logs::Logger::Output = [](const logs::LogEntry&) { throw 1; };
  {
    ILockable lock;
    lock.Lock();
  }
  logs::Logger::Output = nullptr;
}

TEST(Lockable, OwnerIsOnRecordOnlyWhileTheMutexIsHeld) {
  struct Mutex {
    const ILockable* owner = nullptr;
    bool recordedAtLock = true, recordedAtUnlock = true;
    void lock() { recordedAtLock = owner->IsLocked(); }
    void unlock() { recordedAtUnlock = owner->IsLocked(); }
  };
  Lockable<Mutex> lock;
  lock.native().owner = &lock;
  lock.Lock();
  EXPECT_FALSE(lock.native().recordedAtLock);
  EXPECT_TRUE(lock.IsLocked());
  lock.Unlock();
  EXPECT_FALSE(lock.native().recordedAtUnlock);
}

TEST(ScopedLock, EmptyGuardsHoldAndCallNothing) {
  ScopedLock none;
  EXPECT_TRUE(none.Expired());
  const ILockable* null = nullptr;
  ScopedLock ofNull(null);
  EXPECT_TRUE(ofNull.Expired());
  ofNull.Release();
  ScopedLock copy(ofNull);
  EXPECT_TRUE(copy.Expired());
}

TEST(ScopedLock, HoldsForItsScopeAndReleasesOnce) {
  CountingLock lock;
  {
    ScopedLock byPointer(&lock);
    EXPECT_FALSE(byPointer.Expired());
    EXPECT_EQ(lock.locks, 1);
    byPointer.Release();
    EXPECT_TRUE(byPointer.Expired());
    byPointer.Release();
    EXPECT_EQ(lock.unlocks, 1);
  }
  EXPECT_EQ(lock.unlocks, 1);
  { ScopedLock byReference(lock); }
  EXPECT_EQ(lock.locks, 2);
  EXPECT_EQ(lock.unlocks, 2);
}

TEST(ScopedLock, CopiesTakeALevelEach) {
  CountingLock lock;
  {
    ScopedLock first(lock);
    ScopedLock second(first);
    EXPECT_EQ(lock.locks, 2);
    EXPECT_EQ(lock.unlocks, 0);
  }
  EXPECT_EQ(lock.unlocks, 2);
}

TEST(ScopedLock, AssignmentUnlocksTheOldAndLocksTheNew) {
  CountingLock first, second;
  ScopedLock guard(first), other(second);
  guard = other;
  EXPECT_EQ(first.unlocks, 1);
  EXPECT_EQ(second.locks, 2);
  guard = ScopedLock();
  EXPECT_TRUE(guard.Expired());
  EXPECT_EQ(second.unlocks, 1);
}

TEST(ScopedLock, SelfAssignmentUnlocksAndLocksOnceAndKeepsHolding) {
  CountingLock lock;
  ScopedLock guard(lock);
  ScopedLock& same = guard;
  guard = same;
  EXPECT_EQ(lock.locks, 2);
  EXPECT_EQ(lock.unlocks, 1);
  EXPECT_FALSE(guard.Expired());
}

TEST(ScopedLock, AssignmentLetsGoBeforeItTakes) {
  std::string record;
  NamedLock a(record, "a"), b(record, "b");
  {
    ScopedLock guard(a), other(b);
    record.clear();
    guard = other;
    EXPECT_EQ(record, "-a+b");
    ScopedLock& same = guard;
    record.clear();
    guard = same;
    EXPECT_EQ(record, "-b+b");
  }
  EXPECT_EQ(record, "-b+b-b-b");
}

// Suites of this ending run first, while the process has one thread.
TEST(ScopedLockDeathTest, AnExceptionAtTheEndOfAGuardEndsTheProcess) {
  struct Throwing : ILockable {
    void Lock() const override {
      if (IsLocked() || mArmed) throw 1;
      ILockable::Lock();
    }
    void Unlock() const override {
      ILockable::Unlock();
      if (mThrowAtUnlock) throw 1;
      mArmed = true;
    }
    bool mThrowAtUnlock = false;
    mutable bool mArmed = false;
  };
  ChildProcess unlocking([] {
    Throwing lock;
    lock.mThrowAtUnlock = true;
    try {
      ScopedLock guard(lock);
    } catch (...) {
    }
  });
  ChildProcess locking([] {
    Throwing lock;
    lock.Lock();
    try {
      InverseScopedLock guard(lock);
    } catch (...) {
    }
  });
  EXPECT_EQ(unlocking.end(), "signal 6");
  EXPECT_EQ(locking.end(), "signal 6");
}

TEST(ScopedLock, ConcurrentReleasesUnlockOnce) {
  struct AtomicCount : ILockable {
    void Unlock() const override { ++unlocks; }
    mutable std::atomic<int> unlocks{0};
  };
  for (int round = 0; round < 200; ++round) {
    AtomicCount lock;
    ScopedLock guard(lock);
    std::atomic<int> ready{0};
    const auto release = [&] {
      ++ready;
      while (ready < 2) std::this_thread::yield();
      guard.Release();
    };
    std::thread first(release), second(release);
    first.join();
    second.join();
    EXPECT_EQ(lock.unlocks, 1);
    lock.ILockable::Unlock();
  }
}

TEST(InverseScopedLock, LetsGoForItsScope) {
  Lockable<std::recursive_mutex> lock;
  ScopedLock held(lock);
  {
    InverseScopedLock inverse(lock);
    EXPECT_FALSE(inverse.Expired());
    EXPECT_FALSE(isHeld(lock));
    inverse.Release();
    EXPECT_TRUE(inverse.Expired());
    EXPECT_TRUE(isHeld(lock));
    inverse.Release();
  }
  EXPECT_TRUE(isHeld(lock));
  EXPECT_TRUE(lock.IsLocked());
  { InverseScopedLock byPointer(static_cast<const ILockable*>(&lock)); }
  EXPECT_TRUE(isHeld(lock));
}

TEST(InverseScopedLock, LeavesAForeignLockAndNullAlone) {
  CountingLock lock;
  inThread([&] { lock.Lock(); });
  {
    InverseScopedLock inverse(lock);
    EXPECT_TRUE(inverse.Expired());
  }
  EXPECT_EQ(lock.unlocks, 0);
  EXPECT_EQ(lock.locks, 1);
  const ILockable* null = nullptr;
  EXPECT_TRUE(InverseScopedLock(null).Expired());
  EXPECT_TRUE(InverseScopedLock().Expired());
  lock.Unlock();
}

TEST(InverseScopedLock, ReleaseDoesNotLockAgainWhatTheThreadTookMeanwhile) {
  CountingLock lock;
  lock.Lock();
  {
    InverseScopedLock inverse(lock);
    lock.Lock();
  }
  EXPECT_EQ(lock.locks, 2);
  lock.Unlock();
}

TEST(InverseScopedLock, AssignmentTakesBackTheOldAndFreesTheNewIfItCan) {
  CountingLock first, second;
  first.Lock();
  second.Lock();
  InverseScopedLock guard(first), other(second);
  EXPECT_EQ(second.unlocks, 1);
  guard = other;  // second is free already: nothing to let go of
  EXPECT_EQ(first.locks, 2);
  EXPECT_TRUE(guard.Expired());
  second.Lock();
  InverseScopedLock copy(other);
  EXPECT_FALSE(copy.Expired());
  EXPECT_EQ(second.unlocks, 2);
  copy.Release();
  other.Release();  // second is locked again by the copy already
  EXPECT_EQ(second.locks, 3);
  first.Unlock();
  second.Unlock();
}

TEST(InverseScopedLock, AssignmentTakesBackBeforeItLetsGo) {
  std::string record;
  NamedLock a(record, "a"), b(record, "b");
  a.Lock();
  b.Lock();
  InverseScopedLock guard(a), other(b);
  b.Lock();  // so that there is something to let go of
  record.clear();
  guard = other;
  EXPECT_EQ(record, "+a-b");
  EXPECT_FALSE(guard.Expired());
  EXPECT_FALSE(other.Expired());
  guard = InverseScopedLock();
  EXPECT_EQ(record, "+a-b+b");
  EXPECT_TRUE(guard.Expired());
  other.Release();  // taken back by the other one already
  EXPECT_EQ(record, "+a-b+b");
  a.Unlock();
  b.Unlock();
}

TEST(ThreadSafeProperty, StartsDefinedAndCopies) {
  ThreadSafeProperty<unsigned> zero;
  EXPECT_EQ(zero.getCopy(), 0u);
  ThreadSafeProperty<std::string> text(std::string("one"));
  ThreadSafeProperty<std::string> copy(text);
  text = std::string("two");
  EXPECT_EQ(copy.getCopy(), "one");
  copy = text;
  EXPECT_EQ(std::string(copy), "two");
  std::string target;
  copy.copyInto(target);
  EXPECT_EQ(target, "two");
  target.clear();
  text.copyInto(std::addressof(target));
  EXPECT_EQ(target, "two");
}

TEST(ThreadSafeProperty, AssignmentReturnsTheProperty) {
  ThreadSafeProperty<int> value, other(5);
  EXPECT_EQ(std::addressof(value = 3), std::addressof(value));
  EXPECT_EQ(std::addressof(value = other), std::addressof(value));
  EXPECT_EQ(value.getCopy(), 5);
}

TEST(ThreadSafeProperty, EveryOperationLocksOnceAndTheAccessOperatorsDoNot) {
  struct Mutex {
    int locks = 0, held = 0;
    void lock() { ++locks, ++held; }
    void unlock() { --held; }
  };
  using Property = ThreadSafeProperty<std::string, Mutex>;
  Property value, other(std::string("x"));
  std::string target;
  const struct {
    const char* name;
    std::function<void()> act;
    int locks, otherLocks;
  } rows[] = {
    {"assign a value", [&] { value = std::string("a"); }, 1, 0},
    {"assign a property", [&] { value = other; }, 1, 1},
    {"copy construct", [&] { Property made(value); }, 1, 0},
    {"getCopy", [&] { value.getCopy(); }, 1, 0},
    {"convert", [&] { target = static_cast<std::string>(value); }, 1, 0},
    {"copyInto reference", [&] { value.copyInto(target); }, 1, 0},
    {"copyInto pointer", [&] { value.copyInto(std::addressof(target)); }, 1, 0},
    {"arrow", [&] { value->append("b"); }, 0, 0},
    {"ampersand", [&] { (&value).append("c"); }, 0, 0},
    {"const arrow", [&] { EXPECT_FALSE(std::as_const(value)->empty()); }, 0, 0},
    {"const ampersand", [&] { EXPECT_FALSE((&std::as_const(value)).empty()); }, 0, 0},
  };
  for (const auto& row : rows) {
    value.native().locks = other.native().locks = 0;
    row.act();
    EXPECT_EQ(value.native().locks, row.locks) << row.name;
    EXPECT_EQ(other.native().locks, row.otherLocks) << row.name;
    EXPECT_EQ(value.native().held, 0) << row.name;
    EXPECT_EQ(other.native().held, 0) << row.name;
  }
}

TEST(ThreadSafeProperty, CopyingNeverHoldsBothLocks) {
  ThreadSafeProperty<int> a(1), b(2);
  std::thread there([&] {
    for (int i = 0; i < 2000; ++i) a = b;
  });
  for (int i = 0; i < 2000; ++i) b = a;  // two locks at once would deadlock sooner or later
  there.join();
  EXPECT_EQ(a.getCopy(), b.getCopy());
}

TEST(ThreadSafeProperty, KeepsConcurrentChangesUnderAScopedLock) {
  ThreadSafeProperty<std::vector<int>> values;
  const auto append = [&] {
    for (int i = 0; i < 1000; ++i) {
      ScopedLock lock(values);
      values->push_back(i);
    }
  };
  std::thread there(append);
  append();
  there.join();
  EXPECT_EQ(values.getCopy().size(), 2000u);
}

// Both halves of a pair are always equal for whoever holds the lock or has a copy.
TEST(ThreadSafeProperty, KeepsItsInvariantUnderEveryKindOfAccess) {
  struct Pair {
    int first = 0, second = 0;
  };
  ThreadSafeProperty<Pair> one, other;
  std::atomic<int> torn{0}, added{0};
  const auto look = [&](const Pair& pair) { torn += pair.first != pair.second; };
  const auto work = [&](int seed) {
    for (int i = 0; i < 500; ++i) {
      ThreadSafeProperty<Pair>& mine = (i + seed) % 2 ? one : other;
      switch ((i + seed) % 5) {
        case 0:
          look(mine.getCopy());
          break;
        case 1:
          look(ThreadSafeProperty<Pair>(mine).getCopy());
          break;
        case 2:
          mine = Pair{i, i};
          break;
        case 3:
          (i % 2 ? one : other) = (i % 2 ? other : one);
          break;
        case 4: {
          ScopedLock lock(mine);
          ScopedLock second(lock);
          second.Release();
          lock = ScopedLock(mine);
          mine->first += 7;
          mine->second += 7;
          look(&mine);
          InverseScopedLock letGo(mine);
          letGo.Release();
          look(&mine);
          ++added;
          break;
        }
      }
    }
  };
  std::vector<std::thread> threads;
  for (int seed = 0; seed < 4; ++seed) threads.emplace_back(work, seed);
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(torn, 0);
  EXPECT_EQ(added, 4 * 100);
  look(one.getCopy());
  look(other.getCopy());
  EXPECT_EQ(torn, 0);
}

}  // namespace
