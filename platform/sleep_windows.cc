#include <windows.h>
// Must be included after windows.h.
#include <timeapi.h>

#include <memory>
#include <new>

#include "platform/sleep.h"

// Supported since Windows 10 version 1803; older headers do not define it.
#ifndef CREATE_WAITABLE_TIMER_HIGH_RESOLUTION
#define CREATE_WAITABLE_TIMER_HIGH_RESOLUTION 0x00000002
#endif

namespace stream::platform {
namespace {

// A timer that is exact to about half a millisecond, even where Sleep(1) lasts 15 milliseconds.
class PreciseTimer {
 public:
  PreciseTimer()
      : timer_(CreateWaitableTimerExW(nullptr, nullptr, CREATE_WAITABLE_TIMER_HIGH_RESOLUTION,
                                      TIMER_ALL_ACCESS)) {
    if (timer_ == nullptr) timeBeginPeriod(kTickMilliseconds);  // makes a plain Sleep exact enough
  }
  ~PreciseTimer() {
    if (timer_ == nullptr) {
      timeEndPeriod(kTickMilliseconds);
    } else {
      CloseHandle(timer_);
    }
  }
  PreciseTimer(const PreciseTimer&) = delete;
  PreciseTimer& operator=(const PreciseTimer&) = delete;

  bool Wait(unsigned milliseconds) const {
    LARGE_INTEGER due;
    due.QuadPart = -10'000LL * milliseconds;  // relative, in units of 100 ns
    return timer_ != nullptr && SetWaitableTimer(timer_, &due, 0, nullptr, nullptr, FALSE) != 0 &&
           WaitForSingleObject(timer_, INFINITE) == WAIT_OBJECT_0;
  }

 private:
  static constexpr UINT kTickMilliseconds = 1;

  HANDLE timer_;
};

void WINAPI DeleteTimer(void* timer) { delete static_cast<PreciseTimer*>(timer); }

// Returns the timer of the calling thread. Each thread has its own, since a waitable timer has one
// due time. Returns null if there is no memory or no free slot.
//
// The system deletes the timer when the thread ends. A thread_local object cannot be used: GCC for
// Windows releases the memory of such objects before it runs their destructors. The slot is never
// freed, since the library stays loaded.
PreciseTimer* ThreadTimer() {
  static const DWORD slot = FlsAlloc(DeleteTimer);
  if (slot == FLS_OUT_OF_INDEXES) return nullptr;
  if (void* const timer = FlsGetValue(slot)) return static_cast<PreciseTimer*>(timer);
  std::unique_ptr<PreciseTimer> made(new (std::nothrow) PreciseTimer);
  if (made == nullptr || FlsSetValue(slot, made.get()) == 0) return nullptr;
  return made.release();
}

}  // namespace

void SleepMilliseconds(unsigned milliseconds) {
  const PreciseTimer* const timer = ThreadTimer();
  if (timer == nullptr || !timer->Wait(milliseconds)) Sleep(milliseconds);
}

}  // namespace stream::platform
