#include "playback.h"

#include <exception>
#include <utility>

#include "audio_decoder.h"
#include "start_gate.h"

namespace player {
namespace {

constexpr std::size_t kMaxDecodedPictures = 8;

}  // namespace

Playback::Playback(PlayCounts& counts, Settings settings)
    : counts_(counts),
      settings_(std::move(settings)),
      frames_(settings_.limits),
      pictures_(kMaxDecodedPictures),
      audio_(clock_),
      video_thread_([this] { DecodeVideo(); }) {
  try {
    audio_thread_ = std::thread([this] { DecodeAudio(); });
  } catch (...) {  // no second thread could be started: end the first before destroying it
    Close();
    video_thread_.join();
    throw;
  }
}

void Playback::Close() {
  closed_ = true;
  frames_.Close();
  pictures_.Close();
  audio_.Close();
}

Playback::~Playback() {
  Close();
  video_thread_.join();
  audio_thread_.join();
}

void Playback::Tick(double now) {
  if (!clock_.HasStarted()) TryToStart(now);
  clock_.SetStarved(pictures_.IsEmpty() && audio_.IsEmpty(), now);
}

void Playback::TryToStart(double now) {
  StartFacts facts;
  facts.first_picture = pictures_.Peek(0, [](const Picture& picture) { return picture.seconds; });
  facts.first_audio = audio_.NextSeconds();
  if (!facts.first_picture && !facts.first_audio) return;
  if (!first_ready_) first_ready_ = now;
  facts.waited = now - *first_ready_;
  facts.full = frames_.IsFull(Kind::kVideo) || frames_.IsFull(Kind::kAudio) || frames_.HasEnded();
  if (const auto time = StartTime(facts)) clock_.Start(*time, now);
}

bool Playback::IsPlayedOut() const {
  return frames_.IsIdle() && !video_pending_.load() && pictures_.IsEmpty() && audio_.IsEmpty();
}

// An exception in one step, such as std::bad_alloc, must not end the program.
void Playback::Guarded(const std::function<void()>& step) {
  try {
    step();
  } catch (const std::exception&) {
    ++counts_.errors;
  }
}

void Playback::DecodeVideo() {
  while (!closed_.load()) {
    if (const auto frame = frames_.Pop(Kind::kVideo, video_pending_.load())) {
      video_pending_ = true;
      Guarded([&] { DecodeVideoUnits(gatherer_.Add(*frame)); });
    } else if (video_pending_.load() && frames_.HasEnded()) {
      Guarded([this] { FinishVideo(); });
      gatherer_.SkipToEntryPoint();
      video_pending_ = false;
    }
  }
}

void Playback::DecodeVideoUnits(const std::vector<MediaUnit>& units) {
  const std::uint64_t skipped_units = gatherer_.skipped_units();
  counts_.skipped_units += skipped_units - std::exchange(skipped_units_, skipped_units);
  for (const MediaUnit& unit : units) {
    if (!decoder_) {
      decoder_.emplace(*gatherer_.codec(), settings_.pictures_shown_later(), counts_,
                       [this](Picture picture) { pictures_.Push(std::move(picture)); });
    }
    decoder_->Decode(unit);
  }
}

void Playback::FinishVideo() {
  DecodeVideoUnits(gatherer_.Finish());
  if (decoder_) decoder_->Drain();
}

void Playback::DecodeAudio() {
  std::optional<AudioDecoder> decoder;
  while (!closed_.load()) {
    const auto frame = frames_.Pop(Kind::kAudio, false);
    if (!frame || IsLeftover(*frame)) continue;
    Guarded([&] {
      if (!decoder) {
        decoder.emplace(counts_, [this](AudioChunk chunk) { audio_.Push(std::move(chunk)); });
      }
      decoder->Decode(*frame);
    });
  }
}

// After a stop, the demultiplexer may still hold an unfinished frame. It is delivered first after
// the next start, and has no time.
bool Playback::IsLeftover(const MediaUnit& frame) {
  const bool is_first = !std::exchange(audio_started_, true);
  return is_first && settings_.may_begin_with_leftover && frame.pts == 0;
}

}  // namespace player
