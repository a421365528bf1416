#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <limits>

#include "platform/random_access_file.h"

namespace stream::platform {

std::optional<RandomAccessFile> RandomAccessFile::Open(const char* path) {
  // O_NONBLOCK: otherwise opening a pipe would block until somebody writes to it.
  const int descriptor = open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (descriptor < 0) return std::nullopt;
  struct stat facts {};
  if (fstat(descriptor, &facts) != 0 || !S_ISREG(facts.st_mode)) {
    close(descriptor);
    return std::nullopt;
  }
  const FileId id{static_cast<std::uint64_t>(facts.st_dev),
                  static_cast<std::uint64_t>(facts.st_ino)};
  return RandomAccessFile(descriptor, id, static_cast<std::uint64_t>(facts.st_size));
}

RandomAccessFile::~RandomAccessFile() {
  if (handle_ != kClosed) close(static_cast<int>(handle_));
}

std::uint64_t RandomAccessFile::Size() const {
  struct stat facts {};
  if (fstat(static_cast<int>(handle_), &facts) != 0) return 0;
  return static_cast<std::uint64_t>(facts.st_size);
}

std::size_t RandomAccessFile::ReadAt(std::uint64_t offset, std::uint8_t* to,
                                     std::size_t size) const {
  constexpr auto kLastOffset = static_cast<std::uint64_t>(std::numeric_limits<off_t>::max());
  if (offset > kLastOffset) return 0;
  size = static_cast<std::size_t>(std::min<std::uint64_t>(size, kLastOffset - offset));
  std::size_t done = 0;
  while (done < size) {
    const ssize_t count =
        pread(static_cast<int>(handle_), to + done, size - done, static_cast<off_t>(offset + done));
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) break;
    done += static_cast<std::size_t>(count);
  }
  return done;
}

}  // namespace stream::platform
