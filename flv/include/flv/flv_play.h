// The play task of the FLV pipeline: parses the staged bytes into frames in the frame queues.
#ifndef FLV_FLV_PLAY_H_
#define FLV_FLV_PLAY_H_

#include <atomic>
#include <cstdint>
#include <string>

#include "common/player_port.h"
#include "common/run_id.h"

namespace stream {

struct FlvPlay {
  std::string url;
  PlayerPort player;
  RunId run;                                 // of g_flvStream
  std::atomic<std::uint16_t>& audio_config;  // flv_tag_parser.h
};

// Waits until enough bytes are received, reports to the player whether they begin with an FLV
// header, and parses the stream until its end or until g_flvRunning is cleared. Bytes received
// afterwards are dropped. Blocks.
void PlayFlv(const FlvPlay& play);

}  // namespace stream

#endif  // FLV_FLV_PLAY_H_
