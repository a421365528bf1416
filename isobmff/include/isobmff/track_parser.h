// Parses the boxes of one track, down to the heads of its tables.
#ifndef ISOBMFF_TRACK_PARSER_H_
#define ISOBMFF_TRACK_PARSER_H_

#include <optional>

#include "isobmff/box.h"
#include "isobmff/movie_index.h"
#include "isobmff/unreceived_tail.h"

namespace stream::isobmff {

// Parses the body of an mvhd or mdhd box. Both begin with the same fields.
std::optional<Timing> ReadTiming(HeaderReader& reader, const ByteRange& body);

enum class TrackState {
  kUsable,
  kDamaged,      // something that is needed is missing or malformed
  kNotReceived,  // the same, but it may not have been received yet
};

// Parses the body of a trak box. Sets `facts` only if the track is usable.
TrackState ReadTrack(HeaderReader& reader, const UnreceivedTail& tail, const ByteRange& body,
                     TrackFacts& facts);

}  // namespace stream::isobmff

#endif  // ISOBMFF_TRACK_PARSER_H_
