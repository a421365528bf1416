// The status line in which a pipeline confirms a new start position.
#ifndef COMMON_START_POSITION_H_
#define COMMON_START_POSITION_H_

#include <ctime>
#include <string>

// The line for a pipeline ("TS", "FLV", "MP4") and a position in seconds, for example
// "PLAY TS StartPostion:01:02:05.500 Q:0.000000s". The hours wrap at 60 on purpose. `elapsed` is
// what accepting the position took, in ticks of clock(); it is divided by 1000 whatever a tick is.
std::string StartPositionLine(const char* format, float seconds, std::clock_t elapsed);

// `seconds` in milliseconds, the fraction dropped; INT_MIN for what does not fit in 32 bits.
int PositionMilliseconds(float seconds);

#endif  // COMMON_START_POSITION_H_
