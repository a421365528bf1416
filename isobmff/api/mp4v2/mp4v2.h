/*
 * Reads MP4 files: the part of libmp4v2's interface that this project uses, for a build without
 * libmp4v2. Same names, same types, same meaning; reading only.
 *
 * Strings are UTF-8. A block that a function returns to the caller is freed with MP4Free. A handle
 * may be used from one thread at a time; different handles, even of one file, may be used from
 * different threads at once. Sample numbers start at 1. Times are in the time scale of the movie or
 * of the track, as noted.
 *
 * A file may grow while it is open. Its bytes are read ahead, so a handle returns correct bytes
 * only for samples that were in the file when the handle was opened. A caller that waits for more
 * opens the file again, which costs very little while another handle of the same file is open. A
 * handle can still be used after a read has failed.
 */
#ifndef MP4V2_MP4V2_H
#define MP4V2_MP4V2_H

#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
#define MP4V2_DEFAULT(value) = value
extern "C" {
#else
#define MP4V2_DEFAULT(value)
#endif

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

/* Returns null if the file cannot be opened or has no complete movie index. A damaged track is not
 * listed. */
MP4FileHandle MP4Read(const char* fileName);
void MP4Close(MP4FileHandle hFile, uint32_t flags MP4V2_DEFAULT(0));
void MP4Free(void* block);

/* From the movie header. The duration is in the movie's time scale. */
uint32_t MP4GetTimeScale(MP4FileHandle hFile);
MP4Duration MP4GetDuration(MP4FileHandle hFile);

/* Tracks: all of them, or those whose handler type is `type` and, if subType is not 0, whose stream
 * has that MPEG-4 object type. The id is 0 after the last track. */
uint32_t MP4GetNumberOfTracks(MP4FileHandle hFile, const char* type MP4V2_DEFAULT(NULL),
                              uint8_t subType MP4V2_DEFAULT(0));
MP4TrackId MP4FindTrackId(MP4FileHandle hFile, uint16_t index, const char* type MP4V2_DEFAULT(NULL),
                          uint8_t subType MP4V2_DEFAULT(0));

/* Handler type ("vide", "soun") and four-character code of the first sample entry ("avc1", "mp4a").
 * The handle owns them. Null if there is no such track. */
const char* MP4GetTrackType(MP4FileHandle hFile, MP4TrackId trackId);
const char* MP4GetTrackMediaDataName(MP4FileHandle hFile, MP4TrackId trackId);

/* From the media header. */
uint32_t MP4GetTrackTimeScale(MP4FileHandle hFile, MP4TrackId trackId);

/* Parameter sets of an avc1 or avc3 track, without start codes. Each list ends at a size of 0. The
 * caller frees every entry and all four lists. For a track of another kind the result is true and
 * the pointers stay untouched: set them to null before the call and check them, not the result. */
bool MP4GetTrackH264SeqPictHeaders(MP4FileHandle hFile, MP4TrackId trackId, uint8_t*** pSeqHeaders,
                                   uint32_t** pSeqHeaderSize, uint8_t*** pPictHeader,
                                   uint32_t** pPictHeaderSize);

/* Audio object type of the AudioSpecificConfig; 0 if there is none. */
uint8_t MP4GetTrackAudioMpeg4Type(MP4FileHandle hFile, MP4TrackId trackId);

/* Channel count of the sample entry; -1 if there is none. */
int MP4GetTrackAudioChannels(MP4FileHandle hFile, MP4TrackId trackId);

/* Decoder specific info of the esds box; false, null and 0 if there is none. */
bool MP4GetTrackESConfiguration(MP4FileHandle hFile, MP4TrackId trackId, uint8_t** ppConfig,
                                uint32_t* pConfigSize);

/* Decode time; all bits set if there is no such sample. */
MP4Timestamp MP4GetSampleTime(MP4FileHandle hFile, MP4TrackId trackId, MP4SampleId sampleId);

/* File offset of the sample's first byte; all bits set if there is no such sample. */
uint64_t MP4GetSampleFileOffset(MP4FileHandle hFile, MP4TrackId trackId, MP4SampleId sampleId);

/* Reads a sample into a new block. The results are false, null and 0 if there is no such sample or
 * its bytes are not in the file. pRenderingOffset is the composition offset: its 32 bits as an
 * unsigned number, even if it is negative. */
bool MP4ReadSample(MP4FileHandle hFile, MP4TrackId trackId, MP4SampleId sampleId, uint8_t** ppBytes,
                   uint32_t* pNumBytes, MP4Timestamp* pStartTime MP4V2_DEFAULT(NULL),
                   MP4Duration* pDuration MP4V2_DEFAULT(NULL),
                   MP4Duration* pRenderingOffset MP4V2_DEFAULT(NULL),
                   bool* pIsSyncSample MP4V2_DEFAULT(NULL));

#ifdef __cplusplus
}
#endif
#undef MP4V2_DEFAULT

#endif /* MP4V2_MP4V2_H */
