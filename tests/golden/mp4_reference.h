// What ffprobe and ffmpeg read from an MP4 file: the reader that the track reader is held against.
#ifndef TESTS_GOLDEN_MP4_REFERENCE_H_
#define TESTS_GOLDEN_MP4_REFERENCE_H_

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/golden/media_tools.h"

// Fractions of the times are dropped. Decode times count from the first one: where an offset is
// negative, ffprobe shows them earlier than the file has them, and the presentation times as they
// are.
struct Mp4ReferencePacket {
  std::uint64_t dts_ms;
  std::uint64_t pts_ms;
  std::size_t size;
};

// The packets of a stream ("v:0", "a:0"), edit lists left aside. Throws std::runtime_error if the
// tools fail, as all of these do.
std::vector<Mp4ReferencePacket> ReadMp4Packets(const std::filesystem::path& file,
                                               const std::string& stream,
                                               const ScratchDirectory& scratch);

// The bytes of a stream in another form, "adts" say.
std::vector<std::uint8_t> ReadMp4Stream(const std::filesystem::path& file,
                                        const std::string& stream, const std::string& form,
                                        const ScratchDirectory& scratch);

// The H.264 units of a stream without start codes. Parameter sets stand in front of each key frame.
std::vector<std::vector<std::uint8_t>> ReadMp4Units(const std::filesystem::path& file,
                                                    const std::string& stream,
                                                    const ScratchDirectory& scratch);

// Cuts a stream of H.264 units at its start codes.
std::vector<std::vector<std::uint8_t>> SplitAtStartCodes(const std::vector<std::uint8_t>& stream);

#endif  // TESTS_GOLDEN_MP4_REFERENCE_H_
