#include "flv/flv_reader.h"

#include <array>

namespace stream {

template <unsigned kBytes>
bool FlvReader::ReadNumber(std::uint32_t& value) {
  std::array<std::uint8_t, kBytes> bytes;
  if (!ReadBytes(bytes.data(), kBytes)) return false;
  value = 0;
  for (const std::uint8_t byte : bytes) value = value << 8 | byte;
  return true;
}

bool FlvReader::ReadBytes(std::uint8_t* bytes, std::uint32_t count) {
  position_ += count;
  return source_.Read(bytes, count);
}

bool FlvReader::Read8(std::uint8_t& value) { return ReadBytes(&value, 1); }

bool FlvReader::Read16(std::uint16_t& value) {
  std::uint32_t number = 0;
  if (!ReadNumber<2>(number)) return false;
  value = static_cast<std::uint16_t>(number);
  return true;
}

bool FlvReader::Read24(std::uint32_t& value) { return ReadNumber<3>(value); }

bool FlvReader::Read32(std::uint32_t& value) { return ReadNumber<4>(value); }

bool FlvReader::ReadTimestamp(std::uint32_t& value) {
  std::uint32_t number = 0;
  if (!Read32(number)) return false;
  value = number >> 8 | number << 24;
  return true;
}

bool FlvReader::Skip(std::int32_t count) {
  position_ += static_cast<std::uint32_t>(count);
  return count <= 0 || source_.Skip(static_cast<std::uint32_t>(count));
}

}  // namespace stream
