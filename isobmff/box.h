// Boxes of an ISO base media file (ISO/IEC 14496-12, 4.2): a size, a four-character type and a
// body.
//
// HeaderReader reads small pieces of a file that lie close together; box walking stands on it. A
// file that is still being downloaded may have holes, which read as zeros: a type that
// ends in zero is therefore never that of a box, but of bytes that have not been received yet.
// Zeros up to the end of a box may also be padding.
#ifndef ISOBMFF_BOX_H_
#define ISOBMFF_BOX_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "isobmff/file.h"

namespace isobmff {

constexpr std::uint32_t FourCc(const char (&text)[5]) {
  std::uint32_t code = 0;
  for (int i = 0; i < 4; ++i) code = code << 8 | static_cast<std::uint8_t>(text[i]);
  return code;
}

// Bytes of a file from `begin` to before `end`; never end < begin.
struct ByteRange {
  std::uint64_t begin = 0;
  std::uint64_t end = 0;

  std::uint64_t Size() const { return end - begin; }
  bool operator==(const ByteRange&) const = default;
};

inline constexpr std::uint64_t kBoxHeaderSize = 8;  // without the large size

struct Box {
  std::uint32_t type = 0;
  ByteRange whole;
  ByteRange body;
  bool is_open = false;  // its size is not told: it goes on to the end of the file
};

// Not for use by several threads at once. The file must outlive it.
class HeaderReader {
 public:
  static constexpr std::size_t kMostAtOnce = 1024;

  HeaderReader(const File& file, std::uint64_t file_size) : file_(file), file_size_(file_size) {}

  const File& GetFile() const { return file_; }
  std::uint64_t FileSize() const { return file_size_; }

  // Counts a box that is to be read. False once there were more of them than in any file that
  // plays: a thousand tracks have fewer. A large file of nothing but tiny boxes would hold up a
  // stop.
  bool CountBox() { return boxes_++ < kMostBoxes; }
  bool HadTooManyBoxes() const { return boxes_ > kMostBoxes; }

  // The first `size` (at most kMostAtOnce) bytes of `range`, valid until the next call. Null where
  // the range is shorter or the file cannot be read there.
  const std::uint8_t* Peek(const ByteRange& range, std::size_t size);

  // Whether all of `range` is zeros. False where it is longer than kMostAtOnce.
  bool IsZero(const ByteRange& range);

 private:
  static constexpr int kMostBoxes = 100'000;

  bool Load(std::uint64_t offset);

  const File& file_;
  std::uint64_t file_size_;
  std::uint64_t loaded_at_ = 0;
  std::size_t loaded_ = 0;
  int boxes_ = 0;
  std::array<std::uint8_t, 4096> bytes_;
};

// The box at the start of `space`. Nothing where no box can lie there. Its end may be beyond that
// of `space`: the caller decides what that means. A size of 0, "to the end", is a box only where
// `may_be_open`.
std::optional<Box> ReadBox(HeaderReader& reader, const ByteRange& space, bool may_be_open);

// What follows the last child of a box.
enum class RowEnd {
  kNothing,
  kZeros,        // up to the end of the box: padding, or bytes that have not been received yet
  kNotReceived,  // a box was to begin where nothing has been received yet
  kMalformed,
};

// The children of a box.
class BoxWalk {
 public:
  BoxWalk(HeaderReader& reader, const ByteRange& body) : reader_(reader), left_(body) {}

  // The next child. Nothing behind the last one, or where there is none though there should be.
  std::optional<Box> Next();

  // Once Next returned nothing: why, and the bytes from there to the end of the box.
  RowEnd End();
  const ByteRange& Left() const { return left_; }

 private:
  static constexpr int kMostBoxes = 4096;  // of one parent; there are about ten

  HeaderReader& reader_;
  ByteRange left_;
  int boxes_ = 0;
};

// The body of the first box of that type in a row of boxes in memory. Empty where there is none.
std::span<const std::uint8_t> FindBox(std::span<const std::uint8_t> boxes, std::uint32_t type);

}  // namespace isobmff

#endif  // ISOBMFF_BOX_H_
