#include "nal_units.h"

namespace player {
namespace {

// Returns the position of the next start code that is followed by a byte, or the size if there is
// none.
std::size_t FindStartCode(Bytes stream, std::size_t from) {
  for (std::size_t i = from; i + 3 < stream.size(); ++i) {
    if (stream[i] == 0 && stream[i + 1] == 0 && stream[i + 2] == 1) return i;
  }
  return stream.size();
}

NalRole RoleInH264(Bytes unit) {
  const int type = unit[0] & 0x1F;
  NalRole role;
  role.is_picture = type == 1 || type == 2 || type == 5;
  // first_mb_in_slice is the first field of a slice header; a leading 1 bit encodes 0.
  role.begins_picture = role.is_picture && type != 2 && unit.size() > 1 && (unit[1] & 0x80) != 0;
  role.leads_picture = (type >= 6 && type <= 9) || (type >= 14 && type <= 18);
  role.is_entry = type == 5 || type == 7;
  return role;
}

NalRole RoleInH265(Bytes unit) {
  const int type = (unit[0] >> 1) & 0x3F;
  NalRole role;
  role.is_picture = type < 32;
  role.begins_picture = role.is_picture && unit.size() > 2 && (unit[2] & 0x80) != 0;
  role.leads_picture = (type >= 32 && type <= 35) || type == 39 || (type >= 41 && type <= 44);
  role.is_entry = (type >= 16 && type <= 23) || type == 33;
  return role;
}

}  // namespace

std::vector<NalUnit> SplitNalUnits(Bytes stream) {
  std::vector<NalUnit> units;
  std::size_t code = FindStartCode(stream, 0);
  while (code < stream.size()) {
    const std::size_t payload = code + 3;
    const std::size_t next = FindStartCode(stream, payload);
    // A zero byte before a start code belongs to the start code.
    const std::size_t begin = code > 0 && stream[code - 1] == 0 ? code - 1 : code;
    std::size_t end = next;
    while (next < stream.size() && end > payload && stream[end - 1] == 0) --end;
    if (end > payload) units.push_back({begin, stream.subspan(payload, end - payload)});
    code = next;
  }
  return units;
}

std::optional<VideoCodec> CodecOfParameterSet(Bytes unit) {
  if (unit.size() < 2) return std::nullopt;
  // H.265: VPS, SPS or PPS of the base layer. In H.264 these bytes would start a unit of a reserved
  // type or a data partition, which streams do not contain here.
  const bool is_h265 = (unit[0] == 0x40 || unit[0] == 0x42 || unit[0] == 0x44) && unit[1] == 1;
  if (is_h265) return VideoCodec::kH265;
  const bool is_h264_sps = (unit[0] & 0x9F) == 7 && (unit[0] & 0x60) != 0;
  if (is_h264_sps) return VideoCodec::kH264;
  return std::nullopt;
}

NalRole RoleOf(VideoCodec codec, Bytes unit) {
  if (unit.empty()) return {};
  return codec == VideoCodec::kH264 ? RoleInH264(unit) : RoleInH265(unit);
}

}  // namespace player
