// Memory for the payloads and the queue nodes of frames.
//
// Frames of one kind are released in the order in which they are made, whichever thread does it,
// but nothing is known of the order between the kinds: a player may block in one callback for as
// long as it likes while it takes every frame of the other kind. So each kind is cut one after the
// other out of chunks of 2 MiB of its own, and a chunk goes back to the system when the last of its
// frames has been released. A chunk is brought into memory at one stroke: page by page, at each
// first touch, that took longer than all of the work on a transport stream that is fast.
//
// What is held beyond the pending frames is, for each kind, the released part of the chunk with the
// oldest frame and the free part of the chunk with the newest: 8 MiB at most for both kinds. The
// end of a chunk into which the next payload does not fit is released but for its last page.
#ifndef COMMON_FRAME_MEMORY_H_
#define COMMON_FRAME_MEMORY_H_

#include <cstddef>
#include <cstdint>

enum class PayloadKind : std::uint8_t { kVideo, kAudio };

// Space for a payload of that kind, aligned for anything; null when there is no memory. From any
// thread.
std::uint8_t* AllocatePayload(std::size_t size, PayloadKind kind);

// Releases it, from any thread. Null is nothing.
void FreePayload(std::uint8_t* payload);

// The kind for which a payload was allocated.
PayloadKind KindOfPayload(const std::uint8_t* payload);

// How much memory is held for payloads now, in bytes: pending ones and what is not used.
std::size_t HeldPayloadMemory();

#endif  // COMMON_FRAME_MEMORY_H_
