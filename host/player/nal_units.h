// What a host needs to know of H.264 and H.265 in Annex B form without decoding it: where the NAL
// units are, which of the two codecs they are of, and where an access unit or a sequence begins.
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
  Bytes payload;          // from its header on; borrowed
};

std::vector<NalUnit> SplitNalUnits(Bytes stream);

// The codec, if `unit` is a parameter set, which only one of them can have; nothing otherwise.
std::optional<VideoCodec> CodecOfParameterSet(Bytes unit);

// What a NAL unit means for the access unit that it is in.
struct NalRole {
  bool is_picture = false;      // a slice
  bool begins_picture = false;  // the first slice of a picture, as far as its header tells
  bool leads_picture = false;   // comes before the slices: parameter sets, delimiters and the like
  bool is_entry = false;  // decoding can begin here: a sequence parameter set or a key picture
};

NalRole RoleOf(VideoCodec codec, Bytes unit);

}  // namespace player

#endif  // HOST_PLAYER_NAL_UNITS_H_
