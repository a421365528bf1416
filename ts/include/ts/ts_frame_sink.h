// The receiver of the frames of a TsDemuxer.
#ifndef TS_TS_FRAME_SINK_H_
#define TS_TS_FRAME_SINK_H_

#include <cstdint>
#include <span>

namespace stream {

/// The payload of one PES packet, as carried: an Annex B byte stream for H.264 and H.265, ADTS
/// frames for AAC.
struct TsFrame {
  bool is_video;                          ///< otherwise audio
  std::uint64_t pts;                      ///< 90 kHz
  std::uint64_t dts;                      ///< 90 kHz
  std::span<const std::uint8_t> payload;  ///< never empty; borrowed until OnFrame returns
  bool intact;                            ///< assembled without a continuity gap and not cut
};

class TsFrameSink {
 public:
  /// Called on the thread that feeds the demultiplexer. Must not feed it. There is no way to refuse
  /// a frame; a sink that runs out of memory drops it.
  virtual void OnFrame(const TsFrame& frame) = 0;

 protected:
  ~TsFrameSink() = default;
};

}  // namespace stream

#endif  // TS_TS_FRAME_SINK_H_
