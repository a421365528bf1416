// Mutex and MutexLock: std::mutex whose use Clang checks while it compiles. A member says which
// mutex guards it, and a function says which mutex its caller must hold. In the builds by Clang, an
// access without the mutex is an error (-Wthread-safety); other compilers ignore the annotations.
//
//   Mutex mutex_;
//   int count_ GUARDED_BY(mutex_) = 0;
//   void AddLocked() REQUIRES(mutex_);
//
// Clang checks each function on its own and compares expressions: a mutex that was locked as
// `a.b.mutex` does not count as held for `c.mutex`, even if `c` is a reference to `a.b`.
//
// Source: Clang's documentation, "Thread Safety Analysis".
#ifndef PLATFORM_MUTEX_H_
#define PLATFORM_MUTEX_H_

#include <condition_variable>
#include <mutex>

#ifdef __clang__
#define THREAD_ANNOTATION(attribute) __attribute__((attribute))
#else
#define THREAD_ANNOTATION(attribute)
#endif

// For a variable: access it only with this mutex held.
#define GUARDED_BY(mutex) THREAD_ANNOTATION(guarded_by(mutex))
// For a pointer: access what it points to only with this mutex held.
#define PT_GUARDED_BY(mutex) THREAD_ANNOTATION(pt_guarded_by(mutex))
// For a mutex: the lock order. Lock it before these, or after these.
#define ACQUIRED_BEFORE(...) THREAD_ANNOTATION(acquired_before(__VA_ARGS__))
#define ACQUIRED_AFTER(...) THREAD_ANNOTATION(acquired_after(__VA_ARGS__))
// For a function or lambda: the caller holds these mutexes, before and after the call.
#define REQUIRES(...) THREAD_ANNOTATION(requires_capability(__VA_ARGS__))
// For a function: the caller does not hold these mutexes, since the function locks them.
#define EXCLUDES(...) THREAD_ANNOTATION(locks_excluded(__VA_ARGS__))
// For a function: locks or unlocks these mutexes; TRY_ACQUIRE if it returns the first argument.
#define ACQUIRE(...) THREAD_ANNOTATION(acquire_capability(__VA_ARGS__))
#define RELEASE(...) THREAD_ANNOTATION(release_capability(__VA_ARGS__))
#define TRY_ACQUIRE(...) THREAD_ANNOTATION(try_acquire_capability(__VA_ARGS__))
// For a function: after its call, the compiler takes this mutex for held.
#define ASSUMES_HELD(mutex) THREAD_ANNOTATION(assert_capability(mutex))
// For a function that returns a reference to this mutex.
#define RETURNS_MUTEX(mutex) THREAD_ANNOTATION(lock_returned(mutex))
// For a class whose objects hold a mutex from their construction to the end of their scope.
#define SCOPED_LOCK THREAD_ANNOTATION(scoped_lockable)

namespace stream {

class THREAD_ANNOTATION(capability("mutex")) Mutex {
 public:
  Mutex() = default;
  Mutex(const Mutex&) = delete;
  Mutex& operator=(const Mutex&) = delete;

  // Named as std::mutex names them, so that std::lock_guard works in code that is not checked.
  void lock() ACQUIRE() { mutex_.lock(); }
  void unlock() RELEASE() { mutex_.unlock(); }
  bool try_lock() TRY_ACQUIRE(true) { return mutex_.try_lock(); }

  // For callbacks that a library calls while the thread holds the mutex. Checks nothing.
  void AssumeHeld() const ASSUMES_HELD(this) {}

  // Calls `wait` with the mutex as the std::unique_lock that a condition variable takes. Returns
  // its result.
  template <typename Wait>
  auto WithLock(const Wait& wait) REQUIRES(this) {
    Adopted adopted(mutex_);
    return wait(adopted.lock);
  }

 private:
  // Leaves the mutex locked, also if the wait throws.
  struct Adopted {
    explicit Adopted(std::mutex& mutex) : lock(mutex, std::adopt_lock) {}
    ~Adopted() { (void)lock.release(); }
    Adopted(const Adopted&) = delete;
    Adopted& operator=(const Adopted&) = delete;
    std::unique_lock<std::mutex> lock;
  };

  std::mutex mutex_;
};

// Holds a mutex from its construction to the end of its scope.
class SCOPED_LOCK MutexLock {
 public:
  explicit MutexLock(Mutex& mutex) ACQUIRE(mutex) : mutex_(mutex) { mutex_.lock(); }
  ~MutexLock() RELEASE() { mutex_.unlock(); }
  MutexLock(const MutexLock&) = delete;
  MutexLock& operator=(const MutexLock&) = delete;

 private:
  Mutex& mutex_;
};

// Releases a mutex, which the thread holds, from its construction to the end of its scope.
class SCOPED_LOCK MutexUnlock {
 public:
  explicit MutexUnlock(Mutex& mutex) RELEASE(mutex) : mutex_(mutex) { mutex_.unlock(); }
  ~MutexUnlock() RELEASE() { mutex_.lock(); }  // ends the release
  MutexUnlock(const MutexUnlock&) = delete;
  MutexUnlock& operator=(const MutexUnlock&) = delete;

 private:
  Mutex& mutex_;
};

// Waits on `condition` until `met` returns true. `mutex` is held before, after and in every call of
// `met`; annotate a lambda with REQUIRES(mutex).
template <typename Predicate>
void WaitOn(std::condition_variable& condition, Mutex& mutex, const Predicate& met)
    REQUIRES(mutex) {
  mutex.WithLock([&](std::unique_lock<std::mutex>& lock) { condition.wait(lock, met); });
}

}  // namespace stream

#endif  // PLATFORM_MUTEX_H_
