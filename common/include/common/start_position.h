// The status line with which a pipeline confirms a new start position, and the test for frames
// before that position.
#ifndef COMMON_START_POSITION_H_
#define COMMON_START_POSITION_H_

#include <cstdint>
#include <ctime>
#include <string>

namespace stream {

// Returns the line for a pipeline ("TS", "FLV", "MP4") and a position in seconds, for example
// "PLAY TS StartPostion:01:02:05.500 Q:0.000000s". `elapsed` is the time taken to accept the
// position, in ticks of clock(). Kept for compatibility: the hours wrap at 60, and `elapsed` is
// divided by 1000 whatever the length of a tick.
std::string StartPositionLine(const char* format, float seconds, std::clock_t elapsed);

// Returns the line without the part after the position, as the HLS pipeline sends it.
std::string StartPositionLine(const char* format, float seconds);

// Returns true if a frame is before a start position. The fraction of its play time is dropped: a
// frame at 9.9 s is before a position of 10 but not before a position of 9.
bool IsBeforeStart(float start_seconds, std::uint64_t play_time);

// Converts `seconds` to milliseconds and drops the fraction. Returns INT_MIN if the value does not
// fit in 32 bits.
int PositionMilliseconds(float seconds);

}  // namespace stream

#endif  // COMMON_START_POSITION_H_
