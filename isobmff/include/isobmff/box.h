// Boxes of an ISO base media file (ISO/IEC 14496-12, 4.2): a size, a four-character type and a
// body.
//
// HeaderReader reads small pieces of a file that are close together; the functions for boxes use
// it. A file that is still being downloaded may have holes, which read as zeros. So a type that
// ends with a zero byte is not the type of a box: it has not been received yet. Zeros up to the end
// of a box may also be padding.
#ifndef ISOBMFF_BOX_H_
#define ISOBMFF_BOX_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "platform/random_access_file.h"

namespace stream::isobmff {

constexpr std::uint32_t FourCc(const char (&text)[5]) {
  std::uint32_t code = 0;
  for (int i = 0; i < 4; ++i) code = code << 8 | static_cast<std::uint8_t>(text[i]);
  return code;
}

// Bytes of a file from `begin` up to, but not including, `end`. `end` is never less than `begin`.
struct ByteRange {
  std::uint64_t begin = 0;
  std::uint64_t end = 0;

  std::uint64_t Size() const { return end - begin; }
  bool operator==(const ByteRange&) const = default;
};

inline constexpr std::uint64_t kBoxHeaderSize = 8;  // without the large size field

struct Box {
  std::uint32_t type = 0;
  ByteRange whole;
  ByteRange body;
  bool is_open = false;  // it has no size and extends to the end of the file
};

// Not thread-safe. The file must outlive it.
class HeaderReader {
 public:
  static constexpr std::size_t kMaxAtOnce = 1024;

  HeaderReader(const platform::RandomAccessFile& file, std::uint64_t file_size)
      : file_(file), file_size_(file_size) {}

  const platform::RandomAccessFile& GetFile() const { return file_; }
  std::uint64_t FileSize() const { return file_size_; }

  // Counts a box that is about to be read. Returns false after more boxes than any playable file
  // has, even one with a thousand tracks. Otherwise a large file of tiny boxes would delay a stop.
  bool CountBox() { return boxes_++ < kMaxBoxes; }
  bool HadTooManyBoxes() const { return boxes_ > kMaxBoxes; }

  // Returns the first `size` bytes of `range`, at most kMaxAtOnce. They are valid until the next
  // call. Returns null if the range is shorter or the file cannot be read there.
  const std::uint8_t* Peek(const ByteRange& range, std::size_t size);

  // Returns whether all of `range` is zeros; false if it is longer than kMaxAtOnce.
  bool IsZero(const ByteRange& range);

 private:
  static constexpr int kMaxBoxes = 100'000;

  bool Load(std::uint64_t offset);

  const platform::RandomAccessFile& file_;
  std::uint64_t file_size_;
  std::uint64_t loaded_at_ = 0;
  std::size_t loaded_ = 0;
  int boxes_ = 0;
  std::array<std::uint8_t, 4096> bytes_;
};

// Reads the box at the start of `space`. Returns nullopt if there is no valid box. The box may end
// after `space`: the caller decides what that means. A size of 0, "to the end", is accepted only if
// `may_be_open`.
std::optional<Box> ReadBox(HeaderReader& reader, const ByteRange& space, bool may_be_open);

// What follows the last child of a box.
enum class RowEnd {
  kNothing,
  kZeros,        // up to the end of the box: padding, or bytes that have not been received yet
  kNotReceived,  // a box should begin where nothing has been received yet
  kMalformed,
};

// Iterates over the children of a box.
class BoxWalk {
 public:
  BoxWalk(HeaderReader& reader, const ByteRange& body) : reader_(reader), left_(body) {}

  // Returns the next child; nullopt after the last one, or if there is no valid child where one
  // should be.
  std::optional<Box> Next();

  // Once Next returned nullopt: the reason, and the bytes from there to the end of the box.
  RowEnd End();
  const ByteRange& Left() const { return left_; }

 private:
  static constexpr int kMaxBoxes = 4096;  // of one parent; about ten are usual

  HeaderReader& reader_;
  ByteRange left_;
  int boxes_ = 0;
};

// Returns the body of the first box of this type in a sequence of boxes in memory; empty if there
// is none.
std::span<const std::uint8_t> FindBox(std::span<const std::uint8_t> boxes, std::uint32_t type);

}  // namespace stream::isobmff

#endif  // ISOBMFF_BOX_H_
