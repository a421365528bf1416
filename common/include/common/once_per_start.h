// Limits a console line to once a start, however often its cause occurs.
#ifndef COMMON_ONCE_PER_START_H_
#define COMMON_ONCE_PER_START_H_

namespace stream {

// The limited lines.
enum class OncePerStart { kPlayerThrew, kFileRefused, kCount };

// Called by the facade at the beginning of each start.
void CountStart();

// Returns true for the first call for this line after each CountStart, and for the very first call.
// Safe from any thread.
bool IsFirstSinceStart(OncePerStart line);

}  // namespace stream

#endif  // COMMON_ONCE_PER_START_H_
