// The boxes of one track, down to the heads of its tables.
#ifndef ISOBMFF_TRACK_PARSER_H_
#define ISOBMFF_TRACK_PARSER_H_

#include <optional>

#include "isobmff/box.h"
#include "isobmff/movie_index.h"

namespace isobmff {

// The body of an mvhd or mdhd box: they begin alike.
std::optional<Timing> ReadTiming(HeaderReader& reader, const ByteRange& body);

// The body of a trak box. Nothing where anything that is needed is missing or malformed.
std::optional<TrackFacts> ReadTrack(HeaderReader& reader, const ByteRange& body);

}  // namespace isobmff

#endif  // ISOBMFF_TRACK_PARSER_H_
