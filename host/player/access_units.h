// Puts frames together into access units, which is what decoders want: FLV and MP4 hand over each
// NAL unit as a frame of its own, a transport stream a PES packet, which holds an access unit or
// more. The parts of an access unit have the same time.
//
// What comes before the first unit that decoding can begin with cannot be decoded and is counted
// instead: a start in the middle of a stream begins with such units.
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
  // No picture needs more. What a unit has beyond it is dropped.
  static constexpr std::size_t kMostBytes = std::size_t{32} << 20;

  // The access units that are complete now, in their order.
  std::vector<MediaUnit> Add(const MediaUnit& frame);

  // The one that nothing completed yet, at the end of the stream.
  std::vector<MediaUnit> Finish();

  // Known from the first parameter set on.
  std::optional<VideoCodec> codec() const { return codec_; }

  // Access units left out because none before them could begin the decoding.
  std::uint64_t left_out() const { return left_out_; }

  // The next unit must again be one that decoding can begin with.
  void AwaitEntry() { entered_ = false; }

 private:
  void LearnCodec(Bytes unit, const MediaUnit& frame, std::vector<MediaUnit>& complete);
  void AddPart(Bytes part, const NalRole& role, const MediaUnit& frame,
               std::vector<MediaUnit>& complete);
  void TakeCurrent(std::vector<MediaUnit>& complete);
  void Append(Bytes part);

  std::optional<VideoCodec> codec_;
  MediaUnit current_;
  bool current_has_picture_ = false;
  bool current_has_entry_ = false;
  bool entered_ = false;
  std::uint64_t left_out_ = 0;
};

}  // namespace player

#endif  // HOST_PLAYER_ACCESS_UNITS_H_
