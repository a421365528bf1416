/*
 * The part of an installed libmp4v2's header that this project uses: the functions that the
 * pipeline calls, without the file offset of a sample, and the function that the adapter calls
 * instead. The MP4 code must build against this header alone, even in a build with the bundled
 * reader.
 */
#ifndef MP4V2_MP4V2_H
#define MP4V2_MP4V2_H

#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>

typedef void* MP4FileHandle;
typedef uint32_t MP4TrackId;
typedef uint32_t MP4SampleId;
typedef uint64_t MP4Timestamp;
typedef uint64_t MP4Duration;

#define MP4_INVALID_FILE_HANDLE NULL
#define MP4_INVALID_TRACK_ID 0U
#define MP4_INVALID_SAMPLE_ID 0U
#define MP4_INVALID_TIMESTAMP UINT64_MAX
#define MP4_INVALID_DURATION UINT64_MAX

extern "C" {
MP4FileHandle MP4Read(const char* fileName);
void MP4Close(MP4FileHandle hFile, uint32_t flags = 0);
void MP4Free(void* p);
uint32_t MP4GetTimeScale(MP4FileHandle hFile);
MP4Duration MP4GetDuration(MP4FileHandle hFile);
uint32_t MP4GetNumberOfTracks(MP4FileHandle hFile, const char* type = NULL, uint8_t subType = 0);
MP4TrackId MP4FindTrackId(MP4FileHandle hFile, uint16_t index, const char* type = NULL,
                          uint8_t subType = 0);
const char* MP4GetTrackType(MP4FileHandle hFile, MP4TrackId trackId);
const char* MP4GetTrackMediaDataName(MP4FileHandle hFile, MP4TrackId trackId);
uint32_t MP4GetTrackTimeScale(MP4FileHandle hFile, MP4TrackId trackId);
bool MP4GetTrackH264SeqPictHeaders(MP4FileHandle hFile, MP4TrackId trackId, uint8_t*** pSeqHeaders,
                                   uint32_t** pSeqHeaderSize, uint8_t*** pPictHeader,
                                   uint32_t** pPictHeaderSize);
uint8_t MP4GetTrackAudioMpeg4Type(MP4FileHandle hFile, MP4TrackId trackId);
int MP4GetTrackAudioChannels(MP4FileHandle hFile, MP4TrackId trackId);
bool MP4GetTrackESConfiguration(MP4FileHandle hFile, MP4TrackId trackId, uint8_t** ppConfig,
                                uint32_t* pConfigSize);
MP4Timestamp MP4GetSampleTime(MP4FileHandle hFile, MP4TrackId trackId, MP4SampleId sampleId);
bool MP4ReadSample(MP4FileHandle hFile, MP4TrackId trackId, MP4SampleId sampleId, uint8_t** ppBytes,
                   uint32_t* pNumBytes, MP4Timestamp* pStartTime = NULL,
                   MP4Duration* pDuration = NULL, MP4Duration* pRenderingOffset = NULL,
                   bool* pIsSyncSample = NULL);
bool MP4GetTrackIntegerProperty(MP4FileHandle hFile, MP4TrackId trackId, const char* propName,
                                uint64_t* retVal);
}

#endif /* MP4V2_MP4V2_H */
