// PacketCutter: cuts one download of a transport stream into whole packets, whatever the sizes of
// the received pieces. Packets begin at multiples of 188 bytes from the beginning of the stream, so
// a download that resumes in mid-packet skips the rest of that packet.
//
// A plain value without a lock. Each download has its own, so that two downloads that run at the
// same time do not mix their packets.
#ifndef TS_PACKET_CUTTER_H_
#define TS_PACKET_CUTTER_H_

#include <array>
#include <cstddef>
#include <cstdint>

#include "common/byte_buffer.h"
#include "ts/ts_packet.h"

namespace stream {

class PacketCutter {
 public:
  // `offset` is the position in the stream of the first byte that will be appended.
  explicit PacketCutter(std::uint64_t offset)
      : skip_((kTsPacketSize - offset % kTsPacketSize) % kTsPacketSize) {}

  // Appends the packets that `bytes` complete to `packets`. Keeps an incomplete packet at the end
  // for the next call. Returns false if memory runs out.
  bool Append(const char* bytes, std::size_t size, CByteBuffer& packets);

 private:
  std::size_t Complete(const char* bytes, std::size_t size);

  std::size_t skip_;
  std::array<char, kTsPacketSize> partial_;  // the incomplete packet
  std::size_t partial_size_ = 0;
};

}  // namespace stream

#endif  // TS_PACKET_CUTTER_H_
