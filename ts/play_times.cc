#include "ts/play_times.h"

namespace stream {
namespace {

// Counts ticks modulo 2^64: a sum that rounds up to 2^64 becomes 0.
std::uint64_t ToTicks(float value) {
  constexpr float kWrap = 18446744073709551616.0F;  // 2^64
  return value >= 0.0F && value < kWrap ? static_cast<std::uint64_t>(value) : 0;
}

}  // namespace

std::uint64_t PlayTimeInterpolator::InitialPlayTime(std::uint64_t pts) const {
  if (base_ == 0) return 0;
  return pts >= base_ ? pts - base_ : base_ - pts;
}

void PlayTimeInterpolator::FramePushed(const FrameQueue& queue) {
  const std::uint64_t pts = queue.tail->pts;
  if (anchor_ && pts <= anchor_->pts) return;  // out of order: never an anchor
  if (anchor_) Assign(queue, Step(queue.pushed - anchor_->sequence + 1));
  prev_anchor_ = anchor_;
  anchor_ = Anchor{pts, queue.pushed, queue.tail};
  if (!prev_anchor_ || base_ == 0) base_ = pts;
}

// Kept for compatibility: divides as integers, then converts to float.
float PlayTimeInterpolator::Step(std::uint64_t node_count) const {
  const std::uint64_t from = prev_anchor_ ? prev_anchor_->pts : base_;
  const std::uint64_t whole_step = (anchor_->pts - from) / node_count;
  return static_cast<float>(whole_step);
}

// Visits the nodes from the anchor to the last but one. Nodes that were already popped count in the
// sum too, since every addition rounds to single precision.
void PlayTimeInterpolator::Assign(const FrameQueue& queue, float step) const {
  const std::uint64_t first = queue.FirstSequence();
  FrameNode* node = anchor_->sequence >= first ? anchor_->node : queue.head;
  std::uint64_t t = prev_anchor_ ? prev_anchor_->pts - base_ : 0;
  for (std::uint64_t sequence = anchor_->sequence; sequence < queue.pushed; ++sequence) {
    t = ToTicks(static_cast<float>(t) + step);
    if (sequence < first) continue;
    node->playTime = t;
    node = node->next;
  }
}

}  // namespace stream
