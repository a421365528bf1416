// The two process-wide frame queues between the parse side of a pipeline, which pushes access
// units, and its two delivery threads, which hand them to the player. Every pipeline uses the same
// two; one pipeline plays at a time.
//
// Ownership: a node belongs to its queue until it is popped, then to whoever popped it. Its payload
// goes with it.
//
// Threads: PushFrame and PopFrame work on the queue they are given and take no lock. The two global
// queues are shared: they, their nodes and the pointers to them are touched only with
// g_frameQueueMutex held. Never call the player with it held.
#ifndef COMMON_FRAME_QUEUE_H_
#define COMMON_FRAME_QUEUE_H_

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <new>

#include "common/frame_memory.h"

// One frame: an access unit, or for a transport stream the payload of one PES packet.
struct FrameRecord {
  std::uint64_t pts = 0;         // presentation timestamp, 90 kHz
  std::uint64_t dts = 0;         // decode timestamp, 90 kHz
  std::uint64_t playTime = 0;    // delivery timestamp, 90 kHz
  std::uint8_t* data = nullptr;  // the payload: a private copy
  std::int32_t size = 0;         // payload length in bytes
  std::uint32_t isVideo = 0;     // 1 for a video frame (FLV writes 1 on its audio frames as well)
  std::uint32_t intact = 0;      // 1 when the frame was assembled without a continuity gap
};

// Nodes are stored beside their payloads (frame_memory.h), so that one that was delivered holds no
// memory either. Hence a `new` that takes the kind.
struct FrameNode : FrameRecord {
  FrameNode* next = nullptr;  // towards the tail

  static void* operator new(std::size_t size, PayloadKind kind) noexcept;
  static void operator delete(void* node) noexcept;  // NOLINT(misc-new-delete-overloads)
};

struct FrameQueue {
  std::uint32_t count = 0;       // nodes in the queue
  std::uint32_t totalBytes = 0;  // sum of their sizes
  FrameNode* head = nullptr;     // oldest node, taken next
  FrameNode* tail = nullptr;     // newest node
  std::uint64_t heldBytes = 0;   // the same sum, which the 32 bits may not hold
  std::uint64_t pushed = 0;      // nodes ever pushed: the place of the newest one, counted from 1

  // Place of the oldest node still queued; one past `pushed` when there is none.
  std::uint64_t FirstPlace() const { return pushed - count + 1; }
};

// Releases a node and its payload.
struct FrameNodeDeleter {
  void operator()(FrameNode* node) const;
};
using FrameNodePtr = std::unique_ptr<FrameNode, FrameNodeDeleter>;

// Fills `frame` with a copy of the payload; its playTime is left for the caller to set. Returns 0,
// or -1 when there is no memory or the size is negative. The copy is the caller's until PushFrame
// takes it; ReleasePayload gives back one that was not pushed.
int CreateFrameNode(FrameRecord& frame, std::uint64_t pts, std::uint64_t dts,
                    const std::uint8_t* payload, std::int32_t size, bool is_video, bool intact);
void ReleasePayload(FrameRecord& frame);

// The same with the payload left for the caller to fill, who saves a copy by it. `is_video` also
// decides with which frames' payloads this one shares memory: a producer that marks an audio frame
// as video does so afterwards.
int AllocateFrameNode(FrameRecord& frame, std::uint64_t pts, std::uint64_t dts, std::int32_t size,
                      bool is_video, bool intact);

// Appends a node with the frame's fields, its payload now the node's. Returns 0, or -1 when there
// is no queue or no memory; the payload then stays the caller's.
int PushFrame(const FrameRecord& frame, FrameQueue* queue);

// Takes the oldest node; null when there is none or no queue.
FrameNode* PopFrame(FrameQueue* queue);

extern std::mutex g_frameQueueMutex;
extern FrameQueue* g_videoQueue;  // guarded by g_frameQueueMutex; null until first used
extern FrameQueue* g_audioQueue;  // guarded by g_frameQueueMutex; null until first used

// Returns `queue`, made first if it is null; null when there is no memory for it. With
// g_frameQueueMutex held.
FrameQueue* EnsureQueue(FrameQueue*& queue);

// Releases what a global queue holds.
void ClearVideoQueue();
void ClearAudioQueue();

// Takes the oldest frame of a global queue; empty when there is none.
FrameNodePtr PopVideoFrame();
FrameNodePtr PopAudioFrame();

// Makes both global queues new and empty, releasing what they hold, and begins a new generation.
// Called by every pipeline each time it starts.
void ResetFrameQueues();

// Releases both global queues and whatever they hold; they are null until they are used again.
// Begins a new generation too.
void ReleaseFrameQueues();

// Counts the calls of ResetFrameQueues and ReleaseFrameQueues. A producer that keeps state per
// stream (the transport stream demultiplexer) compares it with the generation it has seen, and
// starts afresh when it has changed.
std::uint64_t FrameQueueGeneration();

#endif  // COMMON_FRAME_QUEUE_H_
