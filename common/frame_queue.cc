#include "common/frame_queue.h"

#include <cstddef>
#include <cstring>
#include <new>

namespace stream {

Mutex g_frameQueueMutex;
FrameQueue* g_videoQueue = nullptr;
FrameQueue* g_audioQueue = nullptr;

namespace {

RunCounter g_queueRuns;

// Taken from the payload, since FLV sets `isVideo` on its audio frames too.
PayloadKind KindOf(const FrameRecord& frame) {
  return frame.data == nullptr ? PayloadKind::kVideo : KindOfPayload(frame.data);
}

void Drain(FrameQueue* queue) {
  while (const FrameNodePtr node{PopFrame(queue)}) {
  }
}

void ReleaseQueue(FrameQueue*& queue) REQUIRES(g_frameQueueMutex) {
  Drain(queue);
  delete queue;
  queue = nullptr;
}

void ReplaceQueue(FrameQueue*& queue) REQUIRES(g_frameQueueMutex) {
  Drain(queue);
  if (queue != nullptr) {
    *queue = FrameQueue();
  } else {
    queue = new (std::nothrow) FrameQueue;
  }
}

}  // namespace

void* FrameNode::operator new(std::size_t size, PayloadKind kind) noexcept {
  return AllocatePayload(size, kind);
}

void FrameNode::operator delete(void* node) noexcept {  // NOLINT(misc-new-delete-overloads)
  FreePayload(static_cast<std::uint8_t*>(node));
}

void FrameNodeDeleter::operator()(FrameNode* node) const {
  ReleasePayload(*node);
  delete node;
}

int CreateFrameNode(FrameRecord& frame, std::uint64_t pts, std::uint64_t dts,
                    const std::uint8_t* payload, std::int32_t size, bool is_video, bool intact) {
  if (AllocateFrameNode(frame, pts, dts, size, is_video, intact) != 0) return -1;
  if (size > 0) std::memcpy(frame.data, payload, static_cast<std::size_t>(size));
  return 0;
}

int AllocateFrameNode(FrameRecord& frame, std::uint64_t pts, std::uint64_t dts, std::int32_t size,
                      bool is_video, bool intact) {
  if (size < 0) return -1;
  const PayloadKind kind = is_video ? PayloadKind::kVideo : PayloadKind::kAudio;
  std::uint8_t* const payload = AllocatePayload(static_cast<std::size_t>(size), kind);
  if (payload == nullptr) return -1;
  frame.pts = pts;
  frame.dts = dts;
  frame.data = payload;
  frame.size = size;
  frame.isVideo = is_video ? 1 : 0;
  frame.intact = intact ? 1 : 0;
  return 0;
}

void ReleasePayload(FrameRecord& frame) {
  FreePayload(frame.data);
  frame.data = nullptr;
}

int PushFrame(const FrameRecord& frame, FrameQueue* queue) {
  if (queue == nullptr) return -1;
  auto* node = new (KindOf(frame)) FrameNode{frame, nullptr};
  if (node == nullptr) return -1;
  if (queue->tail == nullptr || queue->head == nullptr) {
    queue->head = node;
  } else {
    queue->tail->next = node;
  }
  queue->tail = node;
  queue->count += 1;
  queue->pushed += 1;
  queue->totalBytes += static_cast<std::uint32_t>(node->size);
  queue->heldBytes += static_cast<std::uint32_t>(node->size);
  return 0;
}

FrameNode* PopFrame(FrameQueue* queue) {
  if (queue == nullptr || queue->head == nullptr) return nullptr;
  FrameNode* node = queue->head;
  queue->head = node->next;
  if (queue->head == nullptr) queue->tail = nullptr;
  queue->count -= 1;
  queue->totalBytes -= static_cast<std::uint32_t>(node->size);
  queue->heldBytes -= static_cast<std::uint32_t>(node->size);
  return node;
}

FrameQueue* EnsureQueue(bool is_video) {
  FrameQueue*& queue = is_video ? g_videoQueue : g_audioQueue;
  if (queue == nullptr) queue = new (std::nothrow) FrameQueue;
  return queue;
}

FrameNodePtr PopVideoFrame() {
  const MutexLock lock(g_frameQueueMutex);
  return FrameNodePtr(PopFrame(g_videoQueue));
}

FrameNodePtr PopAudioFrame() {
  const MutexLock lock(g_frameQueueMutex);
  return FrameNodePtr(PopFrame(g_audioQueue));
}

void ClearVideoQueue() {
  const MutexLock lock(g_frameQueueMutex);
  Drain(g_videoQueue);
}

void ClearAudioQueue() {
  const MutexLock lock(g_frameQueueMutex);
  Drain(g_audioQueue);
}

void ResetFrameQueues() {
  const MutexLock lock(g_frameQueueMutex);
  ReplaceQueue(g_audioQueue);
  ReplaceQueue(g_videoQueue);
  g_queueRuns.Next();
}

void ReleaseFrameQueues() {
  const MutexLock lock(g_frameQueueMutex);
  ReleaseQueue(g_videoQueue);
  ReleaseQueue(g_audioQueue);
  g_queueRuns.Next();
}

RunId FrameQueueRun() { return g_queueRuns.Current(); }

}  // namespace stream
