#include "isobmff/run_table.h"

#include <algorithm>
#include <utility>

#include "isobmff/big_endian.h"

namespace stream::isobmff {
namespace {

constexpr std::size_t kSampleEntrySize = 8;  // count, value
constexpr std::size_t kChunkEntrySize = 12;  // first chunk, samples per chunk, description

void Advance(Run& run) {
  ++run.entry;
  run.time += (run.end - run.first) * run.value;
  run.first = run.end;
}

}  // namespace

RunEntries::RunEntries(TableBytes bytes, std::uint32_t count, std::uint32_t chunks)
    : bytes_(std::move(bytes)), count_(count), of_chunks_(true), chunks_(chunks) {
  std::uint32_t last = 0;
  while (ascending_ < count && FirstChunk(ascending_) > last) last = FirstChunk(ascending_++);
  // It is unknown where the entry before an invalid one ends, so that entry is dropped too.
  if (ascending_ < count) count_ = ascending_ == 0 ? 0 : ascending_ - 1;
}

std::uint32_t RunEntries::FirstChunk(std::uint32_t entry) const {
  return Read32(bytes_.Data() + entry * kChunkEntrySize);
}

void RunEntries::FillSamples(Run& run) const {
  const std::uint8_t* const at = bytes_.Data() + run.entry * kSampleEntrySize;
  run.end = run.first + Read32(at);
  run.value = Read32(at + 4);
}

void RunEntries::FillChunks(Run& run) const {
  const std::uint8_t* const at = bytes_.Data() + run.entry * kChunkEntrySize;
  const std::uint64_t after_last = std::uint64_t{chunks_} + 1;
  run.chunk = Read32(at);
  run.value = Read32(at + 4);
  const std::uint64_t begin = std::min<std::uint64_t>(run.chunk, after_last);
  std::uint64_t end = after_last;
  if (run.entry + 1 < ascending_)
    end = std::min<std::uint64_t>(FirstChunk(run.entry + 1), after_last);
  run.end = run.first + (end - begin) * run.value;
}

RunTable::RunTable(RunEntries entries) : entries_(std::move(entries)) {
  checkpoints_.reserve(entries_.Count() / kSpacing + 1);
  for (Run run; run.entry < entries_.Count(); Advance(run)) {
    if (run.entry % kSpacing == 0) checkpoints_.push_back({run.first, run.time});
    entries_.Fill(run);
  }
}

bool RunTable::Search(std::uint64_t sample, Run& cursor) const {
  constexpr std::uint32_t kNear = 4;
  if (checkpoints_.empty()) return false;
  if (cursor.end != 0 && sample >= cursor.end) {  // usually the next entry contains it
    Run next = cursor;
    Advance(next);
    if (Walk(sample, next, kNear, cursor)) return true;
  }
  const auto next_point = std::upper_bound(
      checkpoints_.begin() + 1, checkpoints_.end(), sample,
      [](std::uint64_t wanted, const Checkpoint& point) { return wanted < point.first; });
  const Checkpoint& point = *(next_point - 1);
  Run run;
  run.entry = static_cast<std::uint32_t>(next_point - checkpoints_.begin() - 1) * kSpacing;
  run.first = point.first;
  run.time = point.time;
  return Walk(sample, run, kSpacing, cursor);
}

// Searches up to `limit` entries, starting at the entry of `run`.
bool RunTable::Walk(std::uint64_t sample, Run run, std::uint32_t limit, Run& found) const {
  for (; limit > 0 && run.entry < entries_.Count(); --limit, Advance(run)) {
    entries_.Fill(run);
    if (sample < run.end) {
      found = run;
      return true;
    }
  }
  return false;
}

std::unique_ptr<const RunTable> LoadSampleRuns(const platform::RandomAccessFile& file,
                                               const TableBox& table) {
  auto bytes = TableBytes::Load(file, table);
  if (!bytes) return nullptr;
  return std::make_unique<RunTable>(RunEntries(*std::move(bytes), table.count));
}

std::unique_ptr<const RunTable> LoadChunkRuns(const platform::RandomAccessFile& file,
                                              const TableBox& table, std::uint32_t chunks) {
  auto bytes = TableBytes::Load(file, table);
  if (!bytes) return nullptr;
  return std::make_unique<RunTable>(RunEntries(*std::move(bytes), table.count, chunks));
}

}  // namespace stream::isobmff
