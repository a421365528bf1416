// The boxes of one track, down to the heads of its tables.
#ifndef ISOBMFF_TRACK_PARSER_H_
#define ISOBMFF_TRACK_PARSER_H_

#include <optional>

#include "isobmff/box.h"
#include "isobmff/movie_index.h"
#include "isobmff/unreceived_tail.h"

namespace isobmff {

// The body of an mvhd or mdhd box: they begin alike.
std::optional<Timing> ReadTiming(HeaderReader& reader, const ByteRange& body);

enum class TrackState {
  kUsable,
  kDamaged,      // something that is needed is missing or malformed
  kNotReceived,  // the same, and it may be that it has not been received yet
};

// The body of a trak box. Sets `facts` of a usable track only.
TrackState ReadTrack(HeaderReader& reader, const UnreceivedTail& tail, const ByteRange& body,
                     TrackFacts& facts);

}  // namespace isobmff

#endif  // ISOBMFF_TRACK_PARSER_H_
