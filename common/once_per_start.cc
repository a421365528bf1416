#include "common/once_per_start.h"

namespace {

std::atomic<std::uint64_t> g_starts{0};

}  // namespace

void CountStart() { ++g_starts; }

bool OncePerStart::IsFirst() {
  const std::uint64_t starts = g_starts.load();
  return seen_.exchange(starts) != starts;
}
