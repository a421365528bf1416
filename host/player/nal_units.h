// Reads H.264 and H.265 in Annex B form without decoding: the positions of NAL units, their codec,
// and where an access unit or a sequence begins.
#ifndef HOST_PLAYER_NAL_UNITS_H_
#define HOST_PLAYER_NAL_UNITS_H_

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace player {

enum class VideoCodec { kH264, kH265 };

using Bytes = std::span<const std::uint8_t>;

struct NalUnit {
  std::size_t begin = 0;  // where its start code begins
  Bytes payload;          // from the NAL unit header on; borrowed
};

std::vector<NalUnit> SplitNalUnits(Bytes stream);

// Returns the codec if `unit` is a parameter set that only one of the codecs can have; otherwise
// nullopt.
std::optional<VideoCodec> CodecOfParameterSet(Bytes unit);

// The role of a NAL unit in its access unit.
struct NalRole {
  bool is_picture = false;      // a slice
  bool begins_picture = false;  // the first slice of a picture, judging by its header
  bool leads_picture = false;   // precedes the slices: parameter sets, delimiters and similar units
  bool is_entry = false;  // decoding can begin here: a sequence parameter set or a key picture
};

NalRole RoleOf(VideoCodec codec, Bytes unit);

}  // namespace player

#endif  // HOST_PLAYER_NAL_UNITS_H_
