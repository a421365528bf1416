// The transport stream demultiplexer: takes 188-byte packets and passes the frames of one video and
// one audio stream to a sink.
//
// A frame is emitted when the next PES packet on its PID begins. The last frame of a stream stays
// in its assembler until Flush.
//
// Errors in a stream are printed to standard output, and demultiplexing continues.
//
// Instances are independent of each other, except that all of them set ts_last_stream_type.
#ifndef TS_TS_DEMUXER_H_
#define TS_TS_DEMUXER_H_

#include <cstdint>

#include "ts/pes_assembler.h"
#include "ts/ts_context.h"
#include "ts/ts_frame_sink.h"
#include "ts/ts_packet.h"

namespace stream {

/// No lock: use an instance from one thread at a time. It contains the memory of its assemblers,
/// over 2 MiB, so it does not belong on a stack.
class TsDemuxer {
 public:
  /// `sink` is borrowed and must outlive the demultiplexer.
  explicit TsDemuxer(TsFrameSink& sink) : sink_(sink) {}
  TsDemuxer(const TsDemuxer&) = delete;
  TsDemuxer& operator=(const TsDemuxer&) = delete;

  /// Feeds the whole packets in `length` bytes at `data`, which must begin with a packet. Until a
  /// playable program is found, the packets are searched for one. An incomplete packet at the end
  /// is ignored; a `length` of 0 or less does nothing.
  void Feed(const std::uint8_t* data, std::int32_t length);

  /// Demultiplexes `count` packets with the programs and PIDs of `context` instead of its own.
  void ParsePackets(ts_context& context, const std::uint8_t* packets, std::int32_t count);

  /// Emits the frames that are still in their assemblers, video first.
  void Flush();

  /// Resets everything to the state of a new instance. Emits nothing.
  void Reset();

  /// Resets timestamps and continuity for the next stream. Kept for compatibility:
  /// - Programs and PIDs are not reset. They apply to the next stream until new PAT and PMT packets
  ///   replace them.
  /// - Bytes in an assembler are not discarded. They become a frame when the next PES packet
  /// begins.
  /// - The DTS of the audio assembler is not reset.
  void ResetStreams();

 private:
  struct ElementaryStream {
    bool is_video;
    pes_assembler assembler;
  };

  void ParsePacket(ts_context& context, TsPacket packet);
  ElementaryStream* StreamOf(const ts_context& context, std::uint16_t pid);
  void BeginPes(ElementaryStream& stream, TsPacket packet, unsigned offset);
  void EmitFrame(const ElementaryStream& stream);

  TsFrameSink& sink_;
  ts_context context_;
  PesBuffer video_buffer_;
  PesBuffer audio_buffer_;
  ElementaryStream video_{true, {video_buffer_}};
  ElementaryStream audio_{false, {audio_buffer_}};
};

}  // namespace stream

#endif  // TS_TS_DEMUXER_H_
