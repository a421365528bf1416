// What ffprobe and ffmpeg read from an MP4 file, to compare the track reader with.
#ifndef TESTS_GOLDEN_MP4_REFERENCE_H_
#define TESTS_GOLDEN_MP4_REFERENCE_H_

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/golden/media_tools.h"

// Times are truncated to milliseconds. Decode times count from the first one: if a composition
// offset is negative, ffprobe reports decode times that are earlier than those in the file. It
// reports presentation times unchanged.
struct Mp4ReferencePacket {
  std::uint64_t dts_ms;
  std::uint64_t pts_ms;
  std::size_t size;
};

// The packets of a stream ("v:0", "a:0"), without its edit list. This and the functions below throw
// std::runtime_error if the tools fail.
std::vector<Mp4ReferencePacket> ReadMp4Packets(const std::filesystem::path& file,
                                               const std::string& stream,
                                               const ScratchDirectory& scratch);

// The bytes of a stream in another form, which `form` selects on ffmpeg's command line ("-f adts").
std::vector<std::uint8_t> ReadMp4Stream(const std::filesystem::path& file,
                                        const std::string& stream, const std::string& form,
                                        const ScratchDirectory& scratch);

// The H.264 NAL units of a stream without start codes. Parameter sets precede each key frame.
std::vector<std::vector<std::uint8_t>> ReadMp4Units(const std::filesystem::path& file,
                                                    const std::string& stream,
                                                    const ScratchDirectory& scratch);

// Splits a stream of H.264 NAL units at its start codes.
std::vector<std::vector<std::uint8_t>> SplitAtStartCodes(const std::vector<std::uint8_t>& stream);

#endif  // TESTS_GOLDEN_MP4_REFERENCE_H_
