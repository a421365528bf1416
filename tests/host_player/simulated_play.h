// The player from the decoded frames on, with a simulated clock, audio device, window and keys, so
// that every run is the same to the microsecond. For one thread.
#ifndef TESTS_HOST_PLAYER_SIMULATED_PLAY_H_
#define TESTS_HOST_PLAYER_SIMULATED_PLAY_H_

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "host/player/event_loop.h"
#include "host/player/presenter.h"
#include "tests/host/simulated_clock.h"
#include "tests/host_player/fake_downloader.h"
#include "tests/host_player/frame_at.h"
#include "tests/host_player/simulated_audio_device.h"

namespace player {

// The output of the decoders of one start, in order. `seconds` is the stream time; the item is
// decoded `after_ms` milliseconds after the start.
struct DecodedStream {
  struct Item {
    double seconds = 0;
    double after_ms = 0;
  };

  // Each chunk of audio has 1024 frames.
  static constexpr std::size_t kChunkFrames = 1024;
  static constexpr double kChunkSeconds = static_cast<double>(kChunkFrames) / kAudioSampleRate;
  static constexpr double kPictureSeconds = 0.04;

  DecodedStream& Pictures(double first, int count, double after_ms = 0) {
    for (int i = 0; i < count; ++i) pictures.push_back({first + i * kPictureSeconds, after_ms});
    return *this;
  }
  DecodedStream& Audio(double first, int chunks, double after_ms = 0) {
    for (int i = 0; i < chunks; ++i) audio.push_back({first + i * kChunkSeconds, after_ms});
    return *this;
  }

  std::vector<Item> pictures;
  std::vector<Item> audio;
};

// A picture that was shown.
struct Shown {
  double picture = 0;           // its stream time
  double at = 0;                // the moment when it became visible, in seconds
  std::optional<double> audio;  // the stream time that the device played then
};

class SimulatedPlay final : private Window, private CommandSource {
 public:
  SimulatedPlay() {
    downloader_.on_begin = [this](double start_seconds) { Begin(start_seconds); };
  }

  // For each start, plays the stream that `streams` returns for its position, to the end.
  void Run(std::function<DecodedStream(double start_seconds)> streams) {
    streams_ = std::move(streams);
    ASSERT_TRUE(control_.Begin());
    EventLoop({*this, *this, presenter_, control_, [] { return false; }}, true).Run();
    control_.End();
  }
  void Run(const DecodedStream& stream) {
    Run([stream](double) { return stream; });
  }

  void CommandAt(double seconds, Command command) { commands_.emplace(seconds * 1000, command); }
  // How long the window takes to show the picture with this number.
  void ShowSlowly(std::size_t picture, double ms) { slow_[picture] = ms; }

  SimulatedAudioDevice& device() { return device_; }
  const PlayCounts& counts() const { return counts_; }
  const std::vector<Shown>& shown() const { return shown_; }
  // A comparison as the player made it.
  struct Comparison {
    double picture = 0;
    double audio = 0;
  };
  const std::vector<Comparison>& compared() const { return compared_; }

  // The stream time of the audio that is heard at this moment; nullopt during silence.
  std::optional<double> AudioAt(double seconds) const {
    const auto sample = device_.HeardAt(seconds);
    if (!sample || sample->left == 0) return std::nullopt;
    const double chunk = chunk_seconds_.at(static_cast<std::size_t>(sample->left) - 1);
    return chunk + (static_cast<double>(sample->right) - 1) / kAudioSampleRate + sample->after;
  }

 private:
  // Window. The PTS of a frame is the number of the picture.
  bool Prepare(const AVFrame& /*frame*/) override { return true; }
  bool Show(const AVFrame& frame) override {
    const auto number = static_cast<std::size_t>(frame.pts);
    if (const auto slow = slow_.find(number); slow != slow_.end()) clock_.Advance(slow->second);
    shown_.push_back({picture_seconds_[number], Now(), AudioAt(Now())});
    return true;
  }
  void Redraw() override {}
  void SetTitle(const std::string& /*title*/) override {}
  void ToggleFullScreen() override {}

