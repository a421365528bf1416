// When a run ends. The library does not report the end of a stream, so a host waits for silence.
#ifndef HOST_SHARED_END_RULE_H_
#define HOST_SHARED_END_RULE_H_

#include <optional>

namespace host {

enum class EndReason {
  kExpected,     // the expected frames or line have been received
  kIdle,         // nothing received for too long
  kStopAfter,    // the time limit has been reached
  kInterrupted,  // Ctrl-C or a termination signal
  kRefused,      // BeginDownload returned false
};

// "expected", "idle", "stop-after", "interrupted" or "refused".
const char* NameOf(EndReason reason);

// How long a run continues after it has received what was expected, so that a surplus frame, such
// as a duplicate, is still received and counted. The library gives no sign that no more frames
// follow.
inline constexpr double kSettleMs = 200;

struct EndRule {
  double idle_ms;
  std::optional<double> stop_after_ms;
};

// The state of a run at one moment, by the host's clock.
struct RunMoment {
  double now_ms;
  double began_ms;         // start of the run
  double last_arrival_ms;  // last call from the library, or the start of the download
  bool interrupted;
  // When the expected frames or line were complete; nullopt before.
  std::optional<double> expected_since_ms = std::nullopt;
};

// The reason to end the run now, or nullopt.
std::optional<EndReason> ReasonToEnd(const EndRule& rule, const RunMoment& moment);

}  // namespace host

#endif  // HOST_SHARED_END_RULE_H_
