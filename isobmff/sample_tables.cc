#include "isobmff/sample_tables.h"

#include <algorithm>
#include <utility>

#include "isobmff/big_endian.h"

namespace stream::isobmff {
namespace {

std::unique_ptr<const TableBytes> LoadBytes(const platform::RandomAccessFile& file,
                                            const TableBox& box) {
  auto bytes = TableBytes::Load(file, box);
  if (!bytes) return nullptr;
  return std::make_unique<const TableBytes>(*std::move(bytes));
}

const RunTable* LoadedRuns(const Lazy<RunTable>& lazy, const platform::RandomAccessFile& file,
                           const TableBox& box) {
  return lazy.Get([&] { return LoadSampleRuns(file, box); });
}

}  // namespace

SizeTable::SizeTable(TableBytes bytes, const TableBox& box)
    : bytes_(std::move(bytes)), entry_bits_(box.entry_bits), same_size_(box.same_size) {
  if (entry_bits_ == 0) return;  // then Sum is a product
  before_.reserve(box.count / kSpacing + 1);
  std::uint64_t sum = 0;
  for (std::uint32_t first = 0, count = 0; first < box.count; first += count) {
    before_.push_back(sum);
    count = std::min(kSpacing, box.count - first);
    sum += Walk(first, count);
  }
}

std::uint32_t SizeTable::At(std::uint32_t sample) const {
  const std::uint8_t* const data = bytes_.Data();
  const std::size_t index = sample;
  switch (entry_bits_) {
    case 0:
      return same_size_;
    case 4:
      return sample % 2 == 0 ? data[index / 2] >> 4 : data[index / 2] & 0xF;
    case 8:
      return data[index];
    case 16:
      return Read16(data + index * 2);
    default:
      return Read32(data + index * 4);
  }
}

std::uint64_t SizeTable::Sum(std::uint32_t first, std::uint32_t count) const {
  if (entry_bits_ == 0) return std::uint64_t{same_size_} * count;
  if (count <= kSpacing) return Walk(first, count);
  return Before(first + count) - Before(first);
}

// `sample` may be one past the last one.
std::uint64_t SizeTable::Before(std::uint32_t sample) const {
  const std::uint32_t note =
      std::min(sample / kSpacing, static_cast<std::uint32_t>(before_.size() - 1));
  return before_[note] + Walk(note * kSpacing, sample - note * kSpacing);
}

std::uint64_t SizeTable::Walk(std::uint32_t first, std::uint32_t count) const {
  std::uint64_t sum = 0;
  for (std::uint32_t i = 0; i < count; ++i) sum += At(first + i);
  return sum;
}

SyncTable::SyncTable(TableBytes bytes, std::uint32_t count) : bytes_(std::move(bytes)) {
  for (std::uint32_t last = 0; count_ < count && At(count_) > last; ++count_) last = At(count_);
}

bool SyncTable::Contains(std::uint32_t number, std::uint32_t& cursor) const {
  const auto is_lower_bound = [&](std::uint32_t entry) {
    return entry <= count_ && (entry == 0 || At(entry - 1) < number) &&
           (entry == count_ || At(entry) >= number);
  };
  if (!is_lower_bound(cursor)) cursor = is_lower_bound(cursor + 1) ? cursor + 1 : Search(number);
  return cursor < count_ && At(cursor) == number;
}

std::uint32_t SyncTable::At(std::uint32_t entry) const {
  return Read32(bytes_.Data() + std::size_t{entry} * 4);
}

std::uint32_t SyncTable::Search(std::uint32_t number) const {
  std::uint32_t low = 0;
  for (std::uint32_t high = count_; low < high;) {
    const std::uint32_t middle = low + (high - low) / 2;
    if (At(middle) < number) {
      low = middle + 1;
    } else {
      high = middle;
    }
  }
  return low;
}

bool SampleTableBoxes::Complete() const {
  if (!sizes || !times || !chunk_runs || !offsets) return false;
  return sizes->count == 0 || (times->count != 0 && chunk_runs->count != 0 && offsets->count != 0);
}

bool SampleTables::FindTime(const platform::RandomAccessFile& file, std::uint32_t sample,
                            SampleCursor& cursor, SampleTime& time) const {
  if (sample >= Count()) return false;
  const RunTable* const times = LoadedRuns(times_, file, *boxes_.times);
  if (times == nullptr || !times->Find(sample, cursor.time)) return false;
  const Run& run = cursor.time;
  time = {run.time + (sample - run.first) * run.value, run.value};
  return true;
}

bool SampleTables::FindLocation(const platform::RandomAccessFile& file, std::uint32_t sample,
                                SampleCursor& cursor) const {
  if (cursor.sample == sample) return true;
  const SizeTable* const sizes = Sizes(file);
  const RunTable* const runs = chunk_runs_.Get(
      [&] { return LoadChunkRuns(file, *boxes_.chunk_runs, boxes_.offsets->count); });
  if (sample >= Count() || sizes == nullptr || runs == nullptr ||
      !runs->Find(sample, cursor.chunk)) {
    return false;
  }
  const Run& run = cursor.chunk;  // it contains the sample, so run.value is not 0
  const std::uint64_t in_run = sample - run.first;
  const auto in_chunk = static_cast<std::uint32_t>(in_run % run.value);
  // The samples of a chunk are stored one after another.
  const bool follows = in_chunk != 0 && cursor.sample + 1 == sample;
  std::uint64_t start = cursor.location.offset;
  if (!follows) {
    const auto chunk = static_cast<std::uint32_t>(run.chunk + in_run / run.value);
    if (!ChunkOffset(file, chunk, start)) return false;
  }
  const std::uint64_t before =
      follows ? cursor.location.size : sizes->Sum(sample - in_chunk, in_chunk);
  if (before > UINT64_MAX - start) return false;
  cursor.location = {start + before, sizes->At(sample)};
  cursor.sample = sample;
  return true;
}

bool SampleTables::FindComposition(const platform::RandomAccessFile& file, std::uint32_t sample,
                                   SampleCursor& cursor, std::uint32_t& offset) const {
  offset = 0;
  if (!boxes_.composition) return true;
  const RunTable* const runs = LoadedRuns(composition_, file, *boxes_.composition);
  if (runs == nullptr || !runs->Find(sample, cursor.composition)) return false;
  offset = cursor.composition.value;
  return true;
}

bool SampleTables::FindSync(const platform::RandomAccessFile& file, std::uint32_t sample,
                            SampleCursor& cursor, bool& is_sync) const {
  is_sync = true;
  if (!boxes_.sync) return true;
  const SyncTable* const sync = sync_.Get([&]() -> std::unique_ptr<const SyncTable> {
    auto bytes = TableBytes::Load(file, *boxes_.sync);
    if (!bytes) return nullptr;
    return std::make_unique<const SyncTable>(*std::move(bytes), boxes_.sync->count);
  });
  if (sync == nullptr) return false;
  is_sync = sync->Contains(sample + 1, cursor.sync_entry);
  return true;
}

const SizeTable* SampleTables::Sizes(const platform::RandomAccessFile& file) const {
  return sizes_.Get([&]() -> std::unique_ptr<const SizeTable> {
    auto bytes = TableBytes::Load(file, *boxes_.sizes);
    if (!bytes) return nullptr;
    return std::make_unique<const SizeTable>(*std::move(bytes), *boxes_.sizes);
  });
}

bool SampleTables::ChunkOffset(const platform::RandomAccessFile& file, std::uint32_t chunk,
                               std::uint64_t& offset) const {
  const TableBox& box = *boxes_.offsets;
  const TableBytes* const bytes = offsets_.Get([&] { return LoadBytes(file, box); });
  if (bytes == nullptr || chunk == 0 || chunk > box.count) return false;
  const std::uint8_t* const at = bytes->Data() + std::size_t{chunk - 1} * (box.entry_bits / 8);
  offset = box.entry_bits == 64 ? Read64(at) : Read32(at);
  return true;
}

}  // namespace stream::isobmff
