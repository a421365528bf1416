#include "av_memory.h"

extern "C" {
#include <libavutil/log.h>
}

#include <atomic>
#include <cstdarg>
#include <cstring>
#include <new>
#include <stdexcept>
#include <string>

namespace player {
namespace {

std::atomic<std::uint64_t> g_errors{0};

extern "C" void CountErrorLine(void* /*whose*/, int level, const char* /*form*/,
                               va_list /*values*/) {
  if (level <= AV_LOG_ERROR) ++g_errors;
}

template <typename Owner>
Owner OrThrow(Owner owner) {
  if (owner == nullptr) throw std::bad_alloc();
  return owner;
}

}  // namespace

AvFrame MakeFrame() { return OrThrow(AvFrame(av_frame_alloc())); }

AvPacket MakePacket(const std::uint8_t* data, std::size_t size) {
  AvPacket packet = OrThrow(AvPacket(av_packet_alloc()));
  if (av_new_packet(packet.get(), static_cast<int>(size)) < 0) throw std::bad_alloc();
  if (size > 0) std::memcpy(packet->data, data, size);
  return packet;
}

AvCodec MakeDecoder(AVCodecID id) {
  const AVCodec* codec = avcodec_find_decoder(id);
  if (codec == nullptr) {
    throw std::runtime_error(std::string("no decoder for ") + avcodec_get_name(id));
  }
  AvCodec context = OrThrow(AvCodec(avcodec_alloc_context3(codec)));
  context->pkt_timebase = {1, 90'000};
  // Frame threading would delay the output of pictures.
  context->thread_type = FF_THREAD_SLICE;
  context->thread_count = 0;
  if (avcodec_open2(context.get(), codec, nullptr) < 0) {
    throw std::runtime_error(std::string("the decoder does not open: ") + codec->name);
  }
  return context;
}

AvParser MakeParser(AVCodecID id) { return OrThrow(AvParser(av_parser_init(id))); }

void CountAvErrors() { av_log_set_callback(CountErrorLine); }

std::uint64_t AvErrors() { return g_errors.load(); }

}  // namespace player