  // CommandSource. The loop asks for a command in each turn; the decoders work then too.
  std::optional<Command> Wait(double seconds) override {
    Decode();
    const double until = clock_.NowMs() + seconds * 1000;
    const auto next = commands_.begin();
    if (next == commands_.end() || next->first > until) {
      clock_.AdvanceTo(until);
      Decode();
      return std::nullopt;
    }
    clock_.AdvanceTo(next->first);
    const Command command = next->second;
    commands_.erase(next);
    return command;
  }

  void Begin(double start_seconds) {
    stream_ = streams_(start_seconds);
    began_ms_ = clock_.NowMs();
    next_picture_ = next_chunk_ = 0;
    pictures_before_ = PicturesConsumed();
    frames_pushed_ = device_.FramesHeard();
    // The first frame gives the player the beginning of the stream. It is empty, so that it is
    // not decoded.
    const auto ticks = [](double seconds) { return static_cast<std::uint64_t>(seconds * 90'000); };
    if (!stream_.pictures.empty()) {
      receiver_.OnVideoFrame(FrameAt(ticks(stream_.pictures.front().seconds), ""));
    }
  }

  std::size_t PicturesConsumed() const { return counts_.shown + counts_.late_pictures; }

  // Decodes no more than there is space for, as a decoder would block.
  void Decode() {
    constexpr std::size_t kMaxDecodedPictures = 8;
    constexpr std::size_t kFramesAhead = kAudioSampleRate / 4;
    Playback* const playback = control_.playback();
    if (playback == nullptr) return;
    while (next_picture_ - (PicturesConsumed() - pictures_before_) < kMaxDecodedPictures &&
           IsDecoded(stream_.pictures, next_picture_)) {
      AvFrame frame = MakeFrame();
      frame->pts = static_cast<std::int64_t>(picture_seconds_.size());
      picture_seconds_.push_back(stream_.pictures[next_picture_++].seconds);
      playback->pictures().Push({std::move(frame), picture_seconds_.back()});
    }
    while (frames_pushed_ - device_.FramesHeard() < kFramesAhead &&
           IsDecoded(stream_.audio, next_chunk_)) {
      playback->audio().Push(ChunkAt(stream_.audio[next_chunk_++].seconds));
      frames_pushed_ += DecodedStream::kChunkFrames;
    }
  }

  bool IsDecoded(const std::vector<DecodedStream::Item>& items, std::size_t index) const {
    return index < items.size() && began_ms_ + items[index].after_ms <= clock_.NowMs();
  }

  // Each sample holds the number of its chunk and the number of its frame. 0 is reserved for
  // silence.
  AudioChunk ChunkAt(double seconds) {
    AudioChunk chunk;
    chunk.seconds = seconds;
    chunk_seconds_.push_back(seconds);
    for (std::size_t frame = 0; frame < DecodedStream::kChunkFrames; ++frame) {
      chunk.samples.push_back(static_cast<float>(chunk_seconds_.size()));
      chunk.samples.push_back(static_cast<float>(frame + 1));
    }
    return chunk;
  }

  double Now() const { return clock_.NowMs() / 1000; }

  static constexpr double kIdleSeconds = 30;  // longer than any stream here

  host::SimulatedClock clock_;
  PlayCounts counts_;
  FrameReceiver receiver_{clock_, counts_};
  FakeDownloader downloader_;
  SimulatedAudioDevice device_{clock_};
  AudioOutput output_{device_};
  PlayControl control_{{"a.ts", {}, kIdleSeconds},
                       {downloader_, receiver_, output_, clock_, counts_, {}}};
  std::vector<Shown> shown_;
  std::vector<Comparison> compared_;
  Presenter presenter_{*this, clock_, counts_, [this](double picture, double audio) {
                         compared_.push_back({picture, audio});
                       }};
  std::multimap<double, Command> commands_;  // by time, in milliseconds
  std::map<std::size_t, double> slow_;
  std::function<DecodedStream(double)> streams_;
  // Of the latest start.
  DecodedStream stream_;
  double began_ms_ = 0;
  std::size_t next_picture_ = 0;
  std::size_t next_chunk_ = 0;
  std::size_t pictures_before_ = 0;
  std::size_t frames_pushed_ = 0;  // taken before this start, or pushed in it
  // Of all starts, by number.
  std::vector<double> picture_seconds_;
  std::vector<double> chunk_seconds_;
};

}  // namespace player

#endif  // TESTS_HOST_PLAYER_SIMULATED_PLAY_H_
