// An open MP4 file that is closed by its destructor.
#ifndef MP4_MP4_FILE_HANDLE_H_
#define MP4_MP4_FILE_HANDLE_H_

#include <mp4v2/mp4v2.h>

#include <cstdint>
#include <memory>
#include <string>
#include <type_traits>

#include "mp4/mp4_installed_offset.h"

namespace stream {

struct Mp4Closer {
  void operator()(MP4FileHandle handle) const {
    ForgetSampleFileOffsets(handle);
    MP4Close(handle);
  }
};
using Mp4FileHandle = std::unique_ptr<std::remove_pointer_t<MP4FileHandle>, Mp4Closer>;

// Frees a block that the library allocated.
struct Mp4Freer {
  void operator()(void* block) const { MP4Free(block); }
};

template <typename Item>
using Mp4Block = std::unique_ptr<Item[], Mp4Freer>;

// Whether a file stays open until it is opened again. With the bundled reader this makes opening it
// again far cheaper. An installed library may keep others from writing to a file that it has open.
#ifdef STREAM_MP4_READER_BUNDLED
inline constexpr bool kKeepMp4Open = true;
#else
inline constexpr bool kKeepMp4Open = false;
#endif

// Opens a file whose path is in the system code page. Returns null if it cannot be opened or if its
// index is not complete (yet).
Mp4FileHandle OpenMp4(const std::string& path);

// A time in whole milliseconds, at most 2^64 - 1. Returns 0 if the scale is 0.
std::uint64_t Mp4Milliseconds(std::uint64_t value, std::uint32_t time_scale);

// A composition offset in whole milliseconds. The reader returns it as 32 unsigned bits, but it is
// signed: in tables of version 1 by the standard (ISO/IEC 14496-12, 8.6.1.3), in those of version 0
// because many programs write negative offsets there as well.
std::int64_t Mp4OffsetMilliseconds(std::uint64_t offset, std::uint32_t time_scale);

}  // namespace stream

#endif  // MP4_MP4_FILE_HANDLE_H_
