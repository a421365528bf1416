// What ffprobe and ffmpeg read from a transport stream: the reader that the demultiplexer is held
// against.
#ifndef TESTS_GOLDEN_REFERENCE_READER_H_
#define TESTS_GOLDEN_REFERENCE_READER_H_

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <vector>

#include "tests/golden/media_tools.h"

// One PES packet.
struct ReferencePacket {
  std::uint64_t pts;  // 90 kHz
  std::uint64_t dts;  // equal to pts where the packet carries none
  std::size_t size;   // of its payload
};

struct ReferenceStream {
  std::vector<ReferencePacket> packets;
  std::vector<std::uint8_t> bytes;  // the whole elementary stream
};

// Reads the elementary stream with this PID; its scratch files go to `scratch`. Throws
// std::runtime_error if the tools fail.
ReferenceStream ReadReference(const std::filesystem::path& file, std::uint16_t pid,
                              const ScratchDirectory& scratch);

#endif  // TESTS_GOLDEN_REFERENCE_READER_H_
