// When a run ends. The library has no end-of-stream call, so silence is what tells the end.
#ifndef HOST_SHARED_END_RULE_H_
#define HOST_SHARED_END_RULE_H_

#include <optional>

namespace host {

enum class EndReason {
  kIdle,         // nothing came for too long
  kStopAfter,    // its time was over
  kInterrupted,  // Ctrl-C or a termination signal
  kRefused,      // BeginDownload said no
};

// "idle", "stop-after", "interrupted" or "refused".
const char* NameOf(EndReason reason);

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
};

// Why the run ends at that moment; nothing when it goes on.
std::optional<EndReason> ReasonToEnd(const EndRule& rule, const RunMoment& moment);

}  // namespace host

#endif  // HOST_SHARED_END_RULE_H_
