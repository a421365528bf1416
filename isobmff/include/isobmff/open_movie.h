// The object that an MP4FileHandle points to: a file, its shared index, and the state of this
// handle. Not thread-safe. Sample numbers start at 1, as in the interface.
#ifndef ISOBMFF_OPEN_MOVIE_H_
#define ISOBMFF_OPEN_MOVIE_H_

#include <cstdint>
#include <memory>
#include <vector>

#include "isobmff/movie_index.h"
#include "isobmff/read_cache.h"
#include "isobmff/sample_tables.h"
#include "platform/random_access_file.h"

namespace stream::isobmff {

struct Sample {
  std::uint8_t* bytes = nullptr;  // from malloc; the caller frees it
  std::uint32_t size = 0;
  SampleTime time;
  std::uint32_t composition = 0;
  bool is_sync = false;
};

class OpenMovie {
 public:
  // Returns null if the file cannot be opened or has no complete index.
  static std::unique_ptr<OpenMovie> Open(const char* path);

  const MovieIndex& Index() const { return *index_; }
  // Returns null if there is none.
  const Track* FindTrack(std::uint32_t id) const;

  bool FindTime(std::uint32_t track_id, std::uint32_t sample_id, SampleTime& time);
  bool FindLocation(std::uint32_t track_id, std::uint32_t sample_id, SampleLocation& location);
  // Returns false if there is no such sample, if its bytes are not in the file or if it is too
  // large.
  bool ReadSample(std::uint32_t track_id, std::uint32_t sample_id, Sample& sample);

 private:
  struct Reading {
    const Track* track;
    SampleCursor cursor;
  };

  OpenMovie(platform::RandomAccessFile file, std::shared_ptr<const MovieIndex> index);

  Reading* FindReading(std::uint32_t track_id);
  bool MayBeRead(const SampleLocation& location) const;

  platform::RandomAccessFile file_;
  std::shared_ptr<const MovieIndex> index_;
  std::vector<Reading> readings_;  // one per track
  ReadCache cache_;
};

}  // namespace stream::isobmff

#endif  // ISOBMFF_OPEN_MOVIE_H_
