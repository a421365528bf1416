// FlvReader: the numbers of an FLV stream, big-endian, and how many bytes they took.
#ifndef FLV_FLV_READER_H_
#define FLV_FLV_READER_H_

#include <cstdint>

#include "flv/flv_source.h"

// What is read into is left as it was when a read fails.
class FlvReader {
 public:
  explicit FlvReader(FlvSource& source) : source_(source) {}

  bool Runs() const { return source_.Runs(); }
  bool Await(std::uint32_t count) { return source_.Await(count); }

  bool ReadBytes(std::uint8_t* bytes, std::uint32_t count);
  bool Read8(std::uint8_t& value);
  bool Read16(std::uint16_t& value);
  bool Read24(std::uint32_t& value);
  bool Read32(std::uint32_t& value);

  // 24 bits, then the bits 24 to 31: the fields Timestamp and TimestampExtended, milliseconds.
  bool ReadTimestamp(std::uint32_t& value);

  // Passes over `count` bytes, all or none. A negative count goes nowhere but moves the position
  // back.
  bool Skip(std::int32_t count);

  // Bytes asked for so far, also those that did not come, modulo 2^32.
  std::uint32_t Position() const { return position_; }

 private:
  template <unsigned kBytes>
  bool ReadNumber(std::uint32_t& value);

  FlvSource& source_;
  std::uint32_t position_ = 0;
};

#endif  // FLV_FLV_READER_H_
