// The staging buffer of the TS pipeline, and what has been demultiplexed from it.
#ifndef TESTS_SUPPORT_TS_STAGING_H_
#define TESTS_SUPPORT_TS_STAGING_H_

#include <cstdint>
#include <mutex>
#include <vector>

#include "common/frame_queue.h"
#include "ts/ts_state.h"

namespace stream {

inline void StageTsBytes(const std::vector<std::uint8_t>& bytes) {
  const std::lock_guard lock(g_tsStreamLock);
  g_tsStreamBuffer->Append(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
}

inline std::vector<std::uint8_t> StagedTsBytes() {
  const std::lock_guard lock(g_tsStreamLock);
  const std::uint8_t* const bytes = g_tsStreamBuffer->ContinuePtr();
  return {bytes, bytes + g_tsStreamBuffer->Size()};
}

// The number of frames pushed since the last reset of the queues.
inline std::uint64_t PushedVideoFrames() {
  const std::lock_guard lock(g_frameQueueMutex);
  return g_videoQueue->pushed;
}

}  // namespace stream

#endif  // TESTS_SUPPORT_TS_STAGING_H_
