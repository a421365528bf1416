// Runs the FLV parser over bytes in memory and returns its frames and its console output.
#ifndef TESTS_SUPPORT_FLV_PARSE_H_
#define TESTS_SUPPORT_FLV_PARSE_H_

#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <string>
#include <vector>

#include "common/frame_queue.h"
#include "flv/flv_tag_parser.h"
#include "tests/golden/frame_dump.h"
#include "tests/support/flv_memory_source.h"
#include "tests/support/flv_tags.h"

namespace stream {

struct ParsedFlv {
  bool has_header = false;
  FrameDump frames;
  std::string console;
  std::uint16_t audio_config = 0;  // after the stream
};

// Parses to the end like the play task, but without its pauses.
inline ParsedFlv ParseFlv(const std::vector<std::uint8_t>& stream, std::uint16_t audio_config = 0) {
  ResetFrameQueues();
  std::atomic<std::uint16_t> config{audio_config};
  FlvMemorySource source(stream);
  FlvTagParser parser(source, config);
  ParsedFlv parsed;
  testing::internal::CaptureStdout();
  parsed.has_header = parser.ReadHeader();
  while (parsed.has_header && parser.ReadTag()) {
  }
  parsed.console = testing::internal::GetCapturedStdout();
  parsed.frames = PopQueuedFrames();
  parsed.audio_config = config;
  return parsed;
}

// ParseFlv over a file that consists of these tags.
inline ParsedFlv ParseTags(const std::vector<flv_test::Bytes>& tags,
                           std::uint16_t audio_config = 0) {
  return ParseFlv(
      flv_test::Join({flv_test::Header(), flv_test::Join(tags), flv_test::LastBackPointer()}),
      audio_config);
}

}  // namespace stream

#endif  // TESTS_SUPPORT_FLV_PARSE_H_
