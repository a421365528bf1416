#include "fake_mp4v2.h"

#include <mp4v2/mp4v2.h>

#include <cstdlib>

FakeMp4v2 g_fake_mp4v2;

MP4FileHandle MP4Read(const char* /*fileName*/) { return &g_fake_mp4v2; }
void MP4Close(MP4FileHandle /*hFile*/, uint32_t /*flags*/) {}
void MP4Free(void* p) { std::free(p); }
uint32_t MP4GetTimeScale(MP4FileHandle /*hFile*/) { return 1000; }
MP4Duration MP4GetDuration(MP4FileHandle /*hFile*/) { return 0; }
uint32_t MP4GetNumberOfTracks(MP4FileHandle /*hFile*/, const char* /*type*/, uint8_t /*subType*/) {
  return 1;
}
MP4TrackId MP4FindTrackId(MP4FileHandle /*hFile*/, uint16_t index, const char* /*type*/,
                          uint8_t /*subType*/) {
  return index == 0 ? 1 : MP4_INVALID_TRACK_ID;
}
const char* MP4GetTrackType(MP4FileHandle /*hFile*/, MP4TrackId /*trackId*/) { return "vide"; }
const char* MP4GetTrackMediaDataName(MP4FileHandle /*hFile*/, MP4TrackId /*trackId*/) {
  return g_fake_mp4v2.media_data_name;
}
uint32_t MP4GetTrackTimeScale(MP4FileHandle /*hFile*/, MP4TrackId /*trackId*/) { return 1000; }

// The published library compares the name, and so crashes if there is none.
bool MP4GetTrackH264SeqPictHeaders(MP4FileHandle /*hFile*/, MP4TrackId /*trackId*/,
                                   uint8_t*** /*pSeqHeaders*/, uint32_t** /*pSeqHeaderSize*/,
                                   uint8_t*** /*pPictHeader*/, uint32_t** /*pPictHeaderSize*/) {
  ++g_fake_mp4v2.parameter_set_calls;
  return true;  // and leaves the pointers unchanged
}
uint8_t MP4GetTrackAudioMpeg4Type(MP4FileHandle /*hFile*/, MP4TrackId /*trackId*/) { return 0; }
int MP4GetTrackAudioChannels(MP4FileHandle /*hFile*/, MP4TrackId /*trackId*/) { return -1; }
bool MP4GetTrackESConfiguration(MP4FileHandle /*hFile*/, MP4TrackId /*trackId*/, uint8_t** ppConfig,
                                uint32_t* pConfigSize) {
  *ppConfig = nullptr;
  *pConfigSize = 0;
  return false;
}
MP4Timestamp MP4GetSampleTime(MP4FileHandle /*hFile*/, MP4TrackId /*trackId*/,
                              MP4SampleId /*sampleId*/) {
  return MP4_INVALID_TIMESTAMP;
}
bool MP4ReadSample(MP4FileHandle /*hFile*/, MP4TrackId /*trackId*/, MP4SampleId /*sampleId*/,
                   uint8_t** /*ppBytes*/, uint32_t* /*pNumBytes*/, MP4Timestamp* /*pStartTime*/,
                   MP4Duration* /*pDuration*/, MP4Duration* /*pRenderingOffset*/,
                   bool* /*pIsSyncSample*/) {
  return false;
}
bool MP4GetTrackIntegerProperty(MP4FileHandle /*hFile*/, MP4TrackId /*trackId*/,
                                const char* /*propName*/, uint64_t* /*retVal*/) {
  return false;
}
