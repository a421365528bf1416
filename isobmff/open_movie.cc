#include "isobmff/open_movie.h"

#include <algorithm>
#include <cstdlib>
#include <span>
#include <utility>

#include "isobmff/index_registry.h"

namespace stream::isobmff {
namespace {

// A larger size is taken for damage: reading such a sample would delay a stop. The largest video
// frames of H.264, at level 6.2, take 51 MiB in 4:2:0 before they are compressed.
constexpr std::uint32_t kMaxSampleBytes = std::uint32_t{64} << 20;

struct Freer {
  void operator()(void* block) const { std::free(block); }
};

}  // namespace

std::unique_ptr<OpenMovie> OpenMovie::Open(const char* path) {
  auto file = platform::RandomAccessFile::Open(path);
  if (!file) return nullptr;
  auto index = IndexOf(*file);
  if (index == nullptr) return nullptr;
  return std::unique_ptr<OpenMovie>(new OpenMovie(*std::move(file), std::move(index)));
}

OpenMovie::OpenMovie(platform::RandomAccessFile file, std::shared_ptr<const MovieIndex> index)
    : file_(std::move(file)), index_(std::move(index)) {
  readings_.reserve(index_->Tracks().size());
  for (const Track& track : index_->Tracks()) readings_.push_back({&track, {}});
}

const Track* OpenMovie::FindTrack(std::uint32_t id) const {
  const auto& tracks = index_->Tracks();
  const auto found = std::find_if(tracks.begin(), tracks.end(),
                                  [id](const Track& track) { return track.facts.id == id; });
  return found == tracks.end() ? nullptr : &*found;
}

OpenMovie::Reading* OpenMovie::FindReading(std::uint32_t track_id) {
  const auto found = std::find_if(readings_.begin(), readings_.end(), [&](const Reading& reading) {
    return reading.track->facts.id == track_id;
  });
  return found == readings_.end() ? nullptr : &*found;
}

bool OpenMovie::FindTime(std::uint32_t track_id, std::uint32_t sample_id, SampleTime& time) {
  Reading* const reading = FindReading(track_id);
  return reading != nullptr && sample_id != 0 &&
         reading->track->tables.FindTime(file_, sample_id - 1, reading->cursor, time);
}

bool OpenMovie::FindLocation(std::uint32_t track_id, std::uint32_t sample_id,
                             SampleLocation& location) {
  Reading* const reading = FindReading(track_id);
  if (reading == nullptr || sample_id == 0 ||
      !reading->track->tables.FindLocation(file_, sample_id - 1, reading->cursor)) {
    return false;
  }
  location = reading->cursor.location;
  return true;
}

bool OpenMovie::ReadSample(std::uint32_t track_id, std::uint32_t sample_id, Sample& sample) {
  Reading* const reading = FindReading(track_id);
  if (reading == nullptr || sample_id == 0) return false;
  const SampleTables& tables = reading->track->tables;
  SampleCursor& cursor = reading->cursor;
  const std::uint32_t number = sample_id - 1;
  if (!tables.FindLocation(file_, number, cursor) ||
      !tables.FindTime(file_, number, cursor, sample.time) ||
      !tables.FindComposition(file_, number, cursor, sample.composition) ||
      !tables.FindSync(file_, number, cursor, sample.is_sync) || !MayBeRead(cursor.location)) {
    return false;
  }
  const std::size_t size = cursor.location.size;
  std::unique_ptr<std::uint8_t, Freer> bytes(
      static_cast<std::uint8_t*>(std::malloc(std::max<std::size_t>(size, 1))));
  if (bytes == nullptr || !cache_.Read(file_, cursor.location.offset, {bytes.get(), size})) {
    return false;
  }
  sample.bytes = bytes.release();
  sample.size = cursor.location.size;
  return true;
}

// Checked before memory is allocated.
bool OpenMovie::MayBeRead(const SampleLocation& location) const {
  if (location.size > kMaxSampleBytes) return false;
  const auto holds = [&](std::uint64_t size) {
    return location.offset <= size && location.size <= size - location.offset;
  };
  return holds(file_.OpenedSize()) || holds(file_.Size());
}

}  // namespace stream::isobmff
