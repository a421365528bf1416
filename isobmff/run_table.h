// The tables that tell something for runs of samples: stts (how long a sample lasts), ctts (how
// much later it is shown) and stsc (how many samples a chunk holds).
//
// An entry is found without a walk from the beginning: every 64th is noted with the samples before
// it. Whoever reads sample after sample keeps a cursor, the run of its last look-up, and mostly
// needs no search at all. Sample numbers start at 0 here. All of it is safe for any bytes, and none
// of it changes once made.
#ifndef ISOBMFF_RUN_TABLE_H_
#define ISOBMFF_RUN_TABLE_H_

#include <cstdint>
#include <memory>
#include <vector>

#include "isobmff/file.h"
#include "isobmff/table_box.h"

namespace isobmff {

// Samples `first` to before `end` share an entry; nothing does where they are equal.
struct Run {
  std::uint32_t entry = 0;
  std::uint64_t first = 0;
  std::uint64_t end = 0;
  std::uint64_t time = 0;   // stts: of sample `first`
  std::uint32_t value = 0;  // stts: duration; ctts: offset; stsc: samples of a chunk
  std::uint32_t chunk = 0;  // stsc: the chunk that sample `first` begins, from 1 on
};

// Entries, made into runs one after the other.
class RunEntries {
 public:
  // stts and ctts.
  RunEntries(TableBytes bytes, std::uint32_t count) : bytes_(std::move(bytes)), count_(count) {}
  // stsc of a track with so many chunks: up to the first entry that does not go on upwards.
  RunEntries(TableBytes bytes, std::uint32_t count, std::uint32_t chunks);

  std::uint32_t Count() const { return count_; }

  // Makes `run` that of its field `entry`, which is below Count(). Its fields `first` and `time`
  // must be right already.
  void Fill(Run& run) const { of_chunks_ ? FillChunks(run) : FillSamples(run); }

 private:
  void FillSamples(Run& run) const;
  void FillChunks(Run& run) const;
  std::uint32_t FirstChunk(std::uint32_t entry) const;

  TableBytes bytes_;
  std::uint32_t count_;
  std::uint32_t ascending_ = 0;  // of chunks only: entries that go on upwards from the one before
  bool of_chunks_ = false;
  std::uint32_t chunks_ = 0;
};

class RunTable {
 public:
  explicit RunTable(RunEntries entries);

  // Moves the cursor to the run of the sample. False, and the cursor still of use, where there is
  // none.
  bool Find(std::uint64_t sample, Run& cursor) const {
    return (sample >= cursor.first && sample < cursor.end) || Search(sample, cursor);
  }

 private:
  static constexpr std::uint32_t kSpacing = 64;

  struct Note {
    std::uint64_t first;
    std::uint64_t time;
  };

  bool Search(std::uint64_t sample, Run& cursor) const;
  bool Walk(std::uint64_t sample, Run run, std::uint32_t most, Run& found) const;

  RunEntries entries_;
  std::vector<Note> notes_;  // of entries 0, kSpacing, ...
};

// Null where the table cannot be read.
std::unique_ptr<const RunTable> LoadSampleRuns(const File& file, const TableBox& table);
std::unique_ptr<const RunTable> LoadChunkRuns(const File& file, const TableBox& table,
                                              std::uint32_t chunks);

}  // namespace isobmff

#endif  // ISOBMFF_RUN_TABLE_H_
