#include "audio_decoder.h"

#include <algorithm>
#include <utility>

namespace player {

AudioDecoder::AudioDecoder(PlayCounts& counts, Taker take)
    : parser_(MakeParser(AV_CODEC_ID_AAC)),
      context_(MakeDecoder(AV_CODEC_ID_AAC)),
      counts_(counts),
      take_(std::move(take)) {}

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
    ++counts_.sounds;
    TakeSound(*frame);
  }
}

void AudioDecoder::TakeSound(const AVFrame& frame) {
  if (!PrepareResampler(frame)) {
    ++counts_.errors;
    return;
  }
  AudioPiece piece;
  piece.seconds = frame.pts == AV_NOPTS_VALUE ? next_seconds_
                                              : SecondsOf(static_cast<std::uint64_t>(frame.pts));
  const int room = std::max(swr_get_out_samples(resampler_.get(), frame.nb_samples), 0);
  piece.samples.resize(static_cast<std::size_t>(room) * kSoundChannels);
  auto* out = reinterpret_cast<std::uint8_t*>(piece.samples.data());
  const int made =
      swr_convert(resampler_.get(), &out, room,
                  const_cast<const std::uint8_t**>(frame.extended_data), frame.nb_samples);
  if (made < 0) ++counts_.errors;
  piece.samples.resize(static_cast<std::size_t>(std::max(made, 0)) * kSoundChannels);
  next_seconds_ = piece.seconds + static_cast<double>(frame.nb_samples) / frame.sample_rate;
  take_(std::move(piece));
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
  SwrContext* made = nullptr;
  const int result =
      swr_alloc_set_opts2(&made, &stereo, AV_SAMPLE_FMT_FLT, kSoundRate, &own,
                          static_cast<AVSampleFormat>(frame.format), frame.sample_rate, 0, nullptr);
  resampler_.reset(made);
  if (result < 0 || swr_init(made) < 0) {
    resampler_.reset();
    return false;
  }
  rate_ = frame.sample_rate;
  channels_ = channels;
  format_ = frame.format;
  return true;
}

}  // namespace player
