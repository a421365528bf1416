// Memory for the payloads of frames.
//
// Frames are released about in the order in which they are made, whichever thread does it, so they
// are cut one behind the other out of chunks of 2 MiB; a chunk is used again, or given back, when
// the last of its frames is gone. A chunk is brought into memory at one stroke: page by page, at
// each first touch, that took longer than all of the work on a transport stream that comes fast.
#ifndef COMMON_FRAME_MEMORY_H_
#define COMMON_FRAME_MEMORY_H_

#include <cstddef>
#include <cstdint>

// Room for a payload, aligned for anything; null when there is no memory. From any thread.
std::uint8_t* AllocatePayload(std::size_t size);

// Gives it back, from any thread. Null is nothing.
void FreePayload(std::uint8_t* payload);

#endif  // COMMON_FRAME_MEMORY_H_
