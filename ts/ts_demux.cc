#include "ts/ts_demux.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdio>

#include "common/frame_queue.h"
#include "ts/pes_assembler.h"
#include "ts/play_times.h"
#include "ts/ts_packet.h"
#include "ts/ts_stream_type.h"

namespace {

// One elementary stream and the queue for its frames.
struct ElementaryStream {
  FrameQueue*& queue;
  bool is_video;
  pes_assembler assembler;
  PlayTimeInterpolator play_times;
};

std::mutex g_demuxMutex;

// All guarded by g_demuxMutex.
ts_context g_context;
PesBuffer g_videoBuffer;
PesBuffer g_audioBuffer;
ElementaryStream g_video{g_videoQueue, true, {g_videoBuffer}, {}};
ElementaryStream g_audio{g_audioQueue, false, {g_audioBuffer}, {}};
// The run of the frame queues to which the state of the streams belongs.
RunId g_queueRun{};

// Kept for compatibility: does not reset `length` and the audio `dts`.
void ResetStreams() {
  for (ElementaryStream* stream : {&g_video, &g_audio}) {
    stream->assembler.last_cc = -1;
    stream->assembler.intact = 1;
    stream->assembler.pts = 0;
    stream->play_times = PlayTimeInterpolator();
  }
  g_video.assembler.dts = 0;
}

void FollowQueueResets() {
  const RunId run = FrameQueueRun();
  if (run == g_queueRun) return;
  g_queueRun = run;
  ResetStreams();
}

void EmitFrame(ElementaryStream& stream) {
  const pes_assembler& pes = stream.assembler;
  FrameRecord frame;
  if (CreateFrameNode(frame, pes.pts, pes.dts, pes.buffer.data(),
                      static_cast<std::int32_t>(pes.length), stream.is_video,
                      pes.intact == 1) != 0) {
    return;  // no memory: drop this frame and continue
  }
  const std::lock_guard lock(g_frameQueueMutex);
  FollowQueueResets();
  frame.playTime = stream.play_times.InitialPlayTime(frame.pts);
  FrameQueue* queue = EnsureQueue(stream.queue);
  if (PushFrame(frame, queue) == 0) {
    stream.play_times.FramePushed(*queue);
  } else {
    ReleasePayload(frame);
  }
}

// Returns the timestamp field at `offset`. Kept for compatibility: the flags in the PES header are
// not checked, so a packet without a DTS yields a number made of the bytes after its PTS.
std::uint64_t TimestampAt(TsPacket packet, unsigned offset) {
  return get_pes_timestamp({packet.At(offset), packet.At(offset + 1), packet.At(offset + 2),
                            packet.At(offset + 3), packet.At(offset + 4)});
}

// Starts the PES packet at `offset` and emits the previous one, which is complete.
void BeginPes(ElementaryStream& stream, TsPacket packet, unsigned offset) {
  constexpr unsigned kFixedHeaderSize = 9;
  const std::uint64_t pts = TimestampAt(packet, offset + 9);
  const std::uint64_t dts = TimestampAt(packet, offset + 14);
  const unsigned header_data_length = packet.At(offset + 8);
  offset += kFixedHeaderSize;
  if (offset >= kTsPacketSize) {
    std::printf("total_len : %u \n", offset);
    return;
  }
  offset += header_data_length;
  if (offset >= kTsPacketSize) {
    std::printf("total_len:%u, pes_header_data_len:0x%x\n", offset, header_data_length);
    return;
  }
  if (stream.assembler.length != 0) EmitFrame(stream);
  stream.assembler.Begin(pts, dts, packet.Bytes() + offset,
                         static_cast<std::uint32_t>(kTsPacketSize - offset));
  stream.assembler.CheckContinuity(packet.ContinuityCounter());
}

void ContinuePes(ElementaryStream& stream, TsPacket packet, unsigned offset) {
  if (offset < kTsPacketSize) {
    stream.assembler.Append(packet.Bytes() + offset,
                            static_cast<std::uint32_t>(kTsPacketSize - offset));
  }
  stream.assembler.CheckContinuity(packet.ContinuityCounter());
}

// Returns the stream of a PID, or null. Video is tested first. Audio PID 0 means "no audio stream"
// and never matches, since PID 0 carries the PAT.
ElementaryStream* StreamOf(const ts_context& context, std::uint16_t pid) {
  if (pid == context.video_pid) return &g_video;
  if (pid == context.AudioPid() && pid != 0) return &g_audio;
  return nullptr;
}

void ParsePacket(ts_context& context, TsPacket packet) {
  const std::uint16_t pid = packet.Pid();
  if (context.IsPsiPid(pid)) {
    get_pmt_info(packet.Bytes(), static_cast<std::int32_t>(kTsPacketSize), context);
  }
  ElementaryStream* stream = StreamOf(context, pid);
  if (stream == nullptr) return;
  ++context.av_packet_count;

  unsigned offset = 4;
  switch (packet.AdaptationFieldControl()) {
    case 1:
      break;
    case 3:
      offset = 5 + packet.AdaptationFieldLength();
      break;
    default:
      return;  // no payload
  }
  if (packet.PayloadUnitStart()) {
    BeginPes(*stream, packet, offset);
  } else {
    ContinuePes(*stream, packet, offset);
  }
}

}  // namespace

TsDemuxLock::TsDemuxLock() : lock_(g_demuxMutex) {}

std::int32_t ts_parse_packets(ts_context* context, const std::uint8_t* packets,
                              std::int32_t count) {
  if (context == nullptr || packets == nullptr) {
    std::printf("parameter error\n");
    return 0;
  }
  for (std::int32_t i = 0; i < count; ++i) {
    const TsPacket packet(packets + static_cast<std::size_t>(i) * kTsPacketSize);
    if (packet.HasSyncByte()) {
      ParsePacket(*context, packet);
    } else {
      std::printf("The ts packet has not sync byte\n");
    }
  }
  return 0;
}

std::int32_t ts_demux_feed(const std::uint8_t* data, std::int32_t length) {
  if (length <= 0) return 0;
  const std::int32_t count = length / static_cast<std::int32_t>(kTsPacketSize);
  if (data == nullptr) return ts_parse_packets(&g_context, data, count);
  FollowQueueResets();
  if (g_context.handler == nullptr) ts_probe(g_context, ts_parse_packets, data, count);
  if (g_context.handler == nullptr) return 0;
  return g_context.handler(&g_context, data, count);
}

void ts_demux_forget() {
  ts_last_stream_type = 0;
  g_context = ts_context();
  ResetStreams();
  g_video.assembler.length = 0;
  g_audio.assembler.length = 0;
  g_audio.assembler.dts = 0;
}
