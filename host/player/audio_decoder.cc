#include "audio_decoder.h"

#include <algorithm>
#include <utility>

namespace player {

AudioDecoder::AudioDecoder(PlayCounts& counts, Sink sink)
    : parser_(MakeParser(AV_CODEC_ID_AAC)),
      context_(MakeDecoder(AV_CODEC_ID_AAC)),
      counts_(counts),
      sink_(std::move(sink)) {}

void AudioDecoder::Decode(const MediaUnit& frame) {
  const AvPacket padded = MakePacket(frame.data.data(), frame.data.size());
  const std::uint8_t* data = padded->data;
  int left = padded->size;
  auto pts = static_cast<std::int64_t>(frame.pts);
  while (left > 0) {
    std::uint8_t* found = nullptr;
    int size = 0;
    const int used = av_parser_parse2(parser_.get(), context_.get(), &found, &size, data, left, pts,
                                      AV_NOPTS_VALUE, 0);
    data += used;
    left -= used;
    pts = AV_NOPTS_VALUE;  // the time belongs to the first AAC frame that begins in the data
    if (size > 0) {
      without_frame_ = 0;
      DecodeAacFrame(found, size, parser_->pts);
    } else if (used <= 0) {
      return;
    }
  }
  DropNonAacData(frame.data.size());
}

// The parser buffers everything until it finds a frame, so data without any AAC would accumulate.
void AudioDecoder::DropNonAacData(std::size_t size) {
  constexpr std::size_t kMost = std::size_t{1} << 20;
  without_frame_ += size;
  if (without_frame_ <= kMost) return;
  parser_ = MakeParser(AV_CODEC_ID_AAC);
  without_frame_ = 0;
  ++counts_.errors;
}

void AudioDecoder::DecodeAacFrame(const std::uint8_t* data, int size, std::int64_t pts) {
  const AvPacket packet = MakePacket(data, static_cast<std::size_t>(size));
  packet->pts = pts;
  if (avcodec_send_packet(context_.get(), packet.get()) < 0) ++counts_.errors;
  for (;;) {
    const AvFrame frame = MakeFrame();
    const int result = avcodec_receive_frame(context_.get(), frame.get());
    if (result == AVERROR(EAGAIN) || result == AVERROR_EOF) return;
    if (result < 0) {
      ++counts_.errors;
      return;
    }
    ++counts_.decoded_audio_frames;
    OutputAudio(*frame);
  }
}

void AudioDecoder::OutputAudio(const AVFrame& frame) {
  if (!PrepareResampler(frame)) {
    ++counts_.errors;
    return;
  }
  AudioChunk chunk;
  chunk.seconds = frame.pts == AV_NOPTS_VALUE ? next_seconds_
                                              : SecondsOf(static_cast<std::uint64_t>(frame.pts));
  const int capacity = std::max(swr_get_out_samples(resampler_.get(), frame.nb_samples), 0);
  chunk.samples.resize(static_cast<std::size_t>(capacity) * kAudioChannels);
  auto* out = reinterpret_cast<std::uint8_t*>(chunk.samples.data());
  const int converted =
      swr_convert(resampler_.get(), &out, capacity,
                  const_cast<const std::uint8_t**>(frame.extended_data), frame.nb_samples);
  if (converted < 0) ++counts_.errors;
  chunk.samples.resize(static_cast<std::size_t>(std::max(converted, 0)) * kAudioChannels);
  next_seconds_ = chunk.seconds + static_cast<double>(frame.nb_samples) / frame.sample_rate;
  sink_(std::move(chunk));
}

// The sample rate or the number of channels may change at any frame.
bool AudioDecoder::PrepareResampler(const AVFrame& frame) {
  const int channels = frame.ch_layout.nb_channels;
  if (frame.sample_rate <= 0 || channels <= 0) return false;
  if (resampler_ != nullptr && rate_ == frame.sample_rate && channels_ == channels &&
      format_ == frame.format) {
    return true;
  }
  // Not const: older versions of the library take non-const pointers.
  AVChannelLayout stereo = AV_CHANNEL_LAYOUT_STEREO;
  AVChannelLayout own = frame.ch_layout;
  SwrContext* resampler = nullptr;
  const int result =
      swr_alloc_set_opts2(&resampler, &stereo, AV_SAMPLE_FMT_FLT, kAudioSampleRate, &own,
                          static_cast<AVSampleFormat>(frame.format), frame.sample_rate, 0, nullptr);
  resampler_.reset(resampler);
  if (result < 0 || swr_init(resampler) < 0) {
    resampler_.reset();
    return false;
  }
  rate_ = frame.sample_rate;
  channels_ = channels;
  format_ = frame.format;
  return true;
}

}  // namespace player
