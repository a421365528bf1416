// A part of the shared index. The first thread that needs it creates it; after that it never
// changes. If it cannot be created, the next call tries again.
#ifndef ISOBMFF_LAZY_H_
#define ISOBMFF_LAZY_H_

#include <atomic>
#include <memory>

#include "platform/mutex.h"

namespace stream::isobmff {

template <typename Part>
class Lazy {
 public:
  // `make` returns a std::unique_ptr<const Part>, null if it fails. Only one runs at a time.
  template <typename Make>
  const Part* Get(const Make& make) const {
    const Part* part = ready_.load(std::memory_order_acquire);
    return part != nullptr ? part : MakeOnce(make);
  }

 private:
  template <typename Make>
  const Part* MakeOnce(const Make& make) const {
    const MutexLock lock(mutex_);
    if (part_ == nullptr) {
      part_ = make();
      ready_.store(part_.get(), std::memory_order_release);
    }
    return part_.get();
  }

  mutable Mutex mutex_;
  // What it points to never changes.
  mutable std::unique_ptr<const Part> part_ GUARDED_BY(mutex_);
  mutable std::atomic<const Part*> ready_{nullptr};
};

}  // namespace stream::isobmff

#endif  // ISOBMFF_LAZY_H_
