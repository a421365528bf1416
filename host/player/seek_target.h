// Where a seek key leads.
#ifndef HOST_PLAYER_SEEK_TARGET_H_
#define HOST_PLAYER_SEEK_TARGET_H_

#include <optional>

namespace player {

// `step` seconds away from `position`, but not before the beginning, and not so near to the end of
// a stream of known duration that nothing would be left to play. A duration that lies before the
// position is not believed: some streams tell only what has come.
double SeekTarget(double position, double step, std::optional<double> duration);

}  // namespace player

#endif  // HOST_PLAYER_SEEK_TARGET_H_
