// FlvReader: reads the big-endian numbers of an FLV stream and counts the bytes.
#ifndef FLV_FLV_READER_H_
#define FLV_FLV_READER_H_

#include <cstdint>

#include "flv/flv_source.h"

namespace stream {

// A read that fails leaves its output argument unchanged.
class FlvReader {
 public:
  explicit FlvReader(FlvSource& source) : source_(source) {}

  bool Runs() const { return source_.Runs(); }
  bool WaitForBytes(std::uint32_t count) { return source_.WaitForBytes(count); }

  bool ReadBytes(std::uint8_t* bytes, std::uint32_t count);
  bool Read8(std::uint8_t& value);
  bool Read16(std::uint16_t& value);
  bool Read24(std::uint32_t& value);
  bool Read32(std::uint32_t& value);

  // Reads the fields Timestamp (the lower 24 bits) and TimestampExtended (bits 24 to 31), in
  // milliseconds.
  bool ReadTimestamp(std::uint32_t& value);

  // Skips `count` bytes, all or none. A negative count skips nothing but moves the position back.
  bool Skip(std::int32_t count);

  // Number of bytes requested so far, including those that could not be read, modulo 2^32.
  std::uint32_t Position() const { return position_; }

 private:
  template <unsigned kBytes>
  bool ReadNumber(std::uint32_t& value);

  FlvSource& source_;
  std::uint32_t position_ = 0;
};

}  // namespace stream

#endif  // FLV_FLV_READER_H_
