// The status line in which a pipeline confirms a new start position.
#ifndef COMMON_START_POSITION_H_
#define COMMON_START_POSITION_H_

#include <cstdint>
#include <ctime>
#include <string>

// The line for a pipeline ("TS", "FLV", "MP4") and a position in seconds, for example
// "PLAY TS StartPostion:01:02:05.500 Q:0.000000s". The hours wrap at 60 on purpose. `elapsed` is
// what accepting the position took, in ticks of clock(); it is divided by 1000 whatever a tick is.
std::string StartPositionLine(const char* format, float seconds, std::clock_t elapsed);

// The line's beginning, up to the position: all that an HLS pipeline sends.
std::string StartPositionLine(const char* format, float seconds);

// True when a frame lies before a start position. Whole seconds are compared: a frame at 9.9 s lies
// before a position of 10, and not before one of 9.
bool LiesBefore(float start_seconds, std::uint64_t play_time);

// `seconds` in milliseconds, the fraction dropped; INT_MIN for what does not fit in 32 bits.
int PositionMilliseconds(float seconds);

#endif  // COMMON_START_POSITION_H_
