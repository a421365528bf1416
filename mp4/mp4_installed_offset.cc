#include "mp4/mp4_installed_offset.h"

#include <algorithm>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "common/never_destroyed.h"
#include "platform/mutex.h"

namespace stream {
namespace {

constexpr std::uint64_t kNowhere = UINT64_MAX;

// Reads the properties of one track's sample tables.
class Properties {
 public:
  Properties(MP4FileHandle file, MP4TrackId track) : file_(file), track_(track) {}

  std::optional<std::uint64_t> Find(const std::string& name) const {
    std::uint64_t value = 0;
    const std::string path = "mdia.minf.stbl." + name;
    if (!MP4GetTrackIntegerProperty(file_, track_, path.c_str(), &value)) return std::nullopt;
    return value;
  }

  std::optional<std::uint64_t> FindEntry(const std::string& table, std::uint64_t entry,
                                         const char* field) const {
    return Find(table + ".entries[" + std::to_string(entry) + "]." + field);
  }

 private:
  MP4FileHandle file_;
  MP4TrackId track_;
};

// Chunks from `first_chunk` on that have the same number of samples. Numbers start at 0.
struct ChunkRun {
  std::uint64_t first_chunk;
  std::uint64_t first_sample;
  std::uint64_t samples_a_chunk;
};

class TrackOffsets {
 public:
  TrackOffsets(MP4FileHandle file, MP4TrackId track) : properties_(file, track) {
    ReadChunkTable();
    ReadSizeTable();
    ReadRuns();
  }

  std::uint64_t Find(std::uint64_t sample) {
    const ChunkRun* const run = FindRun(sample);
    if (run == nullptr || sample >= sample_count_) return kNowhere;
    const std::uint64_t in_run = sample - run->first_sample;
    const std::uint64_t chunk = run->first_chunk + in_run / run->samples_a_chunk;
    const std::uint64_t first = sample - in_run % run->samples_a_chunk;
    if (chunk >= chunk_count_) return kNowhere;
    // Most look-ups ask for the next sample, so continue from the last one if it is in this chunk.
    if (last_ < first || last_ > sample) {
      const auto start = properties_.FindEntry(chunk_table_, chunk, "chunkOffset");
      if (!start) return kNowhere;
      last_ = first;
      last_offset_ = *start;
    }
    if (same_size_ != 0) {
      last_offset_ += (sample - last_) * same_size_;
      last_ = sample;
    }
    while (last_ < sample) {
      const auto size = properties_.FindEntry(size_table_, last_, "entrySize");
      if (!size) return kNowhere;
      last_offset_ += *size;
      ++last_;
    }
    return last_offset_;
  }

 private:
  void ReadChunkTable() {
    for (const char* const table : {"stco", "co64"}) {
      const auto count = properties_.Find(std::string(table) + ".entryCount");
      if (!count) continue;
      chunk_table_ = table;
      chunk_count_ = *count;
      return;
    }
  }

  void ReadSizeTable() {
    same_size_ = properties_.Find("stsz.sampleSize").value_or(0);
    for (const char* const table : {"stsz", "stz2"}) {
      const auto count = properties_.Find(std::string(table) + ".sampleCount");
      if (!count) continue;
      size_table_ = table;
      sample_count_ = *count;
      return;
    }
  }

  void ReadRuns() {
    const std::uint64_t count = properties_.Find("stsc.entryCount").value_or(0);
    std::uint64_t sample = 0;
    for (std::uint64_t entry = 0; entry < count; ++entry) {
      const auto chunk = properties_.FindEntry("stsc", entry, "firstChunk");
      const auto samples = properties_.FindEntry("stsc", entry, "samplesPerChunk");
      if (!chunk || !samples || *chunk == 0) return;
      const std::uint64_t first_chunk = *chunk - 1;
      if (!runs_.empty()) {
        const ChunkRun& before = runs_.back();
        if (first_chunk <= before.first_chunk) return;
        sample += (first_chunk - before.first_chunk) * before.samples_a_chunk;
      }
      runs_.push_back({first_chunk, sample, *samples});
    }
  }

  // The run that would contain the sample; null if there is none.
  const ChunkRun* FindRun(std::uint64_t sample) const {
    const auto after = std::upper_bound(
        runs_.begin(), runs_.end(), sample,
        [](std::uint64_t wanted, const ChunkRun& run) { return wanted < run.first_sample; });
    if (after == runs_.begin() || (after - 1)->samples_a_chunk == 0) return nullptr;
    return &*(after - 1);
  }

  Properties properties_;
  std::vector<ChunkRun> runs_;
  std::string chunk_table_;
  std::string size_table_;
  std::uint64_t chunk_count_ = 0;
  std::uint64_t sample_count_ = 0;
  std::uint64_t same_size_ = 0;    // 0 if each sample has its own size
  std::uint64_t last_ = kNowhere;  // the sample that was found last
  std::uint64_t last_offset_ = 0;
};

// An entry exists as long as its handle is open.
struct OpenFiles {
  Mutex mutex;
  std::map<std::pair<MP4FileHandle, MP4TrackId>, TrackOffsets> tracks GUARDED_BY(mutex);
};

OpenFiles& Files() {
  static NeverDestroyed<OpenFiles> files;
  return *files;
}

// The result is used without the lock: elements of the map do not move, and one handle is used by
// one thread at a time.
TrackOffsets& OffsetsOf(MP4FileHandle file, MP4TrackId track) {
  OpenFiles& files = Files();
  const MutexLock lock(files.mutex);
  const auto found = files.tracks.find({file, track});
  if (found != files.tracks.end()) return found->second;
  return files.tracks.emplace(std::pair(file, track), TrackOffsets(file, track)).first->second;
}

}  // namespace

std::uint64_t MP4GetSampleFileOffset(MP4FileHandle file, MP4TrackId track, MP4SampleId sample) {
  if (file == MP4_INVALID_FILE_HANDLE || sample == MP4_INVALID_SAMPLE_ID) return kNowhere;
  return OffsetsOf(file, track).Find(std::uint64_t{sample} - 1);
}

void ForgetSampleFileOffsets(MP4FileHandle file) {
  OpenFiles& files = Files();
  const MutexLock lock(files.mutex);
  std::erase_if(files.tracks, [file](const auto& entry) { return entry.first.first == file; });
}

}  // namespace stream
