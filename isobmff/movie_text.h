// Lines for people about the tracks of a file.
#ifndef ISOBMFF_MOVIE_TEXT_H_
#define ISOBMFF_MOVIE_TEXT_H_

#include <string>

#include "isobmff/file.h"
#include "isobmff/movie_index.h"

namespace isobmff {

// "1	video	H264 High@3, 60.000 secs, 754 kbps, 640x360 @ 30.000000 fps": number of the track,
// kind, codec, length and rate. No line break.
std::string TrackText(const File& file, const Track& track);

// A heading and a line a track.
std::string MovieText(const File& file, const MovieIndex& index);

}  // namespace isobmff

#endif  // ISOBMFF_MOVIE_TEXT_H_
