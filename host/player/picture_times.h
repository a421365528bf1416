// The times at which pictures are to be shown. Transport streams bring them. FLV and MP4 come with
// the times of decoding only: there pictures leave the decoder in another order than their times,
// and get the times in order instead.
//
// How much later than it is decoded the first picture is to be shown is not known then. FLV as it
// is written counts from the first decoding, so the pictures lie as many steps later as they are
// put out of order. In MP4 that distance is as a rule taken out again by the file, so there it is
// none.
//
// Times in 90 kHz ticks. For one thread.
#ifndef HOST_PLAYER_PICTURE_TIMES_H_
#define HOST_PLAYER_PICTURE_TIMES_H_

#include <cstdint>
#include <set>

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
  std::uint64_t Step() const;

  const bool shown_later_;
  bool has_presentation_times_ = false;
  std::multiset<std::uint64_t> waiting_;  // of access units whose pictures have not come out
  std::uint64_t first_ = 0;
  std::uint64_t newest_ = 0;
  std::uint64_t sent_ = 0;
};

}  // namespace player

#endif  // HOST_PLAYER_PICTURE_TIMES_H_
