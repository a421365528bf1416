#include "bench/libavformat_demux.h"

// C headers without extern "C" that cause warnings with our options.
extern "C" {
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wold-style-cast"
#pragma GCC diagnostic ignored "-Wconversion"
#pragma GCC diagnostic ignored "-Wsign-conversion"
#include <libavformat/avformat.h>
#pragma GCC diagnostic pop
}

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <memory>

namespace {

constexpr int kEndOfFile = -0x20464F45;  // AVERROR_EOF, whose macro uses a C-style cast
constexpr int kIoBufferSize = 32768;     // libavformat's own size for files

struct Source {
  std::span<const std::uint8_t> bytes;
  std::size_t position = 0;
};

int ReadSome(void* opaque, std::uint8_t* buffer, int size) {
  auto& source = *static_cast<Source*>(opaque);
  const std::size_t left = source.bytes.size() - source.position;
  const std::size_t count = std::min(left, static_cast<std::size_t>(size));
  if (count == 0) return kEndOfFile;
  std::memcpy(buffer, source.bytes.data() + source.position, count);
  source.position += count;
  return static_cast<int>(count);
}

std::int64_t Seek(void* opaque, std::int64_t offset, int whence) {
  auto& source = *static_cast<Source*>(opaque);
  if (whence == AVSEEK_SIZE) return static_cast<std::int64_t>(source.bytes.size());
  if (whence != SEEK_SET || offset < 0) return -1;
  source.position = std::min(static_cast<std::size_t>(offset), source.bytes.size());
  return offset;
}

struct IoDeleter {
  void operator()(AVIOContext* io) const {
    av_freep(&io->buffer);
    avio_context_free(&io);
  }
};

struct FormatDeleter {
  void operator()(AVFormatContext* format) const { avformat_close_input(&format); }
};

struct PacketDeleter {
  void operator()(AVPacket* packet) const { av_packet_free(&packet); }
};

using IoPtr = std::unique_ptr<AVIOContext, IoDeleter>;
using FormatPtr = std::unique_ptr<AVFormatContext, FormatDeleter>;

IoPtr OpenIo(Source& source) {
  auto* buffer = static_cast<unsigned char*>(av_malloc(kIoBufferSize));
  return IoPtr(avio_alloc_context(buffer, kIoBufferSize, 0, &source, ReadSome, nullptr, Seek));
}

FormatPtr OpenFormat(AVIOContext* io, const char* name, bool parse) {
  AVFormatContext* format = avformat_alloc_context();
  format->pb = io;
  if (!parse) format->flags |= AVFMT_FLAG_NOPARSE;
  // avformat_open_input frees the context if it fails.
  if (avformat_open_input(&format, nullptr, av_find_input_format(name), nullptr) != 0)
    return nullptr;
  return FormatPtr(format);
}

DemuxTotals ReadAllPackets(AVFormatContext* format) {
  const std::unique_ptr<AVPacket, PacketDeleter> packet(av_packet_alloc());
  DemuxTotals totals;
  while (av_read_frame(format, packet.get()) >= 0) {
    totals.frames += 1;
    totals.bytes += static_cast<std::uint64_t>(packet->size);
    av_packet_unref(packet.get());
  }
  return totals;
}

}  // namespace

std::optional<DemuxTotals> DemuxWithLibavformat(std::span<const std::uint8_t> stream,
                                                const char* format, bool parse) {
  Source source{stream};
  const IoPtr io = OpenIo(source);
  const FormatPtr opened = OpenFormat(io.get(), format, parse);
  if (opened == nullptr) return std::nullopt;
  return ReadAllPackets(opened.get());
}

std::optional<DemuxTotals> ReadFileWithLibavformat(const std::string& path) {
  AVFormatContext* format = avformat_alloc_context();
  format->flags |= AVFMT_FLAG_NOPARSE;
  // avformat_open_input frees the context if it fails.
  if (avformat_open_input(&format, path.c_str(), nullptr, nullptr) != 0) return std::nullopt;
  const FormatPtr owner(format);
  return ReadAllPackets(format);
}

std::string LibavformatVersion() {
  const unsigned version = avformat_version();
  return std::to_string(version >> 16) + '.' + std::to_string(version >> 8 & 0xFF) + '.' +
         std::to_string(version & 0xFF);
}
