#include "text_log.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace report {
namespace {

std::string Shortened(const std::string& line) {
  if (line.size() <= kLongestText) return line;
  return line.substr(0, kLongestText) + "... (" + std::to_string(line.size()) + " bytes)";
}

}  // namespace

void TextLog::Add(double ms, TextKind kind, const std::string& line) {
  ++(kind == TextKind::kMessage ? messages_ : results_);
  if (kind == TextKind::kMessage) CountFailure(ms, line);
  TimedText text{ms, kind, Shortened(line)};
  if (first_.size() < kFirstTexts) {
    first_.push_back(std::move(text));
    return;
  }
  newest_.push_back(std::move(text));
  if (newest_.size() > kNewestTexts) newest_.pop_front();
}

std::uint64_t TextLog::Count(TextKind kind) const {
  return kind == TextKind::kMessage ? messages_ : results_;
}

std::uint64_t TextLog::Dropped() const {
  return messages_ + results_ - first_.size() - newest_.size();
}

std::vector<TimedText> TextLog::Kept() const {
  std::vector<TimedText> kept = first_;
  kept.insert(kept.end(), newest_.begin(), newest_.end());
  return kept;
}

std::vector<FailureLines> TextLog::Failures() const {
  std::vector<FailureLines> received;
  std::copy_if(failures_.begin(), failures_.end(), std::back_inserter(received),
               [](const FailureLines& lines) { return lines.count > 0; });
  return received;
}

void TextLog::CountFailure(double ms, std::string_view line) {
  for (FailureLines& lines : failures_) {
    if (!line.starts_with(lines.beginning)) continue;
    if (lines.count == 0) lines.first_ms = ms;
    ++lines.count;
  }
}

}  // namespace report
