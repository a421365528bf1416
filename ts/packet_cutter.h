// PacketCutter: cuts one download of a transport stream into whole packets, whatever the pieces
// that it arrives in. Packets begin at multiples of 188 bytes from the beginning of the stream, so
// a download that resumes in mid-packet skips the rest of that packet.
//
// A plain value without a lock, one for each download: of two downloads at a time, neither can
// break into a packet of the other.
#ifndef TS_PACKET_CUTTER_H_
#define TS_PACKET_CUTTER_H_

#include <array>
#include <cstddef>
#include <cstdint>

#include "common/byte_buffer.h"
#include "ts/ts_packet.h"

class PacketCutter {
 public:
  // `offset`: the position in the stream of the first byte that will be appended.
  explicit PacketCutter(std::uint64_t offset)
      : skip_((kTsPacketSize - offset % kTsPacketSize) % kTsPacketSize) {}

  // Appends to `packets` the packets that `bytes` complete, and keeps the part of a packet after
  // them for the next call. False when memory ran out.
  bool Append(const char* bytes, std::size_t size, CByteBuffer& packets);

 private:
  std::size_t Complete(const char* bytes, std::size_t size);

  std::size_t skip_;
  std::array<char, kTsPacketSize> partial_;  // a packet that was begun
  std::size_t partial_size_ = 0;
};

#endif  // TS_PACKET_CUTTER_H_
