#include "ts/ts_demuxer.h"

#include <cstddef>
#include <cstdio>

namespace stream {
namespace {

// The probe's mark that a playable program was found. A demultiplexer has only one handler, its own
// ParsePackets, and calls it directly.
std::int32_t MarkPlayable(ts_context* /*context*/, const std::uint8_t* /*packets*/,
                          std::int32_t /*count*/) {
  return 0;
}

// Returns the timestamp field at `offset`. Kept for compatibility: the flags in the PES header are
// not checked, so a packet without a DTS yields a number made of the bytes after its PTS.
std::uint64_t TimestampAt(TsPacket packet, unsigned offset) {
  return get_pes_timestamp({packet.At(offset), packet.At(offset + 1), packet.At(offset + 2),
                            packet.At(offset + 3), packet.At(offset + 4)});
}

void ContinuePes(pes_assembler& assembler, TsPacket packet, unsigned offset) {
  if (offset < kTsPacketSize) {
    assembler.Append(packet.Bytes() + offset, static_cast<std::uint32_t>(kTsPacketSize - offset));
  }
  assembler.CheckContinuity(packet.ContinuityCounter());
}

}  // namespace

void TsDemuxer::Feed(const std::uint8_t* data, std::int32_t length) {
  if (length <= 0) return;
  if (data == nullptr) {
    std::printf("parameter error\n");
    return;
  }
  const std::int32_t count = length / static_cast<std::int32_t>(kTsPacketSize);
  if (context_.handler == nullptr) ts_probe(context_, MarkPlayable, data, count);
  if (context_.handler != nullptr) ParsePackets(context_, data, count);
}

void TsDemuxer::ParsePackets(ts_context& context, const std::uint8_t* packets, std::int32_t count) {
  for (std::int32_t i = 0; i < count; ++i) {
    const TsPacket packet(packets + static_cast<std::size_t>(i) * kTsPacketSize);
    if (packet.HasSyncByte()) {
      ParsePacket(context, packet);
    } else {
      std::printf("The ts packet has not sync byte\n");
    }
  }
}

void TsDemuxer::Flush() {
  for (ElementaryStream* stream : {&video_, &audio_}) {
    if (stream->assembler.length != 0) EmitFrame(*stream);
    stream->assembler.length = 0;
  }
}

void TsDemuxer::Reset() {
  context_ = ts_context();
  video_.assembler.Reset();
  audio_.assembler.Reset();
}

void TsDemuxer::ResetStreams() {
  for (ElementaryStream* stream : {&video_, &audio_}) {
    stream->assembler.last_cc = -1;
    stream->assembler.intact = 1;
    stream->assembler.pts = 0;
  }
  video_.assembler.dts = 0;
}

void TsDemuxer::ParsePacket(ts_context& context, TsPacket packet) {
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
    ContinuePes(stream->assembler, packet, offset);
  }
}

// Returns the stream of a PID, or null. Video is tested first. Audio PID 0 means "no audio stream"
// and never matches, since PID 0 carries the PAT.
TsDemuxer::ElementaryStream* TsDemuxer::StreamOf(const ts_context& context, std::uint16_t pid) {
  if (pid == context.video_pid) return &video_;
  if (pid == context.AudioPid() && pid != 0) return &audio_;
  return nullptr;
}

// Starts the PES packet at `offset` and emits the previous one, which is complete.
void TsDemuxer::BeginPes(ElementaryStream& stream, TsPacket packet, unsigned offset) {
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

void TsDemuxer::EmitFrame(const ElementaryStream& stream) {
  const pes_assembler& pes = stream.assembler;
  sink_.OnFrame(
      {stream.is_video, pes.pts, pes.dts, {pes.buffer.data(), pes.length}, pes.intact == 1});
}

}  // namespace stream
