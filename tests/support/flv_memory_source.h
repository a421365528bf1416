// An FLV stream that is completely in memory, for tests, fuzzers and benchmarks. Borrows the bytes.
#ifndef TESTS_SUPPORT_FLV_MEMORY_SOURCE_H_
#define TESTS_SUPPORT_FLV_MEMORY_SOURCE_H_

#include <cstddef>
#include <cstring>
#include <span>

#include "flv/flv_source.h"

namespace stream {

class FlvMemorySource final : public FlvSource {
 public:
  explicit FlvMemorySource(std::span<const std::uint8_t> bytes) : left_(bytes) {}

  bool Runs() const override { return true; }
  bool WaitForBytes(std::uint32_t count) override { return count <= left_.size(); }

  bool Read(std::uint8_t* bytes, std::uint32_t count) override {
    if (!WaitForBytes(count)) return false;
    if (count > 0) std::memcpy(bytes, left_.data(), count);
    left_ = left_.subspan(count);
    return true;
  }

  bool Skip(std::uint32_t count) override {
    if (!WaitForBytes(count)) return false;
    left_ = left_.subspan(count);
    return true;
  }

 private:
  std::span<const std::uint8_t> left_;
};

}  // namespace stream

#endif  // TESTS_SUPPORT_FLV_MEMORY_SOURCE_H_
