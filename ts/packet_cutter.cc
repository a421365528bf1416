#include "ts/packet_cutter.h"

#include <algorithm>
#include <cstring>

namespace stream {

bool PacketCutter::Append(const char* bytes, std::size_t size, CByteBuffer& packets) {
  const std::size_t skipped = std::min(size, skip_);
  skip_ -= skipped;
  const char* const end = bytes + size;
  bytes += skipped;
  if (partial_size_ > 0) bytes += Complete(bytes, static_cast<std::size_t>(end - bytes));
  if (partial_size_ == kTsPacketSize) {
    if (packets.Append(partial_.data(), kTsPacketSize) != kBufferOk) return false;
    partial_size_ = 0;
  }
  const auto left = static_cast<std::size_t>(end - bytes);
  const std::size_t whole = left - left % kTsPacketSize;
  if (packets.Append(bytes, static_cast<std::uint32_t>(whole)) != kBufferOk) return false;
  Complete(bytes + whole, left - whole);
  return true;
}

// Appends bytes to the partial packet until it is full. Returns the number of bytes taken.
std::size_t PacketCutter::Complete(const char* bytes, std::size_t size) {
  const std::size_t taken = std::min(size, kTsPacketSize - partial_size_);
  std::memcpy(partial_.data() + partial_size_, bytes, taken);
  partial_size_ += taken;
  return taken;
}

}  // namespace stream
