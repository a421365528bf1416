// A part of the shared index. The first thread that needs it creates it; after that it never
// changes. If it cannot be created, the next call tries again.
#ifndef ISOBMFF_LAZY_H_
#define ISOBMFF_LAZY_H_

#include <atomic>
#include <memory>
#include <mutex>

namespace isobmff {

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
    const std::lock_guard lock(making_);
    if (part_ == nullptr) {
      part_ = make();
      ready_.store(part_.get(), std::memory_order_release);
    }
    return part_.get();
  }

  mutable std::mutex making_;
  mutable std::unique_ptr<const Part> part_;  // guarded by making_; what it points to never changes
  mutable std::atomic<const Part*> ready_{nullptr};
};

}  // namespace isobmff

#endif  // ISOBMFF_LAZY_H_
