// Decodes ADTS AAC. A frame of the component may hold several AAC frames, or a part of one. For one
// thread.
#ifndef HOST_PLAYER_AUDIO_DECODER_H_
#define HOST_PLAYER_AUDIO_DECODER_H_

extern "C" {
#include <libswresample/swresample.h>
}

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>

#include "audio_chunk.h"
#include "av_memory.h"
#include "media_unit.h"
#include "play_counts.h"

namespace player {

class AudioDecoder {
 public:
  using Sink = std::function<void(AudioChunk)>;

  // `counts` is borrowed.
  AudioDecoder(PlayCounts& counts, Sink sink);

  void Decode(const MediaUnit& frame);

 private:
  struct FreeResampler {
    void operator()(SwrContext* context) const { swr_free(&context); }
  };

  void DropNonAacData(std::size_t size);
  void DecodeAacFrame(const std::uint8_t* data, int size, std::int64_t pts);
  void OutputAudio(const AVFrame& frame);
  bool PrepareResampler(const AVFrame& frame);

  AvParser parser_;
  AvCodec context_;
  std::unique_ptr<SwrContext, FreeResampler> resampler_;
  // The input format of the resampler.
  int rate_ = 0;
  int channels_ = 0;
  int format_ = AV_SAMPLE_FMT_NONE;
  std::size_t without_frame_ = 0;  // bytes since the last AAC frame
  double next_seconds_ = 0;        // stream time of audio without a time of its own
  PlayCounts& counts_;
  const Sink sink_;
};

}  // namespace player

#endif  // HOST_PLAYER_AUDIO_DECODER_H_
