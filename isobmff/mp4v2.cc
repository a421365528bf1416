// The interface of libmp4v2 on top of this reader. No exception leaves it: if memory runs out, what
// was asked for is reported as missing.
#include <mp4v2/mp4v2.h>
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>
#include <vector>

#include "isobmff/open_movie.h"

using namespace stream;

namespace {

using isobmff::Bytes;
using isobmff::OpenMovie;
using isobmff::Track;

constexpr std::uint8_t kMpeg4Audio = 0x40;  // object type of an elementary stream

OpenMovie* Movie(MP4FileHandle handle) { return static_cast<OpenMovie*>(handle); }

const Track* FindTrack(MP4FileHandle handle, MP4TrackId id) {
  return handle == nullptr ? nullptr : Movie(handle)->FindTrack(id);
}

template <typename Result, typename Work>
Result Guarded(Result otherwise, const Work& work) {
  try {
    return work();
  } catch (const std::bad_alloc&) {
    return otherwise;
  }
}

// Returns null only if there is no memory, not for a size of 0.
std::uint8_t* CopyBlock(const void* from, std::size_t size) {
  auto* const block = static_cast<std::uint8_t*>(std::malloc(std::max<std::size_t>(size, 1)));
  if (block != nullptr && size != 0) std::memcpy(block, from, size);
  return block;
}

bool IsWanted(const Track& track, const char* type, std::uint8_t sub_type) {
  if (type == nullptr) return true;
  const auto& stream = track.facts.entry.stream;
  return track.facts.handler == type &&
         (sub_type == 0 || (stream && stream->object_type == sub_type));
}

// A list of blocks and a list of their sizes, ended by null and 0. All memory is freed with
// std::free.
struct BlockLists {
  std::uint8_t** blocks = nullptr;
  std::uint32_t* sizes = nullptr;
};

void FreeLists(const BlockLists& lists) {
  for (std::size_t i = 0; lists.blocks != nullptr && lists.blocks[i] != nullptr; ++i)
    std::free(lists.blocks[i]);
  std::free(lists.blocks);
  std::free(lists.sizes);
}

bool MakeLists(const std::vector<Bytes>& sets, BlockLists& lists) {
  lists.blocks = static_cast<std::uint8_t**>(std::calloc(sets.size() + 1, sizeof(std::uint8_t*)));
  lists.sizes = static_cast<std::uint32_t*>(std::calloc(sets.size() + 1, sizeof(std::uint32_t)));
  bool made = lists.blocks != nullptr && lists.sizes != nullptr;
  for (std::size_t i = 0; made && i < sets.size(); ++i) {
    lists.blocks[i] = CopyBlock(sets[i].data(), sets[i].size());
    lists.sizes[i] = static_cast<std::uint32_t>(sets[i].size());
    made = lists.blocks[i] != nullptr;
  }
  if (!made) FreeLists(lists);
  return made;
}

}  // namespace

MP4FileHandle MP4Read(const char* fileName) {
  if (fileName == nullptr) return MP4_INVALID_FILE_HANDLE;
  return Guarded<MP4FileHandle>(MP4_INVALID_FILE_HANDLE,
                                [&] { return OpenMovie::Open(fileName).release(); });
}

void MP4Close(MP4FileHandle hFile, uint32_t /*flags*/) { delete Movie(hFile); }

void MP4Free(void* block) { std::free(block); }

uint32_t MP4GetTimeScale(MP4FileHandle hFile) {
  return hFile == nullptr ? 0 : Movie(hFile)->Index().GetTiming().scale;
}

MP4Duration MP4GetDuration(MP4FileHandle hFile) {
  return hFile == nullptr ? MP4_INVALID_DURATION : Movie(hFile)->Index().GetTiming().duration;
}

uint32_t MP4GetNumberOfTracks(MP4FileHandle hFile, const char* type, uint8_t subType) {
  if (hFile == nullptr) return 0;
  const auto& tracks = Movie(hFile)->Index().Tracks();
  return static_cast<uint32_t>(std::count_if(tracks.begin(), tracks.end(), [&](const Track& track) {
    return IsWanted(track, type, subType);
  }));
}

MP4TrackId MP4FindTrackId(MP4FileHandle hFile, uint16_t index, const char* type, uint8_t subType) {
  if (hFile == nullptr) return MP4_INVALID_TRACK_ID;
  for (const Track& track : Movie(hFile)->Index().Tracks()) {
    if (IsWanted(track, type, subType) && index-- == 0) return track.facts.id;
  }
  return MP4_INVALID_TRACK_ID;
}

const char* MP4GetTrackType(MP4FileHandle hFile, MP4TrackId trackId) {
  const Track* const track = FindTrack(hFile, trackId);
  return track == nullptr ? nullptr : track->facts.handler.c_str();
}

