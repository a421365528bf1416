// The times at which pictures are to be shown. Transport streams bring them. FLV and MP4 come with
// the times of decoding only: there pictures leave the decoder in another order than their times,
// and get the times in order instead.
//
// How much later than it is decoded the first picture is to be shown is not known then. FLV as it
// is written counts from the first decoding, so the pictures lie as many steps later as they are
// put out of order. In MP4 that distance is as a rule taken out again by the file, so there it is
// none.
//
// Where the times jump, the pictures sent before the jump keep their times, and those after it get
// the new ones.
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
  // `shown_later`: whether decoding times stand for pictures that are shown later, as in FLV.
  explicit PictureTimes(bool shown_later) : shown_later_(shown_later) {}

  // An access unit goes into the decoder.
  void Sent(std::uint64_t pts, std::uint64_t dts);

  // A picture came out: `pts` is that of its access unit, `depth` how many pictures the decoder
  // holds back to put them in order. Returns when to show it.
  std::uint64_t TimeOf(std::uint64_t pts, bool is_key, int depth);

 private:
  void Queue(std::uint64_t pts);
  void NoteDistance(std::uint64_t pts);
  std::uint64_t Step() const;

  const bool shown_later_;
  bool has_presentation_times_ = false;
  // Of access units whose pictures have not come out: in order, but for jumps.
  std::deque<std::uint64_t> waiting_;
  std::optional<std::uint64_t> last_sent_;
  std::deque<std::uint64_t> distances_;  // the newest between two access units
};

}  // namespace player

#endif  // HOST_PLAYER_PICTURE_TIMES_H_
