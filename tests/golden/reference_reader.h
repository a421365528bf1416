// What ffprobe and ffmpeg read from a file: the reader that the demultiplexers are held against.
#ifndef TESTS_GOLDEN_REFERENCE_READER_H_
#define TESTS_GOLDEN_REFERENCE_READER_H_

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/golden/media_tools.h"

// One PES packet, or one tag.
struct ReferencePacket {
  std::uint64_t pts;  // in the file's own units: 90 kHz, or milliseconds
  std::uint64_t dts;  // equal to pts where the packet carries none
  std::size_t size;   // of its payload
};

struct ReferenceStream {
  std::vector<ReferencePacket> packets;
  std::vector<std::uint8_t> bytes;  // the whole elementary stream
};

// The packets of a stream, which is told as ffmpeg's command line does ("v:0"). Scratch files go to
// `scratch`. Throws std::runtime_error if the tools fail; so do the functions below.
std::vector<ReferencePacket> ReadPackets(const std::filesystem::path& file,
                                         const std::string& stream,
                                         const ScratchDirectory& scratch);

// The bytes of a stream as ffmpeg copies them into a file of this format ("data" for the packets
// as they are).
std::vector<std::uint8_t> ReadElementaryStream(const std::filesystem::path& file,
                                               const std::string& stream, const std::string& format,
                                               const ScratchDirectory& scratch);

// Both, of the stream of a transport stream with this PID.
ReferenceStream ReadReference(const std::filesystem::path& file, std::uint16_t pid,
                              const ScratchDirectory& scratch);

#endif  // TESTS_GOLDEN_REFERENCE_READER_H_
