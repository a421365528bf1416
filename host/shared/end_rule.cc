#include "end_rule.h"

namespace host {

const char* NameOf(EndReason reason) {
  switch (reason) {
    case EndReason::kExpected:
      return "expected";
    case EndReason::kIdle:
      return "idle";
    case EndReason::kStopAfter:
      return "stop-after";
    case EndReason::kInterrupted:
      return "interrupted";
    case EndReason::kRefused:
      return "refused";
  }
  return "";
}

std::optional<EndReason> ReasonToEnd(const EndRule& rule, const RunMoment& moment) {
  if (moment.interrupted) return EndReason::kInterrupted;
  if (rule.stop_after_ms && moment.now_ms - moment.began_ms >= *rule.stop_after_ms) {
    return EndReason::kStopAfter;
  }
  if (moment.expected_since_ms && moment.now_ms - *moment.expected_since_ms >= kSettleMs) {
    return EndReason::kExpected;
  }
  if (moment.now_ms - moment.last_arrival_ms >= rule.idle_ms) return EndReason::kIdle;
  return std::nullopt;
}

}  // namespace host
