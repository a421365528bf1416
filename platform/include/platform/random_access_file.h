// A file that is read at given offsets.
//
// The file is never locked: others may write, rename and delete it meanwhile. It is read with plain
// calls and not mapped into memory, since a mapped file that shrinks ends the process. Thread-safe.
#ifndef PLATFORM_RANDOM_ACCESS_FILE_H_
#define PLATFORM_RANDOM_ACCESS_FILE_H_

#include <cstddef>
#include <cstdint>
#include <optional>
#include <utility>

namespace stream::platform {

// Identifies a file: the same for all its names and handles, and different for every other file
// while one of its handles is open.
struct FileId {
  std::uint64_t device = 0;
  std::uint64_t number = 0;

  bool operator<(const FileId& other) const {
    return device != other.device ? device < other.device : number < other.number;
  }
};

class RandomAccessFile {
 public:
  // `path` is UTF-8. Returns nullopt if the file cannot be opened for reading or is not a regular
  // file.
  static std::optional<RandomAccessFile> Open(const char* path);

  RandomAccessFile(RandomAccessFile&& other) noexcept
      : handle_(std::exchange(other.handle_, kClosed)),
        id_(other.id_),
        opened_size_(other.opened_size_) {}
  RandomAccessFile(const RandomAccessFile&) = delete;
  RandomAccessFile& operator=(const RandomAccessFile&) = delete;
  RandomAccessFile& operator=(RandomAccessFile&&) = delete;
  ~RandomAccessFile();

  const FileId& Id() const { return id_; }
  // The size when it was opened, and the current size (0 if the system does not report it).
  std::uint64_t OpenedSize() const { return opened_size_; }
  std::uint64_t Size() const;

  // Reads up to `size` bytes and returns how many were read: fewer only at the end of the file or
  // if reading failed.
  std::size_t ReadAt(std::uint64_t offset, std::uint8_t* to, std::size_t size) const;

 private:
  static constexpr std::intptr_t kClosed = -1;

  RandomAccessFile(std::intptr_t handle, FileId id, std::uint64_t size)
      : handle_(handle), id_(id), opened_size_(size) {}

  std::intptr_t handle_;
  FileId id_;
  std::uint64_t opened_size_;
};

}  // namespace stream::platform

#endif  // PLATFORM_RANDOM_ACCESS_FILE_H_
