// The ADTS header (ISO/IEC 13818-7, 6.2) of an AAC frame, for containers that store AAC frames
// without it.
#ifndef COMMON_ADTS_H_
#define COMMON_ADTS_H_

#include <array>
#include <cstdint>

namespace stream {

inline constexpr std::uint32_t kAdtsHeaderSize = 7;

using AdtsHeader = std::array<std::uint8_t, kAdtsHeaderSize>;

// The stream parameters that the header contains.
struct AdtsFields {
  std::uint16_t sampling_frequency_index = 0;
  std::uint16_t channel_configuration = 0;
};

// Reads the first two bytes of an AudioSpecificConfig (ISO/IEC 14496-3, 1.6.2.1). The first byte is
// the high half of `config`.
AdtsFields FieldsOfAudioSpecificConfig(std::uint16_t config);

// Returns the header of a frame with `payload_size` bytes. The frame length is truncated to the 13
// bits of its field. Kept for compatibility: the profile is always AAC LC.
AdtsHeader MakeAdtsHeader(const AdtsFields& fields, std::uint32_t payload_size);

}  // namespace stream

#endif  // COMMON_ADTS_H_
