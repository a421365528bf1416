// What the first sample entry of a track (in its stsd box) contains about the codec: ISO/IEC
// 14496-12, 8.5.2, -14 (esds), -15 (avcC), and the sound descriptions of QuickTime.
//
// Malformed parts are dropped: a track without parameter sets or configuration is still a track.
#ifndef ISOBMFF_SAMPLE_ENTRY_H_
#define ISOBMFF_SAMPLE_ENTRY_H_

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace stream::isobmff {

using Bytes = std::vector<std::uint8_t>;

// AVCDecoderConfigurationRecord: NAL units without start codes, none of them empty.
struct AvcConfig {
  std::vector<Bytes> sequence;
  std::vector<Bytes> picture;
};

// The decoder configuration of an elementary stream descriptor.
struct ElementaryStream {
  std::uint8_t object_type = 0;
  std::optional<Bytes> specific_info;  // for AAC: the AudioSpecificConfig
};

struct SampleEntry {
  std::string name;   // four-character code as in the file; empty if there is no entry
  int channels = -1;  // -1: no audio
  std::optional<AvcConfig> avc;
  std::optional<ElementaryStream> stream;
};

// `body` is the body of the stsd box, `handler` the handler type of the track. Returns nullopt if
// the first entry is truncated.
std::optional<SampleEntry> ParseSampleEntry(std::span<const std::uint8_t> body,
                                            std::uint32_t handler);

// The audio object type at the beginning of an AudioSpecificConfig; 0 if it is too short.
std::uint8_t AudioObjectType(std::span<const std::uint8_t> config);

}  // namespace stream::isobmff

#endif  // ISOBMFF_SAMPLE_ENTRY_H_
