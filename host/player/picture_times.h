// The times at which pictures are shown. Transport streams carry them. FLV and MP4 report decode
// times only: with reordering, pictures leave the decoder in a different order than their times, so
// the pending times are assigned to them in ascending order.
//
// The delay from decoding to display of the first picture is then unknown. FLV times usually start
// at the first decode time, so pictures are shown later by as many steps as the decoder reorders.
// MP4 files usually remove that delay, so none is added.
//
// When the times jump, pictures sent before the jump keep their times, and pictures sent after it
// get the new ones.
//
// Times in 90 kHz ticks. For one thread.
#ifndef HOST_PLAYER_PICTURE_TIMES_H_
#define HOST_PLAYER_PICTURE_TIMES_H_

#include <cstdint>
#include <deque>
#include <optional>

namespace player {

class PictureTimes {
 public:
  // `shown_later`: whether pictures are shown later than their decode times say, as in FLV.
  explicit PictureTimes(bool shown_later) : shown_later_(shown_later) {}

  // Call it when an access unit is sent to the decoder.
  void Sent(std::uint64_t pts, std::uint64_t dts);

  // Call it when the decoder outputs a picture. `pts` is that of its access unit, `depth` the
  // number of pictures that the decoder holds back for reordering. Returns the time to show the
  // picture at.
  std::uint64_t TimeOf(std::uint64_t pts, bool is_key, int depth);

 private:
  void Queue(std::uint64_t pts);
  void RecordDistance(std::uint64_t pts);
  std::uint64_t MedianDistance() const;

  const bool shown_later_;
  bool has_presentation_times_ = false;
  // Times of access units whose pictures have not been output: ascending, except at jumps.
  std::deque<std::uint64_t> waiting_;
  std::optional<std::uint64_t> last_sent_;
  std::deque<std::uint64_t> distances_;  // the latest distances between two access units
};

}  // namespace player

#endif  // HOST_PLAYER_PICTURE_TIMES_H_
