// A process-wide object that is never destroyed. If a host exits without a stop, worker threads
// still use such objects after main has returned.
#ifndef COMMON_NEVER_DESTROYED_H_
#define COMMON_NEVER_DESTROYED_H_

#include <new>

namespace stream {

template <typename Object>
class NeverDestroyed {
 public:
  NeverDestroyed() { new (storage_) Object(); }
  NeverDestroyed(const NeverDestroyed&) = delete;
  NeverDestroyed& operator=(const NeverDestroyed&) = delete;

  Object& operator*() { return *std::launder(reinterpret_cast<Object*>(storage_)); }
  Object* operator->() { return &**this; }

 private:
  alignas(Object) unsigned char storage_[sizeof(Object)];
};

}  // namespace stream

#endif  // COMMON_NEVER_DESTROYED_H_
