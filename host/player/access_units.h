// Assembles frames into access units, the input of decoders. In FLV and MP4 each frame is one NAL
// unit; in a transport stream it is a PES packet, which holds one or more access units. All parts
// of an access unit have the same time.
//
// Units before the first one at which decoding can begin cannot be decoded; they are only counted.
// A start in mid-stream usually begins with such units.
//
// For one thread.
#ifndef HOST_PLAYER_ACCESS_UNITS_H_
#define HOST_PLAYER_ACCESS_UNITS_H_

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "media_unit.h"
#include "nal_units.h"

namespace player {

class AccessUnitGatherer {
 public:
  // Larger than any picture. Bytes of a unit beyond this limit are dropped.
  static constexpr std::size_t kMaxBytes = std::size_t{32} << 20;

  // Returns the access units that are now complete, in order.
  std::vector<MediaUnit> Add(const MediaUnit& frame);

  // Returns the last, still open access unit at the end of the stream.
  std::vector<MediaUnit> Finish();

  // Known from the first parameter set on; nullopt before.
  std::optional<VideoCodec> codec() const { return codec_; }

  // Access units skipped because decoding could not begin with any unit before them.
  std::uint64_t skipped_units() const { return skipped_units_; }

  // Makes decoding start over: units are skipped until the next one at which decoding can begin.
  void SkipToEntryPoint() { entered_ = false; }

 private:
  void LearnCodec(Bytes unit, const MediaUnit& frame, std::vector<MediaUnit>& complete);
  void AddPart(Bytes part, const NalRole& role, const MediaUnit& frame,
               std::vector<MediaUnit>& complete);
  void CompleteCurrent(std::vector<MediaUnit>& complete);
  void Append(Bytes part);

  std::optional<VideoCodec> codec_;
  MediaUnit current_;
  bool current_has_picture_ = false;
  bool current_has_entry_ = false;
  bool entered_ = false;
  std::uint64_t skipped_units_ = 0;
};

}  // namespace player

#endif  // HOST_PLAYER_ACCESS_UNITS_H_
