// The sample tables of one track: the offset, size and time of each sample.
//
// Each table is loaded from the file with one read when it is first needed, and is then shared by
// all handles of the file. Each handle has a cursor, which makes reading in order cheap. Any other
// look-up takes a search of O(log n) and a walk of at most 64 steps, however long the track, its
// chunks or its runs are. A sample that one of the tables does not cover does not exist. Sample
// numbers start at 0 here.
#ifndef ISOBMFF_SAMPLE_TABLES_H_
#define ISOBMFF_SAMPLE_TABLES_H_

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "isobmff/lazy.h"
#include "isobmff/run_table.h"
#include "isobmff/table_box.h"
#include "platform/random_access_file.h"

namespace stream::isobmff {

// stsz or stz2.
class SizeTable {
 public:
  SizeTable(TableBytes bytes, const TableBox& box);

  // For both, the samples must be less than the count of the table.
  std::uint32_t At(std::uint32_t sample) const;
  // Total size of `count` samples from `first` on, in bytes.
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

// stss: the numbers of the sync samples, from 1. Truncated at the first number that does not
// increase.
class SyncTable {
 public:
  SyncTable(TableBytes bytes, std::uint32_t count);

  // Returns whether a sample is a sync sample. The cursor may have any value; the one that the last
  // call left is best.
  bool Contains(std::uint32_t number, std::uint32_t& cursor) const;

 private:
  std::uint32_t At(std::uint32_t entry) const;
  // The first entry that is not less than `number`.
  std::uint32_t Search(std::uint32_t number) const;

  TableBytes bytes_;
  std::uint32_t count_ = 0;
};

struct SampleLocation {
  std::uint64_t offset = 0;
  std::uint32_t size = 0;
};

// The last look-ups of a handle in a track.
struct SampleCursor {
  Run time;
  Run composition;
  Run chunk;
  std::uint32_t sync_entry = 0;
  std::uint64_t sample = UINT64_MAX;  // the sample that `location` belongs to
  SampleLocation location;
};

struct SampleTime {
  std::uint64_t start = 0;
  std::uint32_t duration = 0;
};

// The locations of the tables, found when a file is opened.
struct SampleTableBoxes {
  std::optional<TableBox> sizes;        // stsz, stz2
  std::optional<TableBox> times;        // stts
  std::optional<TableBox> composition;  // ctts; optional: without it all composition offsets are 0
  std::optional<TableBox> chunk_runs;   // stsc
  std::optional<TableBox> offsets;      // stco, co64
  std::optional<TableBox> sync;         // stss; optional: without it every sample is a sync sample

  // Returns whether all required tables are there. If there are samples, the other tables must have
  // entries to locate them.
  bool Complete() const;
};

// Thread-safe, if each thread uses a cursor of its own. `file` is any handle of the file that
// contains the tables. If a table cannot be read, its samples do not exist.
class SampleTables {
 public:
  explicit SampleTables(const SampleTableBoxes& boxes) : boxes_(boxes) {}

  std::uint32_t Count() const { return boxes_.sizes->count; }
  bool FindTime(const platform::RandomAccessFile& file, std::uint32_t sample, SampleCursor& cursor,
                SampleTime& time) const;
  // Stores the result in `cursor.location`.
  bool FindLocation(const platform::RandomAccessFile& file, std::uint32_t sample,
                    SampleCursor& cursor) const;
  // `offset` is set to the 32 bits in the table.
  bool FindComposition(const platform::RandomAccessFile& file, std::uint32_t sample,
                       SampleCursor& cursor, std::uint32_t& offset) const;
  bool FindSync(const platform::RandomAccessFile& file, std::uint32_t sample, SampleCursor& cursor,
                bool& is_sync) const;

 private:
  const SizeTable* Sizes(const platform::RandomAccessFile& file) const;
  bool ChunkOffset(const platform::RandomAccessFile& file, std::uint32_t chunk,
                   std::uint64_t& offset) const;

  SampleTableBoxes boxes_;
  Lazy<SizeTable> sizes_;
  Lazy<RunTable> times_;
  Lazy<RunTable> composition_;
  Lazy<RunTable> chunk_runs_;
  Lazy<TableBytes> offsets_;
  Lazy<SyncTable> sync_;
};

}  // namespace stream::isobmff

#endif  // ISOBMFF_SAMPLE_TABLES_H_
