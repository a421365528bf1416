// The two process-wide frame queues. The parser of a pipeline pushes frames, and its two delivery
// threads pop them for the player. All pipelines use the same two queues; one pipeline plays at a
// time.
//
// Ownership: a node belongs to its queue until it is popped, then to the caller that popped it. The
// payload belongs to the node.
//
// Threads: PushFrame and PopFrame take no lock. g_frameQueueMutex also guards the nodes of the two
// global queues. Never call the player while it is held.
#ifndef COMMON_FRAME_QUEUE_H_
#define COMMON_FRAME_QUEUE_H_

#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>

#include "common/frame_memory.h"
#include "common/run_id.h"
#include "platform/mutex.h"

namespace stream {

// One frame: a NAL unit or an AAC frame. From a transport stream, the payload of one PES packet.
struct FrameRecord {
  std::uint64_t pts = 0;         // presentation timestamp, 90 kHz
  std::uint64_t dts = 0;         // decode timestamp, 90 kHz
  std::uint64_t playTime = 0;    // delivery timestamp, 90 kHz
  std::uint8_t* data = nullptr;  // the payload, a private copy
  std::int32_t size = 0;         // payload length in bytes
  std::uint32_t isVideo = 0;     // 1 for a video frame (FLV sets it on audio frames too)
  std::uint32_t intact = 0;      // 1 if the frame was assembled without a continuity gap
};

// Nodes are allocated beside their payloads (frame_memory.h), so that the memory of delivered nodes
// returns to the system too. Therefore `new` takes the kind.
struct FrameNode : FrameRecord {
  FrameNode* next = nullptr;  // towards the tail

  static void* operator new(std::size_t size, PayloadKind kind) noexcept;
  static void operator delete(void* node) noexcept;  // NOLINT(misc-new-delete-overloads)
};

struct FrameQueue {
  std::uint32_t count = 0;       // nodes in the queue
  std::uint32_t totalBytes = 0;  // sum of their sizes
  FrameNode* head = nullptr;     // oldest node, popped next
  FrameNode* tail = nullptr;     // newest node
  std::uint64_t heldBytes = 0;   // the same sum without 32-bit overflow
  std::uint64_t pushed = 0;      // nodes ever pushed: the newest one's sequence number, from 1

  // Sequence number of the oldest queued node; `pushed` + 1 if the queue is empty.
  std::uint64_t FirstSequence() const { return pushed - count + 1; }
};

// Releases a node and its payload.
struct FrameNodeDeleter {
  void operator()(FrameNode* node) const;
};
using FrameNodePtr = std::unique_ptr<FrameNode, FrameNodeDeleter>;

// Fills `frame` with a copy of the payload. The caller sets playTime. Returns 0, or -1 if there is
// no memory or the size is negative. The caller owns the copy until PushFrame succeeds. Use
// ReleasePayload to release a copy that was not pushed.
int CreateFrameNode(FrameRecord& frame, std::uint64_t pts, std::uint64_t dts,
                    const std::uint8_t* payload, std::int32_t size, bool is_video, bool intact);
void ReleasePayload(FrameRecord& frame);

// As CreateFrameNode, but the caller fills the payload, which saves a copy. `is_video` also selects
// the kind of the payload's memory (frame_memory.h), so a producer that marks an audio frame as
// video sets `isVideo` afterwards.
int AllocateFrameNode(FrameRecord& frame, std::uint64_t pts, std::uint64_t dts, std::int32_t size,
                      bool is_video, bool intact);

// Appends a node with the frame's fields. The node owns the payload. Returns 0, or -1 if `queue` is
// null or there is no memory; the caller then still owns the payload.
int PushFrame(const FrameRecord& frame, FrameQueue* queue);

// Removes the oldest node and returns it; null if `queue` is null or empty.
FrameNode* PopFrame(FrameQueue* queue);

// Both queues are null until first used.
extern Mutex g_frameQueueMutex;
extern FrameQueue* g_videoQueue GUARDED_BY(g_frameQueueMutex) PT_GUARDED_BY(g_frameQueueMutex);
extern FrameQueue* g_audioQueue GUARDED_BY(g_frameQueueMutex) PT_GUARDED_BY(g_frameQueueMutex);

// Returns the global queue of this kind and creates it first if it is null. Returns null if there
// is no memory.
FrameQueue* EnsureQueue(bool is_video) REQUIRES(g_frameQueueMutex);

// Release all frames of a global queue.
void ClearVideoQueue() EXCLUDES(g_frameQueueMutex);
void ClearAudioQueue() EXCLUDES(g_frameQueueMutex);

// Remove the oldest frame of a global queue and return it; empty if there is none.
FrameNodePtr PopVideoFrame() EXCLUDES(g_frameQueueMutex);
FrameNodePtr PopAudioFrame() EXCLUDES(g_frameQueueMutex);

// Replaces both global queues with empty ones, releases their frames and begins the next run.
// Every pipeline calls it at each start.
void ResetFrameQueues() EXCLUDES(g_frameQueueMutex);

// Deletes both global queues and their frames. The pointers are null until the next use. Also
// begins the next run.
void ReleaseFrameQueues() EXCLUDES(g_frameQueueMutex);

// Returns the id of the current run of both queues. A producer with state for each stream (the
// transport stream demultiplexer) compares it with the last one it has read, and resets its state
// if it has changed.
RunId FrameQueueRun();

}  // namespace stream

#endif  // COMMON_FRAME_QUEUE_H_
