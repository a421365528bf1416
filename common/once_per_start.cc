#include "common/once_per_start.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>

#include "common/run_id.h"

namespace stream {
namespace {

constexpr RunId kNever{UINT64_MAX};

struct LineState {
  std::atomic<RunId> last_run{kNever};  // in which the line was last logged
};

struct {
  RunCounter runs;
  std::array<LineState, static_cast<std::size_t>(OncePerStart::kCount)> lines;
} g_starts;

}  // namespace

void CountStart() { g_starts.runs.Next(); }

bool IsFirstSinceStart(OncePerStart line) {
  const RunId run = g_starts.runs.Current();
  return g_starts.lines[static_cast<std::size_t>(line)].last_run.exchange(run) != run;
}

}  // namespace stream
