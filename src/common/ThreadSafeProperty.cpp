#include "common/ThreadSafeProperty.h"

#include "common/Logger.h"

ILockable::~ILockable() {
  if (mLockedBy.load() == std::thread::id()) return;
  try {
    KLOG(LogApp, logs::Warning, "Mutex destroyed while locked!");
  } catch (...) {  // a warning that cannot be written stops nothing
  }
}

void ILockable::Lock() const { mLockedBy = std::this_thread::get_id(); }

void ILockable::Unlock() const { mLockedBy = std::thread::id(); }

bool ILockable::IsLocked() const { return mLockedBy.load() == std::this_thread::get_id(); }

bool ILockable::LockChecked() const {
  if (IsLocked()) return false;
  Lock();
  return true;
}

bool ILockable::UnlockChecked() const {
  if (!IsLocked()) return false;
  Unlock();
  return true;
}

ScopedLock::ScopedLock(const ILockable* lockable) {
  if (!lockable) return;
  lockable->Lock();
  mLockedInterface = lockable;
}

ScopedLock::ScopedLock(const ILockable& lockable) : ScopedLock(&lockable) {}

ScopedLock::ScopedLock(const ScopedLock& other) { *this = other; }

// Assigning a guard to itself goes the same way: one unlock, one lock.
ScopedLock& ScopedLock::operator=(const ScopedLock& other) {
  const ILockable* wanted = other.mLockedInterface;
  if (const ILockable* held = mLockedInterface.exchange(wanted)) held->Unlock();
  if (wanted) wanted->Lock();
  return *this;
}

ScopedLock::~ScopedLock() { Release(); }

void ScopedLock::Release() {
  if (const ILockable* held = mLockedInterface.exchange(nullptr)) held->Unlock();
}

bool ScopedLock::Expired() const { return !mLockedInterface.load(); }

InverseScopedLock::InverseScopedLock(const ILockable* lockable) {
  if (lockable && lockable->UnlockChecked()) mLockedInterface = lockable;
}

InverseScopedLock::InverseScopedLock(const ILockable& lockable) : InverseScopedLock(&lockable) {}

InverseScopedLock::InverseScopedLock(const InverseScopedLock& other) { *this = other; }

InverseScopedLock& InverseScopedLock::operator=(const InverseScopedLock& other) {
  Release();
  const ILockable* wanted = other.mLockedInterface;
  if (wanted && wanted->UnlockChecked()) mLockedInterface = wanted;
  return *this;
}

InverseScopedLock::~InverseScopedLock() { Release(); }

void InverseScopedLock::Release() {
  if (const ILockable* freed = mLockedInterface.exchange(nullptr)) freed->LockChecked();
}

bool InverseScopedLock::Expired() const { return !mLockedInterface.load(); }
