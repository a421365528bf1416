// The frames that a demultiplexer or parser has queued, as values and as text.
#ifndef TESTS_GOLDEN_FRAME_DUMP_H_
#define TESTS_GOLDEN_FRAME_DUMP_H_

#include <cstdint>
#include <string>
#include <vector>

namespace stream {

struct DumpedFrame {
  std::uint64_t pts;
  std::uint64_t dts;
  std::uint64_t play;
  bool is_video;
  bool intact;
  std::vector<std::uint8_t> payload;
};

// All frames of a run, in the order of their queues.
struct FrameDump {
  std::vector<DumpedFrame> video;
  std::vector<DumpedFrame> audio;
};

// Empties the global queues.
FrameDump PopQueuedFrames();

// One line per frame, video first, as in
// "video 3: pts=140400 dts=136800 play=14400 size=856 crc=1c291ca3".
std::string DumpText(const FrameDump& dump);

}  // namespace stream

#endif  // TESTS_GOLDEN_FRAME_DUMP_H_
