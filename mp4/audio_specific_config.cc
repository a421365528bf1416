#include "mp4/audio_specific_config.h"

#include <cstddef>

namespace stream {
namespace {

// Reads numbers bit by bit, most significant bit first. Bits after the end read as zeros; Good() is
// false then.
class BitReader {
 public:
  explicit BitReader(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}

  bool Good() const { return position_ <= bytes_.size() * 8; }

  std::uint32_t Read(unsigned count) {
    std::uint32_t value = 0;
    for (; count > 0; --count, ++position_) value = value << 1 | Bit();
    return value;
  }

 private:
  std::uint32_t Bit() const {
    const std::size_t byte = position_ / 8;
    return byte < bytes_.size() ? bytes_[byte] >> (7 - position_ % 8) & 1U : 0U;
  }

  std::span<const std::uint8_t> bytes_;
  std::size_t position_ = 0;  // in bits
};

std::uint32_t ReadObjectType(BitReader& bits) {
  constexpr std::uint32_t kEscape = 31;
  const std::uint32_t type = bits.Read(5);
  return type == kEscape ? 32 + bits.Read(6) : type;
}

std::uint32_t ReadSamplingFrequencyIndex(BitReader& bits) {
  constexpr std::uint32_t kEscape = 15;
  const std::uint32_t index = bits.Read(4);
  if (index == kEscape) bits.Read(24);  // the rate in Hz
  return index;
}

}  // namespace

std::optional<AudioSpecificConfig> ParseAudioSpecificConfig(std::span<const std::uint8_t> bytes) {
  BitReader bits(bytes);
  AudioSpecificConfig config;
  config.object_type = ReadObjectType(bits);
  config.sampling_frequency_index = ReadSamplingFrequencyIndex(bits);
  config.channel_configuration = bits.Read(4);
  if (!bits.Good()) return std::nullopt;
  return config;
}

}  // namespace stream
