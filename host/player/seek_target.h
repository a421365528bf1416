// The target of a seek key.
#ifndef HOST_PLAYER_SEEK_TARGET_H_
#define HOST_PLAYER_SEEK_TARGET_H_

#include <optional>

namespace player {

// `step` seconds from `position`, but not before the beginning, and not so close to a known end
// that nothing would be left to play. A duration that does not exceed the position is ignored: some
// streams report only the part received so far.
double SeekTarget(double position, double step, std::optional<double> duration);

}  // namespace player

#endif  // HOST_PLAYER_SEEK_TARGET_H_
