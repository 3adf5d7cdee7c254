#pragma once

#include <atomic>
#include <mutex>
#include <thread>

// A lock that remembers which thread took it last.
//
// The record is one slot, not a count, and stays so: after lock, lock, unlock on a recursive mutex the mutex is
// still held while IsLocked() is already false. The class by itself locks nothing; Lockable adds the mutex.
// Any thread may call everything here. Destruction while the record is set logs a warning and goes on.
class ILockable {
 public:
  ILockable() = default;
  ILockable(const ILockable&) = delete;
  ILockable& operator=(const ILockable&) = delete;
  virtual ~ILockable();

  // Records the calling thread as the owner.
  virtual void Lock() const;
  // Clears the record.
  virtual void Unlock() const;

  // Locks unless IsLocked(); true when it did lock.
  bool LockChecked() const;
  // Unlocks if IsLocked(); true when it did unlock.
  bool UnlockChecked() const;
  // Whether the calling thread took the lock last. Says nothing about the mutex being held.
  bool IsLocked() const;

 protected:
  mutable std::atomic<std::thread::id> mLockedBy{std::thread::id()};
};

// An ILockable with a mutex. The owner is on record only while the mutex is held.
template <class Mutex>
class Lockable : public ILockable {
 public:
  void Lock() const override {
    mMutex.lock();
    ILockable::Lock();
  }

  void Unlock() const override {
    ILockable::Unlock();
    mMutex.unlock();
  }

  // The mutex itself, to wait on with a condition variable.
  Mutex& native() const { return mMutex; }

 protected:
  mutable Mutex mMutex;
};

// Holds one level of a lock for a scope. Copies each take a level of their own, so two copies on one interface
// need a recursive mutex. Release() may be called by several threads at once; exactly one of them unlocks.
// The interface must outlive the guard. An exception out of the destructor ends the process.
class ScopedLock {
 public:
  ScopedLock() = default;
  // Locks `lockable`; null leaves the guard empty.
  ScopedLock(const ILockable* lockable);
  ScopedLock(const ILockable& lockable);
  ScopedLock(const ScopedLock& other);
  // Unlocks what this guard held, then locks what the other one holds; self-assignment does both.
  ScopedLock& operator=(const ScopedLock& other);
  ~ScopedLock();

  // Unlocks what is held; a second call does nothing.
  void Release();
  // Whether the guard holds nothing.
  bool Expired() const;

 private:
  std::atomic<const ILockable*> mLockedInterface{nullptr};
};

// Lets go of a lock for a scope and takes it again at its end. A lock that the calling thread did not take (or
// whose record a nested unlock has cleared) is left alone and the guard is empty.
class InverseScopedLock {
 public:
  InverseScopedLock() = default;
  InverseScopedLock(const ILockable* lockable);
  InverseScopedLock(const ILockable& lockable);
  InverseScopedLock(const InverseScopedLock& other);
  // Takes back what this guard had let go of, then lets go of the other one's interface if it can.
  InverseScopedLock& operator=(const InverseScopedLock& other);
  ~InverseScopedLock();

  // Takes the lock again unless this thread has it already; a second call does nothing.
  void Release();
  // Whether the guard has let go of nothing.
  bool Expired() const;

 private:
  std::atomic<const ILockable*> mLockedInterface{nullptr};
};

// A value that carries its own mutex.
//
// Assignment, getCopy() and copyInto() lock for their own length. The operators -> and & take no lock: they are
// for a caller that holds a ScopedLock on the property already.
template <class T, class Mutex = std::recursive_mutex>
class ThreadSafeProperty : public Lockable<Mutex> {
 public:
  ThreadSafeProperty() = default;
  ThreadSafeProperty(const T& value) : mPropertyValue(value) {}
  ThreadSafeProperty(const ThreadSafeProperty& other) : Lockable<Mutex>(), mPropertyValue(other.getCopy()) {}

  ThreadSafeProperty& operator=(const T& value) {
    ScopedLock lock(*this);
    mPropertyValue = value;
    return *this;
  }

  // Copies the other value first and locks its own side afterwards, so that two locks are never held at once.
  ThreadSafeProperty& operator=(const ThreadSafeProperty& other) { return *this = other.getCopy(); }

  T getCopy() const {
    ScopedLock lock(*this);
    return mPropertyValue;
  }

  operator T() const { return getCopy(); }

  void copyInto(T& target) const {
    ScopedLock lock(*this);
    target = mPropertyValue;
  }

  // `target` must not be null.
  void copyInto(T* target) const { copyInto(*target); }

  T* operator->() { return &mPropertyValue; }
  const T* operator->() const { return &mPropertyValue; }
  T& operator&() { return mPropertyValue; }
  const T& operator&() const { return mPropertyValue; }

 protected:
  T mPropertyValue{};
};
