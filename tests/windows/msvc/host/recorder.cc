#include "recorder.h"

#include <stream_player.h>

#include "report.h"

namespace {

constexpr std::uint64_t kTicksPerSecond = 90'000;
constexpr float kMilliseconds = 1000;  // in a second

// The checksum of ISO 3309, as zlib computes it.
std::uint32_t Crc32(const std::uint8_t* bytes, std::int32_t size) {
  std::uint32_t crc = 0xFFFFFFFF;
  for (std::int32_t i = 0; i < size; ++i) {
    crc ^= bytes[i];
    for (int bit = 0; bit < 8; ++bit) crc = crc >> 1 ^ (0xEDB88320 & (0U - (crc & 1)));
  }
  return ~crc;
}

bool BeginsWith(const std::string& text, const std::string& begin) {
  return text.size() >= begin.size() && memcmp(text.data(), begin.data(), begin.size()) == 0;
}

}  // namespace

void Recorder::Lines::Record(const std::string& line) {
  last = line;
  if (count < kKept) kept[count] = line;
  ++count;
}

void Recorder::OnDuration(float seconds) { Record("duration", seconds); }
void Recorder::OnBufferedTime(float seconds) { Record("buffered", seconds); }

void Recorder::Record(const char* kind, float seconds) {
  const Lock lock(lock_);
  ExpectIsOpen();
  Expect(seconds >= 0, "a time below 0");
  if (prints_all_) {
    Print(std::string(kind) + "," + Decimal(static_cast<std::uint64_t>(seconds * kMilliseconds)));
  }
}

void Recorder::OnAudioClock(float seconds) {
  const Lock lock(lock_);
  ExpectIsOpen();
  last_clock_ = seconds;
}

void Recorder::OnAudioFrame(MediaFrame frame) {
  const Lock lock(lock_);
  Expect(last_clock_ == static_cast<float>(frame.playTime / kTicksPerSecond),
         "an audio clock differs from the play time of its frame");
  Record("audio", audio_frames_++, frame);
}

void Recorder::OnVideoFrame(MediaFrame frame) {
  const Lock lock(lock_);
  if (video_frames_ == 0) first_video_play_time_ = frame.playTime;
  Record("video", video_frames_++, frame);
}

void Recorder::Record(const char* kind, std::uint64_t index, const MediaFrame& frame) {
  ExpectIsOpen();
  if (!prints_all_) return;
  std::string row = kind;
  const auto size = static_cast<std::uint64_t>(frame.size);
  const std::uint64_t numbers[] = {index,          frame.pts, frame.dts,
                                   frame.playTime, size,      Crc32(frame.data, frame.size)};
  for (const std::uint64_t number : numbers) row += "," + Decimal(number);
  Print(row);
}

void Recorder::Record(Lines& lines, const std::string& line) {
  const Lock lock(lock_);
  ExpectIsOpen();
  lines.Record(line);
}

void Recorder::OnMessage(std::string line) { Record(messages_, line); }

// Moves the line out of the parameter, which is then empty when it is destroyed.
void Recorder::OnPlayResult(std::string line) {
  const std::string moved = static_cast<std::string&&>(line);
  Record(results_, moved);
}

void Recorder::ExpectIsOpen() const {
  Expect(!expects_no_call_, "the player was called after the stop");
}

std::string Recorder::LastMessage() const {
  const Lock lock(lock_);
  return messages_.last;
}

bool Recorder::HasMessage(const std::string& begin) const {
  const Lock lock(lock_);
  for (const std::string& line : messages_.kept) {
    if (BeginsWith(line, begin)) return true;
  }
  return false;
}

bool Recorder::HasResult(const std::string& line) const {
  const Lock lock(lock_);
  for (const std::string& kept : results_.kept) {
    if (kept == line) return true;
  }
  return false;
}

std::uint64_t Recorder::Messages() const {
  const Lock lock(lock_);
  return messages_.count;
}

std::uint64_t Recorder::Frames() const {
  const Lock lock(lock_);
  return video_frames_ + audio_frames_;
}

std::uint64_t Recorder::FirstVideoPlayTime() const {
  const Lock lock(lock_);
  return first_video_play_time_;
}

void Recorder::ExpectNoCall() {
  const Lock lock(lock_);
  expects_no_call_ = true;
}

void Recorder::Forget() {
  const Lock lock(lock_);
  expects_no_call_ = false;
  Lines* const both[] = {&messages_, &results_};
  for (Lines* lines : both) {
    for (std::string& line : lines->kept) line = std::string();
    lines->last = std::string();
    lines->count = 0;
  }
  video_frames_ = audio_frames_ = 0;
}

void FailWaiting(const char* what) { Fail(std::string("not within 20 seconds: ") + what); }
