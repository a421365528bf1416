// Which segments of the stream have been queued and downloaded, so that a live playlist, which
// names the same segments again and again, has each of them queued once.
//
// The state of the whole process. Safe from any thread.
#ifndef HLS_SEGMENT_STATES_H_
#define HLS_SEGMENT_STATES_H_

#include <cstddef>
#include <cstdint>
#include <set>
#include <string>
#include <string_view>

#include "hls/m3u8_playlist.h"

inline constexpr std::int32_t kSegmentQueued = 0;
inline constexpr std::int32_t kSegmentDownloaded = 1;

// What tells segments apart: the address without its query. One that begins with "?" is kept whole.
std::string MakeSegmentKey(const std::string& uri);

// The same as a part of `uri`, and many of them. For playlists of a million segments, which live
// longer than the keys.
std::string_view SegmentKeyIn(std::string_view uri);
using SegmentKeys = std::set<std::string_view>;

// Whether a live playlist, or one of variants, lists a segment here: its address has ".ts" in it.
bool IsSegment(const M3u8Entry& entry);

// Adds the segment in that state. False, with nothing changed, when it is known.
bool AddSegmentIfNew(const std::string& uri, std::int32_t state);

// Sets the state of a segment that is known.
void SetSegmentState(const std::string& uri, std::int32_t state);

// Forgets every segment in that state that is not among the current ones, and says so on the
// console, a line for each.
void RemoveStaleSegments(const M3u8Table& currentEntries, std::int32_t state);
void RemoveStaleSegments(const SegmentKeys& current_keys, std::int32_t state);

// Remembers that the segment thread has done with a segment, queued once more perhaps, that it did
// not download: it was passed over, or its download failed. Its state stays kSegmentQueued, which
// no removal asks for, so without this a live stream would leave one behind for every such segment.
void NoteSegmentDone(const std::string& uri);

// Forgets, in silence, what was noted as done and is not listed any more: neither by the top-level
// playlist nor by its variants.
void ForgetDoneSegments(const SegmentKeys& top_keys, const SegmentKeys& variant_keys = {});

// Forgets one segment, in silence: its key names another one from now on.
void ForgetSegment(const std::string& key);

// Forgets everything.
void ForgetAllSegments();

// How many segments are known.
std::size_t KnownSegments();

#endif  // HLS_SEGMENT_STATES_H_
