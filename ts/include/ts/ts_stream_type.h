// Stream types of the PMT (ISO/IEC 13818-1, table 2-34) that the demultiplexer distinguishes.
#ifndef TS_TS_STREAM_TYPE_H_
#define TS_TS_STREAM_TYPE_H_

#include <atomic>
#include <cstdint>

namespace stream {

inline constexpr std::uint8_t kStreamTypeMpeg1Video = 0x01;
inline constexpr std::uint8_t kStreamTypeMpeg2Video = 0x02;
inline constexpr std::uint8_t kStreamTypeMpeg1Audio = 0x03;
inline constexpr std::uint8_t kStreamTypeMpeg2Audio = 0x04;
inline constexpr std::uint8_t kStreamTypeAdts = 0x0F;
inline constexpr std::uint8_t kStreamTypeMpeg4Visual = 0x10;
inline constexpr std::uint8_t kStreamTypeLatm = 0x11;
inline constexpr std::uint8_t kStreamTypeH264 = 0x1B;
inline constexpr std::uint8_t kStreamTypeH265 = 0x24;
inline constexpr std::uint8_t kStreamTypeAvs = 0x42;

bool IsVideoStreamType(std::uint8_t type);
bool IsAudioStreamType(std::uint8_t type);

// True for the video types that are demultiplexed into frames.
bool IsPlayableVideo(std::uint8_t type);

// True for video types that are recognised and skipped without a line.
bool IsKnownButNotPlayable(std::uint8_t type);

// Stream type of the last video or unrecognised stream that a PMT listed; 0 before the first.
extern std::atomic<std::uint8_t> ts_last_stream_type;

}  // namespace stream

#endif  // TS_TS_STREAM_TYPE_H_
