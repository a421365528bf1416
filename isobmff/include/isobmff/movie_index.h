// The index of a file: its moov box, as far as reading samples needs it.
//
// An incomplete index is refused: the moov box must be in the file, and its children must be
// well-formed and fill it, except for zeros as padding. A damaged track is skipped: every listed
// track has all that is needed, and all its counts fit their boxes. If zeros may stand for bytes of
// a video or audio track that have not been received yet, the index is incomplete. Edit lists are
// ignored, and so is everything outside the moov box, so a fragmented file has no samples.
//
// All handles of a file and their threads share one index. It never changes, except that tables are
// loaded when they are first needed.
#ifndef ISOBMFF_MOVIE_INDEX_H_
#define ISOBMFF_MOVIE_INDEX_H_

#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "isobmff/box.h"
#include "isobmff/sample_entry.h"
#include "isobmff/sample_tables.h"
#include "isobmff/unreceived_tail.h"
#include "platform/random_access_file.h"

namespace stream::isobmff {

// From mvhd or mdhd: a time scale, and a duration in it.
struct Timing {
  std::uint32_t scale = 0;
  std::uint64_t duration = 0;
};

struct TrackFacts {
  std::uint32_t id = 0;
  Timing timing;
  std::string handler;  // "vide", "soun", ..., in lower case even if it is not in the file
  SampleEntry entry;
  SampleTableBoxes tables;
};

struct Track {
  explicit Track(TrackFacts known) : facts(std::move(known)), tables(facts.tables) {}

  TrackFacts facts;
  SampleTables tables;
};

class MovieIndex {
 public:
  // Returns null if the file has no complete index.
  static std::shared_ptr<const MovieIndex> Read(const platform::RandomAccessFile& file);

  const Timing& GetTiming() const { return timing_; }
  const std::deque<Track>& Tracks() const { return tracks_; }

  // Returns whether this is still the index of the file, which was opened again. Compares only the
  // first and the last bytes, which is cheaper than reading the index again.
  bool IsStoredIn(const platform::RandomAccessFile& file) const;

 private:
  bool ReadMovie(HeaderReader& reader, const Box& movie);
  bool AddTrack(HeaderReader& reader, const UnreceivedTail& tail, const Box& box);
  bool Remember(const platform::RandomAccessFile& file, const Box& movie);

  Timing timing_;
  std::deque<Track> tracks_;  // tables cannot be moved
  ByteRange location_;
  bool is_open_ = false;  // extends to the end of the file, and grows with it
  Bytes head_;
  Bytes tail_;
};

}  // namespace stream::isobmff

#endif  // ISOBMFF_MOVIE_INDEX_H_
