// Memory for the payloads and the queue nodes of frames.
//
// Frames of one kind are released in the order in which they were made, by any thread. The order
// between the kinds is not known: a player may block in one callback for a long time while it takes
// every frame of the other kind. So each kind has its own chunks of 2 MiB. Allocations are placed
// one after the other in a chunk, and a chunk returns to the system when the last of its frames has
// been released. All pages of a new chunk are brought into memory at once. Doing so page by page,
// at each first touch, took longer than all other work on a fast transport stream.
//
// For each kind, memory is held in addition to the pending frames: the released part of the chunk
// with the oldest frame, and the free part of the chunk with the newest. This is at most 8 MiB for
// both kinds together. If the next payload does not fit into a chunk, the unused pages of the chunk
// are released.
#ifndef COMMON_FRAME_MEMORY_H_
#define COMMON_FRAME_MEMORY_H_

#include <cstddef>
#include <cstdint>

namespace stream {

enum class PayloadKind : std::uint8_t { kVideo, kAudio };

// Allocates a payload of that kind, aligned for any type. Returns null if there is no memory. Safe
// from any thread.
std::uint8_t* AllocatePayload(std::size_t size, PayloadKind kind);

// Releases a payload; ignores null. Safe from any thread.
void FreePayload(std::uint8_t* payload);

// Returns the kind for which a payload was allocated.
PayloadKind KindOfPayload(const std::uint8_t* payload);

// Returns the memory held for payloads in bytes, including unused space. For tests.
std::size_t HeldPayloadMemory();

}  // namespace stream

#endif  // COMMON_FRAME_MEMORY_H_
