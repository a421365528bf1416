#include "hls/window_classifier.h"

#include <algorithm>
#include <utility>

namespace stream {
namespace {

// A cache node may lag behind by this many segments. Numbers that were wrong are trusted again
// after this many windows with correct numbers.
constexpr int kLongLag = 12;

// After this many windows with correct numbers, a window without an agreeing pair is trusted too.
constexpr int kProved = 3;

// The distance between two numbers. `to` must not be less than `from`.
std::uint64_t Distance(std::int64_t from, std::int64_t to) {
  return static_cast<std::uint64_t>(to) - static_cast<std::uint64_t>(from);
}

// Returns whether the window contradicts a remembered pair: the number is not below the window, but
// the window does not list this key under this number. A window that lists the key under this
// number and again under another one does not contradict the pair.
bool Contradicts(const PlaylistWindow& window, const NumberedSegment& pair) {
  if (pair.number < window.segments.front().number) return false;
  const auto found = std::lower_bound(
      window.segments.begin(), window.segments.end(), pair.number,
      [](const NumberedSegment& listed, std::int64_t number) { return listed.number < number; });
  return found == window.segments.end() || found->number != pair.number || found->key != pair.key;
}

}  // namespace

std::string WindowClassifier::IdentityOf(std::string_view key) const {
  const auto reused_at = memory_.ReusedAt(key);
  if (!reused_at) return std::string(key);
  return std::string(key) + '\n' + std::to_string(*reused_at);  // a key never contains a line break
}

WindowVerdict WindowClassifier::Follow(const PlaylistWindow& window) {
  reused_.clear();
  if (window.segments.empty()) return WindowVerdict::kGoesOn;
  Comparison found = Compare(window);
  const WindowVerdict verdict = Judge(window, found);
  if (verdict == WindowVerdict::kLateCopy) return verdict;
  if (verdict == WindowVerdict::kRestart) {
    Forget(late_run_.has_value());
    found = Comparison();
  }
  Accept(window, found);
  return verdict;
}

WindowClassifier::Comparison WindowClassifier::Compare(const PlaylistWindow& window) const {
  Comparison found;
  for (const NumberedSegment& pair : window.segments) {
    const auto number = memory_.NumberOf(pair.key);
    if (memory_.Contains(pair)) {
      ++found.agreeing;
    } else if (!number) {
      ++found.unknown;
    } else if (*number < window.first) {
      ++found.below;
    } else if (Contradicts(window, {*number, pair.key})) {
      ++found.contradicted;
    }
  }
  return found;
}

WindowVerdict WindowClassifier::Judge(const PlaylistWindow& window, const Comparison& found) {
  if (!first_ || proof_ < 0) return WindowVerdict::kGoesOn;
  const bool is_below = window.first < *first_;
  const bool is_old = found.agreeing == 0 && IsOfThePreviousRun(window);
  if (is_old || (is_below && found.unknown == 0 && !found.IsRenumbered())) {
    return HasMovedOnForLong(window) ? WindowVerdict::kRestart : WindowVerdict::kLateCopy;
  }
  late_run_.reset();
  const bool restarts = is_below && found.IsRenumbered();
  return restarts ? WindowVerdict::kRestart : WindowVerdict::kGoesOn;
}

bool WindowClassifier::IsOfThePreviousRun(const PlaylistWindow& window) const {
  return std::all_of(window.segments.begin(), window.segments.end(),
                     [this](const NumberedSegment& pair) { return previous_.Contains(pair); });
}

// A restart under the same names and numbers looks like a late copy, but it advances further than a
// cache node may lag behind. A copy that jumps is from another cache node, so counting starts
// again.
bool WindowClassifier::HasMovedOnForLong(const PlaylistWindow& window) {
  constexpr int kSteps = 3;
  const std::int64_t end = window.segments.back().number;
  const bool follows = late_run_ && end >= late_run_->end &&
                       (window.first <= late_run_->end || window.first - 1 == late_run_->end);
  if (!follows) {
    late_run_ = LateRun{end, end};
  } else if (end > late_run_->end) {
    late_run_->end = end;
    ++late_run_->steps;
  }
  return late_run_->steps >= kSteps &&
         Distance(late_run_->begin, late_run_->end) > std::uint64_t{kLongLag};
}

// Late copies of the previous run are still served for a while, so its pairs are kept. If a late
// run became the stream, the two runs cannot be distinguished and nothing is kept.
void WindowClassifier::Forget(bool is_late_run) {
  WindowClassifier empty;
  if (!is_late_run) empty.previous_ = std::move(memory_);
  *this = std::move(empty);
}

void WindowClassifier::WeighNumbers(const PlaylistWindow& window, const Comparison& found) {
  if (!first_) return;
  const bool has_moved = window.first > *first_;
  const bool is_plausible = found.agreeing > 0 || (has_moved && proof_ >= kProved);
  if (found.contradicted > 0 || (found.below > 0 && !is_plausible)) {
    proof_ = -kLongLag;
  } else if (found.below > 0 && found.agreeing == 0) {
    proof_ = 0;  // trusted now, but unproved again
  } else if (has_moved && found.agreeing > 0) {
    proof_ = std::min(proof_ + 1, kLongLag);
  }
  if (proof_ < 0 || proof_ == kLongLag) previous_ = SequenceMemory();
}

// Returns whether the key of a pair names another segment now. If no pair agrees, two more
// conditions apply. The key must have been absent for a whole window, since one playlist uses a key
// for one segment only. And no key may be unknown: otherwise another server numbers the segments
// differently, and part of its list was already played.
bool WindowClassifier::IsReused(const PlaylistWindow& window, const NumberedSegment& pair,
                                const Comparison& found) const {
  const auto number = memory_.NumberOf(pair.key);
  if (!number || *number >= window.first || memory_.Contains(pair)) return false;
  if (found.agreeing > 0) return true;
  return found.unknown == 0 && Distance(*number, pair.number) >= window.segments.size();
}

void WindowClassifier::Accept(const PlaylistWindow& window, const Comparison& found) {
  WeighNumbers(window, found);
  const bool may_reuse = first_ && window.first >= *first_ && proof_ >= 0;
  for (const NumberedSegment& pair : window.segments) {
    if (may_reuse && IsReused(window, pair, found)) {
      reused_.push_back({std::string(pair.key), IdentityOf(pair.key)});
      memory_.RecordReused(pair);
    } else {
      memory_.Record(pair);
    }
  }
  // Keep more pairs than the segment thread remembers segments, so that no key that it knows is
  // forgotten here.
  memory_.Trim(std::max(kRemembered, window.segments.size()) + kRemembered);
  first_ = window.first;
  late_run_.reset();
}

WindowClassifier& WindowClassifiers::Of(const std::string& source) {
  const auto known = std::find_if(classifiers_.begin(), classifiers_.end(),
                                  [&source](const auto& row) { return row.first == source; });
  if (known != classifiers_.end()) {
    classifiers_.splice(classifiers_.begin(), classifiers_, known);
  } else {
    classifiers_.emplace_front(source, WindowClassifier());
    if (classifiers_.size() > kRememberedSources) classifiers_.pop_back();
  }
  return classifiers_.front().second;
}

void WindowClassifiers::ForgetOthers() {
  if (!classifiers_.empty()) classifiers_.resize(1);
}

std::size_t WindowClassifiers::SizeOfNewest() const {
  return classifiers_.empty() ? 0 : classifiers_.front().second.Size();
}

}  // namespace stream