const char* MP4GetTrackMediaDataName(MP4FileHandle hFile, MP4TrackId trackId) {
  const Track* const track = FindTrack(hFile, trackId);
  return track == nullptr ? nullptr : track->facts.entry.name.c_str();
}

uint32_t MP4GetTrackTimeScale(MP4FileHandle hFile, MP4TrackId trackId) {
  const Track* const track = FindTrack(hFile, trackId);
  return track == nullptr ? 0 : track->facts.timing.scale;
}

bool MP4GetTrackH264SeqPictHeaders(MP4FileHandle hFile, MP4TrackId trackId, uint8_t*** pSeqHeaders,
                                   uint32_t** pSeqHeaderSize, uint8_t*** pPictHeader,
                                   uint32_t** pPictHeaderSize) {
  const Track* const track = FindTrack(hFile, trackId);
  if (track == nullptr) return false;
  const isobmff::SampleEntry& entry = track->facts.entry;
  if (entry.name != "avc1" && entry.name != "avc3") return true;  // Kept for compatibility
  if (!entry.avc) return false;
  BlockLists sequence;
  BlockLists picture;
  if (!MakeLists(entry.avc->sequence, sequence)) return false;
  if (!MakeLists(entry.avc->picture, picture)) {
    FreeLists(sequence);
    return false;
  }
  *pSeqHeaders = sequence.blocks;
  *pSeqHeaderSize = sequence.sizes;
  *pPictHeader = picture.blocks;
  *pPictHeaderSize = picture.sizes;
  return true;
}

uint8_t MP4GetTrackAudioMpeg4Type(MP4FileHandle hFile, MP4TrackId trackId) {
  const Track* const track = FindTrack(hFile, trackId);
  if (track == nullptr || track->facts.handler != "soun") return 0;
  const auto& stream = track->facts.entry.stream;
  if (!stream || stream->object_type != kMpeg4Audio || !stream->specific_info) return 0;
  return isobmff::AudioObjectType(*stream->specific_info);
}

int MP4GetTrackAudioChannels(MP4FileHandle hFile, MP4TrackId trackId) {
  const Track* const track = FindTrack(hFile, trackId);
  return track == nullptr ? -1 : track->facts.entry.channels;
}

bool MP4GetTrackESConfiguration(MP4FileHandle hFile, MP4TrackId trackId, uint8_t** ppConfig,
                                uint32_t* pConfigSize) {
  *ppConfig = nullptr;
  *pConfigSize = 0;
  const Track* const track = FindTrack(hFile, trackId);
  if (track == nullptr) return false;
  const auto& stream = track->facts.entry.stream;
  if (!stream || !stream->specific_info) return false;
  const Bytes& info = *stream->specific_info;
  *ppConfig = CopyBlock(info.data(), info.size());
  if (*ppConfig == nullptr) return false;
  *pConfigSize = static_cast<uint32_t>(info.size());
  return true;
}

MP4Timestamp MP4GetSampleTime(MP4FileHandle hFile, MP4TrackId trackId, MP4SampleId sampleId) {
  if (hFile == nullptr) return MP4_INVALID_TIMESTAMP;
  return Guarded<MP4Timestamp>(MP4_INVALID_TIMESTAMP, [&] {
    isobmff::SampleTime time;
    return Movie(hFile)->FindTime(trackId, sampleId, time) ? time.start : MP4_INVALID_TIMESTAMP;
  });
}

uint64_t MP4GetSampleFileOffset(MP4FileHandle hFile, MP4TrackId trackId, MP4SampleId sampleId) {
  constexpr uint64_t kNowhere = UINT64_MAX;
  if (hFile == nullptr) return kNowhere;
  return Guarded<uint64_t>(kNowhere, [&] {
    isobmff::SampleLocation location;
    return Movie(hFile)->FindLocation(trackId, sampleId, location) ? location.offset : kNowhere;
  });
}

bool MP4ReadSample(MP4FileHandle hFile, MP4TrackId trackId, MP4SampleId sampleId, uint8_t** ppBytes,
                   uint32_t* pNumBytes, MP4Timestamp* pStartTime, MP4Duration* pDuration,
                   MP4Duration* pRenderingOffset, bool* pIsSyncSample) {
  *ppBytes = nullptr;
  *pNumBytes = 0;
  if (hFile == nullptr) return false;
  return Guarded(false, [&] {
    isobmff::Sample sample;
    if (!Movie(hFile)->ReadSample(trackId, sampleId, sample)) return false;
    *ppBytes = sample.bytes;
    *pNumBytes = sample.size;
    if (pStartTime != nullptr) *pStartTime = sample.time.start;
    if (pDuration != nullptr) *pDuration = sample.time.duration;
    if (pRenderingOffset != nullptr) *pRenderingOffset = sample.composition;
    if (pIsSyncSample != nullptr) *pIsSyncSample = sample.is_sync;
    return true;
  });
}
