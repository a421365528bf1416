#include "mp4/mp4_track_reader.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "common/scope_exit.h"
#include "mp4/mp4_state.h"

namespace stream {
namespace {

float Seconds(std::uint64_t milliseconds) {
  return static_cast<float>(static_cast<double>(milliseconds) / 1000.0);
}

bool StartsBefore(const Mp4Sample& sample, float start_position) {
  return static_cast<float>(sample.PresentationTime()) < start_position * 1000.0F;
}

}  // namespace

void Mp4TrackReader::Begin() { key_time_ = 0; }

void Mp4TrackReader::Reset(RunId run) {
  const MutexLock lock(mutex_);
  run_ = run;
  ++repositions_;
  video_ = Track();
  audio_ = Track();
  refused_ = false;
  discovered_ = false;
  revision_.reset();
  open_file_.reset();
}

void Mp4TrackReader::Close() {
  const MutexLock lock(mutex_);
  open_file_.reset();
  revision_.reset();
}

bool Mp4TrackReader::MayFindMore(const Source& source) const {
  const MutexLock lock(mutex_);
  if (!revision_) return true;
  if (*revision_ == source.revision) return false;
  if (!discovered_ || LacksATrack()) return true;
  const auto is_available = [&source](const Track& track) {
    return track.missing && source.available.Contains(track.missing->start,
                                                      track.missing->end - track.missing->start);
  };
  return is_available(video_) || is_available(audio_);
}

// Returns whether a track may still be found: an index that extends to the end of its file can be
// read before all of its tracks are received.
bool Mp4TrackReader::LacksATrack() const {
  return !refused_ && (video_.id == MP4_INVALID_TRACK_ID || audio_.id == MP4_INVALID_TRACK_ID);
}

bool Mp4TrackReader::RunPass(const Source& source) {
  ReadPass pass{source, nullptr, 0};
  {
    const MutexLock lock(mutex_);
    if (std::exchange(pass_running_, true)) return false;
    pass.repositions = repositions_;
  }
  bool was_read = false;
  const ScopeExit end([this, &pass, &was_read] { EndPass(pass, was_read); });
  was_read = Open(pass);
  if (was_read && Discover(pass)) ReadSamples(pass);
  return true;
}

void Mp4TrackReader::EndPass(const ReadPass& pass, bool was_read) {
  const MutexLock lock(mutex_);
  pass_running_ = false;
  // Recorded only if there was no seek and no new address during the pass, since the pass did not
  // look for their target. A file that was readable before but not in this pass is tried again.
  if (pass.repositions == repositions_ && (was_read || !discovered_))
    revision_ = pass.source.revision;
}

// The file grows, so it is opened again for each pass. The previous handle stays open until then.
bool Mp4TrackReader::Open(ReadPass& pass) {
  pass.file = OpenMp4(pass.source.path);
  const MutexLock lock(mutex_);
  if (kKeepMp4Open && pass.repositions == repositions_) open_file_ = pass.file;
  return pass.file != nullptr;
}

// Finds the tracks that are not known yet. Returns false if there is nothing to play. A file whose
// video was refused is not reported again.
bool Mp4TrackReader::Discover(const ReadPass& pass) {
  std::optional<std::string> new_codec;
  float duration = 0;
  bool is_played = false;
  {
    const MutexLock lock(mutex_);
    if (pass.source.run != run_ || refused_) return false;
    discovered_ = true;
    if (video_.id != MP4_INVALID_TRACK_ID && audio_.id != MP4_INVALID_TRACK_ID) return true;
    duration = Mp4DurationSeconds(pass.file.get());
    if (video_.id == MP4_INVALID_TRACK_ID) new_codec = DiscoverVideo(pass.file.get());
    if (audio_.id == MP4_INVALID_TRACK_ID) DiscoverAudio(pass.file.get());
    is_played =
        !refused_ && (video_.id != MP4_INVALID_TRACK_ID || audio_.id != MP4_INVALID_TRACK_ID);
  }
  player_.Duration(duration);
  if (new_codec) player_.Message("PLAY MP4 " + *new_codec + ":" + pass.source.url);
  return is_played;
}

// Returns the name of the codec if there is a video track.
std::optional<std::string> Mp4TrackReader::DiscoverVideo(MP4FileHandle file) {
  const MP4TrackId id = FindMp4Track(file, "vide");
  if (id == MP4_INVALID_TRACK_ID) return std::nullopt;
  const Mp4VideoTrack track = DescribeVideoTrack(file, id);
  video_.id = track.id;
  refused_ = !track.has_headers;
  Adopt(track);
  return track.codec;
}

// Before the video has begun, the last parameter set of each kind is used; afterwards a known one
// is not replaced. Kept for compatibility.
void Mp4TrackReader::Adopt(const Mp4VideoTrack& track) {
  const bool begun = Mp4VideoHasBegun();
  const auto adopt = [begun](const auto& listed, std::vector<std::uint8_t>& known) {
    for (const std::vector<std::uint8_t>& set : listed) {
      if (!begun || known.empty()) known = set;
    }
  };
  adopt(track.sps, parameter_sets_.sps);
  adopt(track.pps, parameter_sets_.pps);
}

void Mp4TrackReader::DiscoverAudio(MP4FileHandle file) {
  const MP4TrackId id = FindMp4Track(file, "soun");
  if (id == MP4_INVALID_TRACK_ID) return;
  const Mp4AudioTrack track = DescribeAudioTrack(file, id);
  audio_.id = track.id;
  adts_fields_.channel_configuration = track.channels;
  SetSamplingFrequencyIndex(adts_fields_, track.sample_rate);
}

// Reads one sample of each track in turn, until neither has another one.
void Mp4TrackReader::ReadSamples(ReadPass& pass) {
  bool video_done = false;
  bool audio_done = false;
  while (g_mp4Running.load() && !(video_done && audio_done)) {
    video_done = video_done || !ReadNextVideo(pass);
    if (!g_mp4Running.load()) break;  // reading a large sample takes time
    audio_done = audio_done || (video_done && AudioMustWait()) || !ReadNextAudio(pass);
  }
}

// Audio before the first video frame is dropped. How much is dropped must not depend on the speed
// of the download, so audio is not read while the video has not begun and is still being received.
bool Mp4TrackReader::AudioMustWait() const {
  const MutexLock lock(mutex_);
  return video_.missing && !Mp4VideoHasBegun();
}

bool Mp4TrackReader::ReadNextVideo(ReadPass& pass) {
  const std::optional<Mp4Sample> sample = ReadNext(pass, PayloadKind::kVideo);
  if (!sample) return false;
  player_.BufferedTime(Seconds(sample->PresentationTime()));
  if (StartsBefore(*sample, pass.source.start_position.load())) return true;
  if (EmitMp4Video(*sample, parameter_sets_)) key_time_ = sample->time;
  return true;
}

// Audio before the first video frame is dropped.
bool Mp4TrackReader::ReadNextAudio(ReadPass& pass) {
  const std::optional<Mp4Sample> sample = ReadNext(pass, PayloadKind::kAudio);
  if (!sample) return false;
  if (StartsBefore(*sample, pass.source.start_position.load())) return true;
  if (sample->time >= key_time_.load() && Mp4VideoHasBegun()) EmitMp4Audio(*sample, adts_fields_);
  return true;
}

// Returns the next sample of a track. If it cannot be read, it stays the next one.
std::optional<Mp4Sample> Mp4TrackReader::ReadNext(ReadPass& pass, PayloadKind kind) {
  const MutexLock lock(mutex_);
  Track& track = kind == PayloadKind::kVideo ? video_ : audio_;
  if (pass.source.run != run_ || track.id == MP4_INVALID_TRACK_ID || !pass.file) {
    return std::nullopt;
  }
  std::optional<Mp4Sample> sample = ReadSample(pass, track);
  if (sample) ++track.next;
  return sample;
}

std::optional<Mp4Sample> Mp4TrackReader::ReadSample(ReadPass& pass, Track& track) {
  auto* const file = pass.file.get();
  track.missing.reset();
  const MP4Timestamp time = MP4GetSampleTime(file, track.id, track.next);
  if (time == MP4_INVALID_TIMESTAMP) return std::nullopt;
  const std::uint32_t scale = MP4GetTrackTimeScale(file, track.id);
  Mp4Sample sample;
  sample.time = Mp4Milliseconds(time, scale);
  const std::uint64_t offset = MP4GetSampleFileOffset(file, track.id, track.next);
  track.index.Record(sample.time, {track.next, offset});
  // The size of a sample, which may be 0, is known only after reading it. So its bytes are checked
  // twice: here for the offset, below for the size.
  if (!IsAvailable(pass, track, offset, 0)) return std::nullopt;

  std::uint8_t* bytes = nullptr;
  MP4Timestamp start = 0;
  MP4Duration duration = 0;
  MP4Duration rendering_offset = 0;
  const bool is_read = MP4ReadSample(file, track.id, track.next, &bytes, &sample.size, &start,
                                     &duration, &rendering_offset);
  sample.bytes.reset(bytes);
  if (!is_read) {
    // The sample needs more bytes than are available. After an error a library may read nothing
    // more, of the other track either, so the file is opened again.
    track.missing = ByteRange{offset, pass.source.available.end + 1};
    pass.file = OpenMp4(pass.source.path);
    return std::nullopt;
  }
  if (!IsAvailable(pass, track, offset, sample.size)) return std::nullopt;
  sample.start = Mp4Milliseconds(start, scale);
  sample.rendering_offset = Mp4OffsetMilliseconds(rendering_offset, scale);
  return sample;
}

// Returns whether the bytes are in the file. If not, records them as missing for the track.
bool Mp4TrackReader::IsAvailable(const ReadPass& pass, Track& track, std::uint64_t offset,
                                 std::uint64_t size) {
  if (pass.source.available.Contains(offset, size)) return true;
  const std::uint64_t max_size = std::numeric_limits<std::uint64_t>::max() - offset;
  track.missing = ByteRange{offset, offset + std::min(size, max_size)};
  return false;
}

std::uint64_t Mp4TrackReader::Seek(float seconds, const std::string& path) {
  const float milliseconds = seconds * 1000.0F;
  const MutexLock lock(mutex_);
  ++repositions_;
  revision_.reset();
  key_time_ = 0;  // audio before it may be needed now
  const auto is_known = [milliseconds](const Track& track) {
    const auto found = track.index.Find(milliseconds);
    return found && found->reaches_target;
  };
  Mp4FileHandle file;
  if (!is_known(audio_) || !is_known(video_)) file = OpenMp4(path);
  const std::uint64_t audio_offset = SeekTrack(file.get(), audio_, milliseconds);
  const std::uint64_t video_offset = SeekTrack(file.get(), video_, milliseconds);
  return std::min(audio_offset, video_offset);
}

// Returns 0 for a track about which nothing is known. `file` may be null.
std::uint64_t Mp4TrackReader::SeekTrack(MP4FileHandle file, Track& track, float milliseconds) {
  track.missing.reset();
  const auto known = track.index.Find(milliseconds);
  Mp4SampleLocation location = known ? known->location : Mp4SampleLocation{track.next, 0};
  MP4SampleId id = known ? location.id + 1 : track.next;
  bool found = known && known->reaches_target;
  const std::uint32_t scale = file == nullptr ? 0 : MP4GetTrackTimeScale(file, track.id);
  for (MP4SampleId scanned = 0; !found && scanned < Mp4TimeIndex::kMaxEntries; ++scanned, ++id) {
    const MP4Timestamp time =
        file == nullptr ? MP4_INVALID_TIMESTAMP : MP4GetSampleTime(file, track.id, id);
    if (time == MP4_INVALID_TIMESTAMP) break;
    location = {id, MP4GetSampleFileOffset(file, track.id, id)};
    const std::uint64_t time_ms = Mp4Milliseconds(time, scale);
    track.index.Record(time_ms, location);
    found = static_cast<float>(time_ms) >= milliseconds;
  }
  track.next = location.id;
  return location.offset;
}

}  // namespace stream
