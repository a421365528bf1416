// The index of a file: its moov box, as far as reading samples needs it.
//
// An index that is not whole is none: the moov box must be in the file, and its children must be
// well-formed and fill it, but for zeros that pad it. A track that is damaged is skipped: each one
// that is listed has all that is needed, and every count of it fits its box. Zeros that may stand
// for bytes of a video or audio track that have not been received yet make the index one that is
// not whole. Edit lists are not looked at, and what a fragmented file holds outside the moov box is
// not either, so such a file has no samples.
//
// One index is shared by all handles of a file and by their threads. It never changes, but for
// tables that are loaded when they are first needed.
#ifndef ISOBMFF_MOVIE_INDEX_H_
#define ISOBMFF_MOVIE_INDEX_H_

#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "isobmff/box.h"
#include "isobmff/file.h"
#include "isobmff/sample_entry.h"
#include "isobmff/sample_tables.h"
#include "isobmff/unreceived_tail.h"

namespace isobmff {

// Of mvhd or mdhd: a time scale and a duration in it.
struct Timing {
  std::uint32_t scale = 0;
  std::uint64_t duration = 0;
};

struct TrackFacts {
  std::uint32_t id = 0;
  Timing timing;
  std::string handler;  // "vide", "soun", ..., in small letters whatever they are in the file
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
  // Null where the file holds no complete index.
  static std::shared_ptr<const MovieIndex> Read(const File& file);

  const Timing& GetTiming() const { return timing_; }
  const std::deque<Track>& Tracks() const { return tracks_; }

  // Whether this is still the index that lies in the file, which has been opened anew: cheaper than
  // reading it again. A look at its first bytes and its last.
  bool LiesIn(const File& file) const;

 private:
  bool ReadMovie(HeaderReader& reader, const Box& movie);
  bool AddTrack(HeaderReader& reader, const UnreceivedTail& tail, const Box& box);
  bool Remember(const File& file, const Box& movie);

  Timing timing_;
  std::deque<Track> tracks_;  // tables cannot be moved
  ByteRange place_;
  bool is_open_ = false;  // it goes on to the end of the file: more of it comes as the file grows
  Bytes head_;
  Bytes tail_;
};

}  // namespace isobmff

#endif  // ISOBMFF_MOVIE_INDEX_H_
