// Describes the tracks of a file in lines for people.
#ifndef ISOBMFF_MOVIE_TEXT_H_
#define ISOBMFF_MOVIE_TEXT_H_

#include <string>

#include "isobmff/file.h"
#include "isobmff/movie_index.h"

namespace isobmff {

// For example "1	video	H264 High@3, 60.000 secs, 754 kbps, 640x360 @ 30.000000 fps": number
// of the track, kind, codec, duration and rate. Without a line break.
std::string TrackText(const File& file, const Track& track);

// A heading and one line per track.
std::string MovieText(const File& file, const MovieIndex& index);

}  // namespace isobmff

#endif  // ISOBMFF_MOVIE_TEXT_H_
