// When a run ends. The library has no end-of-stream call, so silence is what tells the end.
#ifndef HOST_SHARED_END_RULE_H_
#define HOST_SHARED_END_RULE_H_

#include <optional>

namespace host {

enum class EndReason {
  kExpected,     // the expected frames or line have been received
  kIdle,         // nothing came for too long
  kStopAfter,    // its time was over
  kInterrupted,  // Ctrl-C or a termination signal
  kRefused,      // BeginDownload said no
};

// "expected", "idle", "stop-after", "interrupted" or "refused".
const char* NameOf(EndReason reason);

// How long a run goes on after it has received what was expected: a frame that follows by
// mistake, a repeated one for instance, is still received and counted. Nothing shows that none
// follows.
inline constexpr double kSettleMs = 200;

struct EndRule {
  double idle_ms;
  std::optional<double> stop_after_ms;
};

// A moment of a run, by the host's clock.
struct RunMoment {
  double now_ms;
  double began_ms;         // when the run began
  double last_arrival_ms;  // when anything came last, or what is waited for was started
  bool interrupted;
  // Since when what was expected has been received.
  std::optional<double> expected_since_ms = std::nullopt;
};

// Why the run ends at that moment; nothing when it goes on.
std::optional<EndReason> ReasonToEnd(const EndRule& rule, const RunMoment& moment);

}  // namespace host

#endif  // HOST_SHARED_END_RULE_H_
