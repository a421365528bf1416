// A class that uses its mutexes correctly; the other files here each break one rule.
#ifndef TESTS_STRUCTURE_LOCK_CHECKS_GUARDED_COUNTER_H_
#define TESTS_STRUCTURE_LOCK_CHECKS_GUARDED_COUNTER_H_

#include "platform/mutex.h"

namespace stream {

class GuardedCounter {
 public:
  explicit GuardedCounter(int* total) : total_(total) {}

  void AddOne() EXCLUDES(outer_, inner_) {
    const MutexLock outer(outer_);
    const MutexLock inner(inner_);
    AddLocked();
  }
  void WaitForOne() {
    const MutexLock lock(inner_);
    WaitOn(changed_, inner_, [this]() REQUIRES(inner_) { return count_ > 0; });
  }
  void AddOneAfterAPause() {
    const MutexLock lock(inner_);
    { const MutexUnlock unlocked(inner_); }
    AddLocked();
  }
  void AddOneToTheTotal() {
    const MutexLock inner(inner_);
    const MutexLock last(last_);
    ++*total_;
  }
  void AddOneInACallback() {
    inner_.AssumeHeld();
    AddLocked();
  }
  Mutex& OuterMutex() RETURNS_MUTEX(outer_) { return outer_; }

  int ReadWithoutTheMutex();
  int ReadDuringAPause();
  int ReadTheTotalWithoutTheMutex();
  void AddOneTwice();
  void AddWithoutTheMutex();
  void LockInTheWrongOrder();
  void LockTheLastMutexFirst();

 private:
  void AddLocked() REQUIRES(inner_) { ++count_; }

  Mutex outer_ ACQUIRED_BEFORE(inner_);
  Mutex inner_;
  Mutex last_ ACQUIRED_AFTER(inner_);
  std::condition_variable changed_;
  int count_ GUARDED_BY(inner_) = 0;
  int* const total_ PT_GUARDED_BY(last_);
};

// As TsDemuxLock: a lock of a mutex that a function returns.
class SCOPED_LOCK OuterLock {
 public:
  explicit OuterLock(GuardedCounter& counter) ACQUIRE(counter.OuterMutex())
      : lock_(counter.OuterMutex()) {}
  ~OuterLock() RELEASE() = default;
  OuterLock(const OuterLock&) = delete;
  OuterLock& operator=(const OuterLock&) = delete;

 private:
  MutexLock lock_;
};

}  // namespace stream

#endif  // TESTS_STRUCTURE_LOCK_CHECKS_GUARDED_COUNTER_H_
