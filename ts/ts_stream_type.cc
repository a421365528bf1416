#include "ts/ts_stream_type.h"

namespace stream {

std::atomic<std::uint8_t> ts_last_stream_type{0};

bool IsVideoStreamType(std::uint8_t type) {
  return type == kStreamTypeMpeg1Video || IsPlayableVideo(type) || IsKnownButNotPlayable(type);
}

bool IsAudioStreamType(std::uint8_t type) {
  return type == kStreamTypeMpeg1Audio || type == kStreamTypeMpeg2Audio ||
         type == kStreamTypeAdts || type == kStreamTypeLatm;
}

bool IsPlayableVideo(std::uint8_t type) {
  return type == kStreamTypeMpeg2Video || type == kStreamTypeH264 || type == kStreamTypeH265;
}

bool IsKnownButNotPlayable(std::uint8_t type) {
  return type == kStreamTypeMpeg4Visual || type == kStreamTypeAvs;
}

}  // namespace stream
