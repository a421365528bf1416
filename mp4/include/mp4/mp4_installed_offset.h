// The file offset of a sample, for an installed libmp4v2: the published library has no
// MP4GetSampleFileOffset. With another reader this header adds nothing to <mp4v2/mp4v2.h> but an
// empty ForgetSampleFileOffsets.
//
// The adapter uses the library's generic properties. What it keeps of a file stays until
// ForgetSampleFileOffsets is called, which must happen before the file is closed. Thread-safe, but
// one handle is used from one thread at a time.
#ifndef MP4_MP4_INSTALLED_OFFSET_H_
#define MP4_MP4_INSTALLED_OFFSET_H_

#include <mp4v2/mp4v2.h>

#include <cstdint>

namespace stream {

#ifdef STREAM_MP4_OFFSETS_BY_ADAPTER

// File offset of the sample's first byte; all bits set if there is no such sample.
std::uint64_t MP4GetSampleFileOffset(MP4FileHandle file, MP4TrackId track, MP4SampleId sample);

// Call this before a handle is closed: the next file may get the same handle.
void ForgetSampleFileOffsets(MP4FileHandle file);

#else

inline void ForgetSampleFileOffsets(MP4FileHandle /*file*/) {}

#endif

}  // namespace stream

#endif  // MP4_MP4_INSTALLED_OFFSET_H_
