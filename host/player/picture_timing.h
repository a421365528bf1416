// What to do with the next picture: show it, wait for its time, or skip it.
//
// Pictures follow the clock, and the clock follows the sound. Where the times of a stream jump,
// pictures and sound get there one after the other. Pictures that get there first wait for the
// sound; where it never does, they go on at their own distance from it. Pictures that are left when
// the sound has got there go on at their own pace.
//
// All times in seconds. For one thread.
#ifndef HOST_PLAYER_PICTURE_TIMING_H_
#define HOST_PLAYER_PICTURE_TIMING_H_

#include <optional>

namespace player {

struct PictureFacts {
  double time = 0;             // of the picture
  std::optional<double> next;  // the time of the one after it, if that is there
  double due = 0;              // the stream time that is due now
  bool is_heard = false;       // whether the sound sets the clock
  double now = 0;              // the host's time
};

struct PictureVerdict {
  enum class Action {
    kShow,
    kSkip,
    kWait,
    kSetClock,  // to the time of the picture
  };
  Action action = Action::kShow;
  std::optional<double> wait = {};  // how long, where that is known
  // Whether the picture is judged by the clock alone, so that its time and that of the sound can be
  // compared; else it goes on at its own distance from the sound.
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
  std::optional<double> far_since_;  // since when pictures wait for the sound
  std::optional<double> distance_;   // how far from the clock they go on
};

}  // namespace player

#endif  // HOST_PLAYER_PICTURE_TIMING_H_
