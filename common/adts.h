// The ADTS header (ISO/IEC 13818-7, 6.2) that stands in front of each AAC frame that a container
// carries without one.
#ifndef COMMON_ADTS_H_
#define COMMON_ADTS_H_

#include <array>
#include <cstdint>

inline constexpr std::uint32_t kAdtsHeaderSize = 7;

using AdtsHeader = std::array<std::uint8_t, kAdtsHeaderSize>;

// What the header tells of the stream.
struct AdtsFields {
  std::uint16_t sampling_frequency_index = 0;
  std::uint16_t channel_configuration = 0;
};

// The fields in the first two bytes of an AudioSpecificConfig (ISO/IEC 14496-3, 1.6.2.1), the first
// one in the high half.
AdtsFields FieldsOfAudioSpecificConfig(std::uint16_t config);

// The header of a frame of `payload_size` bytes; the size is cut to what its 13 bits hold. The
// profile is AAC LC, whatever the stream is: kept on purpose.
AdtsHeader MakeAdtsHeader(const AdtsFields& fields, std::uint32_t payload_size);

#endif  // COMMON_ADTS_H_
