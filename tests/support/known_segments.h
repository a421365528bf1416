#ifndef TESTS_SUPPORT_KNOWN_SEGMENTS_H_
#define TESTS_SUPPORT_KNOWN_SEGMENTS_H_

#include <cstddef>

#include "hls/hls_stream.h"

namespace stream {

// Number of segments that have a state.
inline std::size_t KnownSegments() { return g_hlsStream->ledger.CurrentSizes().known; }

}  // namespace stream

#endif  // TESTS_SUPPORT_KNOWN_SEGMENTS_H_
