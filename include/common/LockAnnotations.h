#pragma once

// Who holds which lock, said where the compiler reads it: clang checks it with -Wthread-safety in every function of
// the library but constructors, destructors and lambdas; to others it says nothing. What it can not follow (a lock
// that a callee gives back, a read without a lock that is meant so) is marked UNCHECKED_LOCKS, with the reason.

#ifdef __clang__
#define LOCK_ANNOTATION(annotation) __attribute__((annotation))
#else
#define LOCK_ANNOTATION(annotation)
#endif

// A field: read and written with the lock held.
#define GUARDED_BY(lock) LOCK_ANNOTATION(guarded_by(lock))
// A function: called with the lock held.
#define REQUIRES_LOCK(lock) LOCK_ANNOTATION(requires_capability(lock))
// A function: takes the lock; gives it back; takes it when it returns `result`. Of a guard without naming a lock.
#define TAKES_LOCK(...) LOCK_ANNOTATION(acquire_capability(__VA_ARGS__))
#define RELEASES_LOCK(...) LOCK_ANNOTATION(release_capability(__VA_ARGS__))
#define TRIES_LOCK(result, lock) LOCK_ANNOTATION(try_acquire_capability(result, lock))
// A class whose objects are locks, or hold one for a scope.
#define IS_LOCK LOCK_ANNOTATION(capability("mutex"))
#define IS_LOCK_GUARD LOCK_ANNOTATION(scoped_lockable)
#define UNCHECKED_LOCKS LOCK_ANNOTATION(no_thread_safety_analysis)
