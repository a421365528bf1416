#include "tests/golden/frame_dump.h"

#include <array>
#include <cinttypes>
#include <cstddef>
#include <cstdio>

#include "common/frame_queue.h"

namespace stream {
namespace {

std::vector<DumpedFrame> TakeAll(FrameNodePtr (*pop)()) {
  std::vector<DumpedFrame> frames;
  while (const FrameNodePtr node = pop()) {
    frames.push_back({node->pts,
                      node->dts,
                      node->playTime,
                      node->isVideo == 1,
                      node->intact == 1,
                      {node->data, node->data + node->size}});
  }
  return frames;
}

// The CRC-32 of zlib and PNG.
std::uint32_t Crc32(const std::vector<std::uint8_t>& bytes) {
  constexpr std::uint32_t kPolynomial = 0xEDB88320;
  std::uint32_t crc = 0xFFFFFFFF;
  for (const std::uint8_t byte : bytes) {
    crc ^= byte;
    for (int bit = 0; bit < 8; ++bit) crc = (crc & 1) != 0 ? crc >> 1 ^ kPolynomial : crc >> 1;
  }
  return ~crc;
}

void AddLines(const char* kind, const std::vector<DumpedFrame>& frames, std::string& text) {
  for (std::size_t i = 0; i < frames.size(); ++i) {
    const DumpedFrame& frame = frames[i];
    std::array<char, 200> line{};
    std::snprintf(
        line.data(), line.size(),
        "%s %zu: pts=%" PRIu64 " dts=%" PRIu64 " play=%" PRIu64 " size=%zu crc=%08" PRIx32 "\n",
        kind, i, frame.pts, frame.dts, frame.play, frame.payload.size(), Crc32(frame.payload));
    text += line.data();
  }
}

}  // namespace

FrameDump PopQueuedFrames() {
  std::vector<DumpedFrame> video = TakeAll(PopVideoFrame);
  return {std::move(video), TakeAll(PopAudioFrame)};
}

std::string DumpText(const FrameDump& dump) {
  std::string text;
  AddLines("video", dump.video, text);
  AddLines("audio", dump.audio, text);
  return text;
}

}  // namespace stream
