// Owning pointers for objects of libavcodec and libavutil.
#ifndef HOST_PLAYER_AV_MEMORY_H_
#define HOST_PLAYER_AV_MEMORY_H_

extern "C" {
#include <libavcodec/avcodec.h>
}

#include <cstddef>
#include <cstdint>
#include <memory>

namespace player {

struct AvDelete {
  void operator()(AVFrame* frame) const { av_frame_free(&frame); }
  void operator()(AVPacket* packet) const { av_packet_free(&packet); }
  void operator()(AVCodecContext* context) const { avcodec_free_context(&context); }
  void operator()(AVCodecParserContext* parser) const { av_parser_close(parser); }
};

using AvFrame = std::unique_ptr<AVFrame, AvDelete>;
using AvPacket = std::unique_ptr<AVPacket, AvDelete>;
using AvCodec = std::unique_ptr<AVCodecContext, AvDelete>;
using AvParser = std::unique_ptr<AVCodecParserContext, AvDelete>;

// These throw if memory runs out or the decoder is missing.
AvFrame MakeFrame();
AvPacket MakePacket(const std::uint8_t* data, std::size_t size);
AvCodec MakeDecoder(AVCodecID id);
AvParser MakeParser(AVCodecID id);

// Turns off the libraries' own log output and counts their error messages instead.
void CountAvErrors();
std::uint64_t AvErrors();

}  // namespace player

#endif  // HOST_PLAYER_AV_MEMORY_H_
