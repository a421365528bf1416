// The sample tables of one track: where each sample lies, how big it is, when it is due.
//
// They are loaded from the file when they are first needed, one read a table, and are then shared
// by all handles of the file. A handle brings a cursor, which makes reading in order cheap; a
// look-up anywhere else takes a search of O(log n) and a walk of at most 64 steps, however long the
// track, its chunks or its runs are. A sample that one of the tables does not cover is not there.
// Sample numbers start at 0 here.
#ifndef ISOBMFF_SAMPLE_TABLES_H_
#define ISOBMFF_SAMPLE_TABLES_H_

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "isobmff/file.h"
#include "isobmff/lazy.h"
#include "isobmff/run_table.h"
#include "isobmff/table_box.h"

namespace isobmff {

// stsz or stz2.
class SizeTable {
 public:
  SizeTable(TableBytes bytes, const TableBox& box);

  // Both of a sample below the count of the table.
  std::uint32_t At(std::uint32_t sample) const;
  // Bytes of `count` samples from `first` on.
  std::uint64_t Sum(std::uint32_t first, std::uint32_t count) const;

 private:
  static constexpr std::uint32_t kSpacing = 64;

  std::uint64_t Before(std::uint32_t sample) const;
  std::uint64_t Walk(std::uint32_t first, std::uint32_t count) const;

  TableBytes bytes_;
  unsigned entry_bits_;
  std::uint32_t same_size_;
  std::vector<std::uint64_t> before_;  // bytes before samples 0, kSpacing, ...
};

// stss: the numbers of the sync samples, from 1 on. Those that do not go on upwards are left out.
class SyncTable {
 public:
  SyncTable(TableBytes bytes, std::uint32_t count);

  // The cursor is any number, best what the last call left.
  bool Holds(std::uint32_t number, std::uint32_t& cursor) const;

 private:
  std::uint32_t At(std::uint32_t entry) const;
  // The first entry that is not below the number.
  std::uint32_t Search(std::uint32_t number) const;

  TableBytes bytes_;
  std::uint32_t count_ = 0;
};

struct SamplePlace {
  std::uint64_t offset = 0;
  std::uint32_t size = 0;
};

// What a handle remembers of its last look-ups in a track.
struct SampleCursor {
  Run time;
  Run composition;
  Run chunk;
  std::uint32_t sync_entry = 0;
  std::uint64_t place_of = UINT64_MAX;  // the sample of `place`
  SamplePlace place;
};

struct SampleTime {
  std::uint64_t start = 0;
  std::uint32_t duration = 0;
};

// Where the tables are: what opening a file finds out.
struct SampleTableBoxes {
  std::optional<TableBox> sizes;        // stsz, stz2
  std::optional<TableBox> times;        // stts
  std::optional<TableBox> composition;  // ctts; may be missing: no sample is shown later
  std::optional<TableBox> chunk_runs;   // stsc
  std::optional<TableBox> offsets;      // stco, co64
  std::optional<TableBox> sync;         // stss; may be missing: every sample is a sync sample

  // Whether all that a track needs is there. Samples need an entry to place them in the other
  // tables.
  bool Complete() const;
};

// Any number of threads may use it at once, each with a cursor of its own. `file` is any handle of
// the file that the boxes are in. A table that cannot be read makes the sample one that is not
// there.
class SampleTables {
 public:
  explicit SampleTables(const SampleTableBoxes& boxes) : boxes_(boxes) {}

  std::uint32_t Count() const { return boxes_.sizes->count; }
  bool FindTime(const File& file, std::uint32_t sample, SampleCursor& cursor,
                SampleTime& time) const;
  // Leaves the place in the cursor.
  bool FindPlace(const File& file, std::uint32_t sample, SampleCursor& cursor) const;
  // The 32 bits as they are in the table.
  bool FindComposition(const File& file, std::uint32_t sample, SampleCursor& cursor,
                       std::uint32_t& offset) const;
  bool FindSync(const File& file, std::uint32_t sample, SampleCursor& cursor, bool& is_sync) const;
  // Of all samples.
  std::uint64_t TotalSize(const File& file) const;

 private:
  const SizeTable* Sizes(const File& file) const;
  bool ChunkOffset(const File& file, std::uint32_t chunk, std::uint64_t& offset) const;

  SampleTableBoxes boxes_;
  Lazy<SizeTable> sizes_;
  Lazy<RunTable> times_;
  Lazy<RunTable> composition_;
  Lazy<RunTable> chunk_runs_;
  Lazy<TableBytes> offsets_;
  Lazy<SyncTable> sync_;
};

}  // namespace isobmff

#endif  // ISOBMFF_SAMPLE_TABLES_H_
