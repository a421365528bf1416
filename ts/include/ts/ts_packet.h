// One 188-byte packet of an MPEG-2 transport stream (ISO/IEC 13818-1, 2.4.3) and its header fields.
#ifndef TS_TS_PACKET_H_
#define TS_TS_PACKET_H_

#include <cstddef>
#include <cstdint>

namespace stream {

inline constexpr std::size_t kTsPacketSize = 188;
inline constexpr std::uint8_t kTsSyncByte = 0x47;

// A view of one packet; it does not own the bytes. Fields are read on each call. The ...At
// functions read zeros after the end of the packet.
class TsPacket {
 public:
  // `bytes` points to at least kTsPacketSize bytes, or is null for no packet.
  explicit TsPacket(const std::uint8_t* bytes) : bytes_(bytes) {}

  bool IsNull() const { return bytes_ == nullptr; }
  const std::uint8_t* Bytes() const { return bytes_; }

  bool HasSyncByte() const { return bytes_[0] == kTsSyncByte; }
  std::uint16_t Pid() const {
    return static_cast<std::uint16_t>((bytes_[1] & 0x1F) << 8 | bytes_[2]);
  }
  bool PayloadUnitStart() const { return (bytes_[1] & 0x40) != 0; }
  unsigned AdaptationFieldControl() const { return (bytes_[3] >> 4) & 3; }
  int ContinuityCounter() const { return bytes_[3] & 0x0F; }
  unsigned AdaptationFieldLength() const { return bytes_[4]; }

  std::uint8_t At(std::size_t offset) const {
    return offset < kTsPacketSize ? bytes_[offset] : std::uint8_t{0};
  }
  std::uint16_t U16At(std::size_t offset) const {
    return static_cast<std::uint16_t>(At(offset) << 8 | At(offset + 1));
  }
  std::uint32_t U32At(std::size_t offset) const {
    return std::uint32_t{U16At(offset)} << 16 | U16At(offset + 2);
  }
  // The low 13 bits of a big-endian 16-bit field: a PID.
  std::uint16_t PidAt(std::size_t offset) const { return U16At(offset) & 0x1FFF; }
  // The low 12 bits of a big-endian 16-bit field: a length.
  std::uint16_t LengthAt(std::size_t offset) const { return U16At(offset) & 0x0FFF; }
  // Two bytes in network byte order, not converted.
  std::uint16_t RawU16At(std::size_t offset) const;

 private:
  const std::uint8_t* bytes_;
};

inline std::uint16_t TsPacket::RawU16At(std::size_t offset) const {
  return static_cast<std::uint16_t>(At(offset) | At(offset + 1) << 8);
}

}  // namespace stream

#endif  // TS_TS_PACKET_H_
