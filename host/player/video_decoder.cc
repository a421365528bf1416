#include "video_decoder.h"

#include <utility>

namespace player {
namespace {

bool IsKey(const AVFrame& frame) {
#ifdef AV_FRAME_FLAG_KEY  // newer versions of the library
  return (frame.flags & AV_FRAME_FLAG_KEY) != 0;
#else
  return frame.key_frame != 0;
#endif
}

}  // namespace

VideoDecoder::VideoDecoder(VideoCodec codec, bool shown_later, PlayCounts& counts, Sink sink)
    : context_(MakeDecoder(codec == VideoCodec::kH264 ? AV_CODEC_ID_H264 : AV_CODEC_ID_HEVC)),
      times_(shown_later),
      counts_(counts),
      sink_(std::move(sink)) {}

void VideoDecoder::Decode(const MediaUnit& unit) {
  ++counts_.access_units;
  const AvPacket packet = MakePacket(unit.data.data(), unit.data.size());
  packet->pts = static_cast<std::int64_t>(unit.pts);
  times_.Sent(unit.pts, unit.dts);
  Send(packet.get());
}

void VideoDecoder::Drain() {
  Send(nullptr);
  avcodec_flush_buffers(context_.get());
}

// Receives all pictures each time, so that the decoder always accepts the next packet.
void VideoDecoder::Send(const AVPacket* packet) {
  if (avcodec_send_packet(context_.get(), packet) < 0) ++counts_.errors;
  ReceivePictures();
}

void VideoDecoder::ReceivePictures() {
  for (;;) {
    AvFrame frame = MakeFrame();
    const int result = avcodec_receive_frame(context_.get(), frame.get());
    if (result == AVERROR(EAGAIN) || result == AVERROR_EOF) return;
    if (result < 0) {
      ++counts_.errors;
      return;
    }
    ++counts_.pictures;
    if (frame->decode_error_flags != 0) ++counts_.errors;
    const auto pts = static_cast<std::uint64_t>(frame->pts);
    const std::uint64_t time = times_.TimeOf(pts, IsKey(*frame), context_->has_b_frames);
    sink_({std::move(frame), SecondsOf(time)});
  }
}

}  // namespace player
