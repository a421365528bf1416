// Makes `new` fail, for tests that check that nothing is leaked then. Only the leak sanitizer can
// see that, so this exists in builds with the address sanitizer only, which define
// STREAM_TEST_FAILING_NEW.
//
// Include it in one source of a test program: it replaces `new` and `delete` of the whole program.
#ifndef TESTS_SUPPORT_MP4_MEMORY_H_
#define TESTS_SUPPORT_MP4_MEMORY_H_

#ifdef STREAM_TEST_FAILING_NEW

#include <cstddef>
#include <cstdlib>
#include <new>

// During the lifetime of an object, only the next `allowed` calls of `new` on this thread succeed.
class FailingNew {
 public:
  explicit FailingNew(int allowed) { left_ = allowed; }
  FailingNew(const FailingNew&) = delete;
  FailingNew& operator=(const FailingNew&) = delete;
  ~FailingNew() { left_ = kAll; }

  static void* Allocate(std::size_t size) noexcept {
    if (left_ == 0) return nullptr;
    if (left_ != kAll) --left_;
    return std::malloc(size == 0 ? 1 : size);
  }

 private:
  static constexpr int kAll = -1;
  static inline thread_local int left_ = kAll;
};

void* operator new(std::size_t size) {
  if (void* const block = FailingNew::Allocate(size)) return block;
  throw std::bad_alloc();
}
void* operator new[](std::size_t size) { return operator new(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return FailingNew::Allocate(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  return FailingNew::Allocate(size);
}
void operator delete(void* block) noexcept { std::free(block); }
void operator delete[](void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t) noexcept { std::free(block); }
void operator delete[](void* block, std::size_t) noexcept { std::free(block); }
void operator delete(void* block, const std::nothrow_t&) noexcept { std::free(block); }
void operator delete[](void* block, const std::nothrow_t&) noexcept { std::free(block); }

#endif

#endif  // TESTS_SUPPORT_MP4_MEMORY_H_
