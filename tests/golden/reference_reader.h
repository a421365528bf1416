// What ffprobe and ffmpeg read from a file, to compare the demultiplexers with.
#ifndef TESTS_GOLDEN_REFERENCE_READER_H_
#define TESTS_GOLDEN_REFERENCE_READER_H_

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/golden/media_tools.h"

// One PES packet, or one FLV tag.
struct ReferencePacket {
  std::uint64_t pts;  // in the units of the file: 90 kHz, or milliseconds
  std::uint64_t dts;  // equal to pts if the packet carries none
  std::size_t size;   // of its payload, in bytes
};

struct ReferenceStream {
  std::vector<ReferencePacket> packets;
  std::vector<std::uint8_t> bytes;  // the whole elementary stream
};

// The packets of a stream, which is named as on ffmpeg's command line ("v:0"). Scratch files go to
// `scratch`. This and the functions below throw std::runtime_error if the tools fail.
std::vector<ReferencePacket> ReadPackets(const std::filesystem::path& file,
                                         const std::string& stream,
                                         const ScratchDirectory& scratch);

// The bytes of a stream as ffmpeg copies them into a file of this format ("data" for the unchanged
// packets).
std::vector<std::uint8_t> ReadElementaryStream(const std::filesystem::path& file,
                                               const std::string& stream, const std::string& format,
                                               const ScratchDirectory& scratch);

// Both, for the stream with this PID in a transport stream.
ReferenceStream ReadReference(const std::filesystem::path& file, std::uint16_t pid,
                              const ScratchDirectory& scratch);

#endif  // TESTS_GOLDEN_REFERENCE_READER_H_
