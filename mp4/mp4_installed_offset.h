// Where a sample lies in its file, for an installed libmp4v2 that does not tell: the library as it
// is published has no MP4GetSampleFileOffset. Elsewhere this header adds nothing to
// <mp4v2/mp4v2.h>.
//
// The adapter works from the library's generic properties. Each table entry that it needs is asked
// for once an open file and then remembered until the file is closed, which it must be told. Any
// thread may call it, each handle from one thread at a time.
#ifndef MP4_MP4_INSTALLED_OFFSET_H_
#define MP4_MP4_INSTALLED_OFFSET_H_

#include <mp4v2/mp4v2.h>

#include <cstdint>

#ifdef STREAM_MP4_OFFSETS_BY_ADAPTER

// File offset of the sample's first byte; all bits set for a sample that is not there.
std::uint64_t MP4GetSampleFileOffset(MP4FileHandle file, MP4TrackId track, MP4SampleId sample);

// To be called before a handle is closed: the next file may get the same one.
void ForgetSampleFileOffsets(MP4FileHandle file);

#else

inline void ForgetSampleFileOffsets(MP4FileHandle /*file*/) {}

#endif

#endif  // MP4_MP4_INSTALLED_OFFSET_H_
