// The tables with one entry per run of samples: stts (duration of a sample), ctts (composition
// offset) and stsc (samples per chunk).
//
// An entry is found without a walk from the beginning: for every 64th entry, the number of samples
// before it is stored. A caller that reads sample after sample keeps a cursor, the run of its last
// look-up, and usually needs no search. Sample numbers start at 0 here. Everything is safe for any
// bytes, and nothing changes after construction.
#ifndef ISOBMFF_RUN_TABLE_H_
#define ISOBMFF_RUN_TABLE_H_

#include <cstdint>
#include <memory>
#include <vector>

#include "isobmff/table_box.h"
#include "platform/random_access_file.h"

namespace stream::isobmff {

// The samples from `first` up to, but not including, `end` share an entry. There are none if the
// two are equal.
struct Run {
  std::uint32_t entry = 0;
  std::uint64_t first = 0;
  std::uint64_t end = 0;
  std::uint64_t time = 0;   // stts: time of sample `first`
  std::uint32_t value = 0;  // stts: duration; ctts: offset; stsc: samples per chunk
  std::uint32_t chunk = 0;  // stsc: the chunk that begins with sample `first`, from 1
};

// Converts the entries of a table to runs, in order.
class RunEntries {
 public:
  // For stts and ctts.
  RunEntries(TableBytes bytes, std::uint32_t count) : bytes_(std::move(bytes)), count_(count) {}
  // For stsc, of a track with this many chunks. Truncated at the first entry whose first chunk does
  // not increase.
  RunEntries(TableBytes bytes, std::uint32_t count, std::uint32_t chunks);

  std::uint32_t Count() const { return count_; }

  // Fills in the run of entry `run.entry`, which must be less than Count(). `run.first` and
  // `run.time` must be set.
  void Fill(Run& run) const { of_chunks_ ? FillChunks(run) : FillSamples(run); }

 private:
  void FillSamples(Run& run) const;
  void FillChunks(Run& run) const;
  std::uint32_t FirstChunk(std::uint32_t entry) const;

  TableBytes bytes_;
  std::uint32_t count_;
  std::uint32_t ascending_ = 0;  // stsc only: leading entries whose first chunk increases
  bool of_chunks_ = false;
  std::uint32_t chunks_ = 0;
};

class RunTable {
 public:
  explicit RunTable(RunEntries entries);

  // Moves the cursor to the run of the sample. Returns false if there is none; the cursor can still
  // be used then.
  bool Find(std::uint64_t sample, Run& cursor) const {
    return (sample >= cursor.first && sample < cursor.end) || Search(sample, cursor);
  }

 private:
  static constexpr std::uint32_t kSpacing = 64;

  struct Checkpoint {
    std::uint64_t first;
    std::uint64_t time;
  };

  bool Search(std::uint64_t sample, Run& cursor) const;
  bool Walk(std::uint64_t sample, Run run, std::uint32_t limit, Run& found) const;

  RunEntries entries_;
  std::vector<Checkpoint> checkpoints_;  // for entries 0, kSpacing, ...
};

// Both return null if the table cannot be read.
std::unique_ptr<const RunTable> LoadSampleRuns(const platform::RandomAccessFile& file,
                                               const TableBox& table);
std::unique_ptr<const RunTable> LoadChunkRuns(const platform::RandomAccessFile& file,
                                              const TableBox& table, std::uint32_t chunks);

}  // namespace stream::isobmff

#endif  // ISOBMFF_RUN_TABLE_H_
