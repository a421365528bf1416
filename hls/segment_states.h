// Records which segments of the stream have been queued and downloaded. A live playlist lists the
// same segments again and again, but each is queued once.
//
// Process-wide state. Thread-safe.
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

// The key that identifies a segment: the address without its query. An address that begins with "?"
// is kept whole.
std::string MakeSegmentKey(const std::string& uri);

// The key as a view into `uri`, and a set of such keys. For playlists of a million segments, which
// outlive the keys.
std::string_view SegmentKeyIn(std::string_view uri);
using SegmentKeys = std::set<std::string_view>;

// Returns whether an entry of a live playlist or of one of its variants is a segment: its address
// contains ".ts".
bool IsSegment(const M3u8Entry& entry);

// Adds a segment in the given state. Returns false, and changes nothing, if the segment is known.
bool AddSegmentIfNew(const std::string& uri, std::int32_t state);

// Sets the state of a segment. Does nothing if the segment is not known.
void SetSegmentState(const std::string& uri, std::int32_t state);

// Forgets every segment in the given state that is not among the current ones, and logs a console
// line for each.
void RemoveStaleSegments(const M3u8Table& currentEntries, std::int32_t state);
void RemoveStaleSegments(const SegmentKeys& current_keys, std::int32_t state);

// Records that the segment thread has finished a segment without downloading it: it was skipped,
// perhaps since it had been queued twice, or its download failed. Its state stays kSegmentQueued,
// but RemoveStaleSegments is called for kSegmentDownloaded only, so without this a live stream
// would leave one entry for every such segment.
void RecordSegmentDone(const std::string& uri);

// Forgets, without a console line, every segment that RecordSegmentDone recorded and that is no
// longer listed, neither by the top-level playlist nor by its variants.
void ForgetDoneSegments(const SegmentKeys& top_keys, const SegmentKeys& variant_keys = {});

// Forgets one segment, without a console line: its key names another segment from now on.
void ForgetSegment(const std::string& key);

void ForgetAllSegments();

// Returns the number of known segments.
std::size_t KnownSegments();

#endif  // HLS_SEGMENT_STATES_H_
