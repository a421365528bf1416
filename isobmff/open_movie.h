// What stands behind an MP4FileHandle: a file, its shared index, and what this handle remembers.
// For use by one thread at a time. Sample numbers start at 1, as those of the interface do.
#ifndef ISOBMFF_OPEN_MOVIE_H_
#define ISOBMFF_OPEN_MOVIE_H_

#include <cstdint>
#include <memory>
#include <vector>

#include "isobmff/file.h"
#include "isobmff/movie_index.h"
#include "isobmff/read_windows.h"
#include "isobmff/sample_tables.h"

namespace isobmff {

struct Sample {
  std::uint8_t* bytes = nullptr;  // from malloc, the caller's
  std::uint32_t size = 0;
  SampleTime time;
  std::uint32_t composition = 0;
  bool is_sync = false;
};

class OpenMovie {
 public:
  // Null where the file cannot be opened or holds no complete index.
  static std::unique_ptr<OpenMovie> Open(const char* path);

  const MovieIndex& Index() const { return *index_; }
  const File& GetFile() const { return file_; }
  // Null where there is none.
  const Track* FindTrack(std::uint32_t id) const;

  bool FindTime(std::uint32_t track_id, std::uint32_t sample_id, SampleTime& time);
  bool FindPlace(std::uint32_t track_id, std::uint32_t sample_id, SamplePlace& place);
  // False where the sample is not there, its bytes are not in the file or it is absurdly large.
  bool ReadSample(std::uint32_t track_id, std::uint32_t sample_id, Sample& sample);

 private:
  struct Reading {
    const Track* track;
    SampleCursor cursor;
  };

  OpenMovie(File file, std::shared_ptr<const MovieIndex> index);

  Reading* FindReading(std::uint32_t track_id);
  bool MayBeRead(const SamplePlace& place) const;

  File file_;
  std::shared_ptr<const MovieIndex> index_;
  std::vector<Reading> readings_;  // one a track
  ReadWindows windows_;
};

}  // namespace isobmff

#endif  // ISOBMFF_OPEN_MOVIE_H_
