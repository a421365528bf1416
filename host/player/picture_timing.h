// Decides what to do with the next picture: show it, wait for its time, or skip it.
//
// Pictures follow the clock, and the clock follows the audio. When the times of a stream jump,
// pictures and audio reach the jump at different moments. Pictures after the jump wait for the
// audio; if it does not follow, they continue at a constant distance from the clock. Pictures
// before the jump that remain when the audio has passed it continue at their own pace.
//
// All times in seconds. For one thread.
#ifndef HOST_PLAYER_PICTURE_TIMING_H_
#define HOST_PLAYER_PICTURE_TIMING_H_

#include <optional>

namespace player {

struct PictureFacts {
  double time = 0;             // of the picture
  std::optional<double> next;  // the time of the following picture, if available
  double due = 0;              // the stream time due now
  bool is_heard = false;       // whether audio is heard and sets the clock
  double now = 0;              // the host's time
};

struct PictureVerdict {
  enum class Action {
    kShow,
    kSkip,
    kWait,
    kSetClock,  // set the clock to the time of the picture
  };
  Action action = Action::kShow;
  std::optional<double> wait = {};  // how long, if known
  // Whether the picture was judged by the clock alone, so that its time can be compared with that
  // of the audio. Otherwise it is shown at a constant distance from the clock.
  bool follows_clock = true;
};

class PictureTiming {
 public:
  PictureVerdict Judge(const PictureFacts& facts);

 private:
  struct Shown {
    double time = 0;
    double at = 0;  // the host's time
  };

  PictureVerdict JudgeBy(double due, const PictureFacts& facts);
  PictureVerdict JudgeFarAway(const PictureFacts& facts);
  std::optional<double> OwnDue(const PictureFacts& facts) const;

  std::optional<Shown> last_;        // the last picture that was shown
  std::optional<double> far_since_;  // when pictures began to wait for the audio
  std::optional<double> distance_;   // constant distance of the pictures from the clock
};

}  // namespace player

#endif  // HOST_PLAYER_PICTURE_TIMING_H_
