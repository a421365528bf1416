// The first fields of an AudioSpecificConfig (ISO/IEC 14496-3, 1.6.2.1), which an MP4 file contains
// for a track of AAC. Safe for any bytes.
#ifndef MP4_AUDIO_SPECIFIC_CONFIG_H_
#define MP4_AUDIO_SPECIFIC_CONFIG_H_

#include <cstdint>
#include <optional>
#include <span>

namespace stream {

struct AudioSpecificConfig {
  std::uint32_t object_type = 0;  // 2 is AAC LC; SBR (5) and PS (29) if signalled first
  std::uint32_t sampling_frequency_index = 0;  // 15 if the rate is given as a number
  std::uint32_t channel_configuration = 0;     // 1 to 7; for other values it is given elsewhere
};

// Returns nullopt if the bytes end within these fields.
std::optional<AudioSpecificConfig> ParseAudioSpecificConfig(std::span<const std::uint8_t> bytes);

}  // namespace stream

#endif  // MP4_AUDIO_SPECIFIC_CONFIG_H_
