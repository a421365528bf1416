#include "ts/ts_demux.h"

#include <cstdio>

#include "common/never_destroyed.h"

namespace stream {
namespace {

NeverDestroyed<TsQueueDemuxer> g_demuxer;

}  // namespace

TsQueueDemuxer& ProcessTsDemuxer() { return *g_demuxer; }

TsDemuxLock::TsDemuxLock() : lock_(g_demuxer->BatchMutex()) {}

std::int32_t ts_demux_feed(const std::uint8_t* data, std::int32_t length) {
  ProcessTsDemuxer().Feed(data, length);
  return 0;
}

std::int32_t ts_parse_packets(ts_context* context, const std::uint8_t* packets,
                              std::int32_t count) {
  if (context == nullptr || packets == nullptr) {
    std::printf("parameter error\n");
  } else {
    ProcessTsDemuxer().ParsePackets(*context, packets, count);
  }
  return 0;
}

}  // namespace stream
