#include "isobmff/box.h"

#include <algorithm>
#include <limits>

#include "isobmff/big_endian.h"

namespace stream::isobmff {
namespace {

constexpr std::size_t kLargeHeaderSize = 16;
constexpr std::uint32_t kToTheEnd = 0;
constexpr std::uint32_t kLargeSize = 1;

// No type in the standard contains a zero byte: a type that ends with one was not received
// completely.
bool IsReceived(std::uint32_t type) { return (type & 0xFF) != 0; }

}  // namespace

const std::uint8_t* HeaderReader::Peek(const ByteRange& range, std::size_t size) {
  if (size > kMaxAtOnce || size > range.Size() || range.end > file_size_) return nullptr;
  const auto held = [&] {
    return range.begin >= loaded_at_ && range.begin - loaded_at_ <= loaded_ &&
           size <= loaded_ - (range.begin - loaded_at_);
  };
  if (!held() && (!Load(range.begin) || !held())) return nullptr;
  return bytes_.data() + (range.begin - loaded_at_);
}

// Also loads some bytes before `offset`: the last entry of a table is read right before the box
// that follows it.
bool HeaderReader::Load(std::uint64_t offset) {
  constexpr std::uint64_t kBefore = 32;
  loaded_at_ = offset - std::min(offset, kBefore);
  loaded_ = file_.ReadAt(loaded_at_, bytes_.data(), bytes_.size());
  return loaded_ != 0;
}

bool HeaderReader::IsZero(const ByteRange& range) {
  if (range.Size() > kMaxAtOnce) return false;
  const auto size = static_cast<std::size_t>(range.Size());
  const std::uint8_t* const bytes = Peek(range, size);
  return bytes != nullptr &&
         std::all_of(bytes, bytes + size, [](std::uint8_t byte) { return byte == 0; });
}

std::optional<Box> ReadBox(HeaderReader& reader, const ByteRange& space, bool may_be_open) {
  const ByteRange in_file{space.begin, std::min(space.end, reader.FileSize())};
  if (in_file.end < in_file.begin || !reader.CountBox()) return std::nullopt;
  const std::uint8_t* header = reader.Peek(in_file, kBoxHeaderSize);
  if (header == nullptr) return std::nullopt;
  Box box;
  box.type = Read32(header + 4);
  std::uint64_t size = Read32(header);
  std::size_t header_size = kBoxHeaderSize;
  if (size == kLargeSize) {
    header_size = kLargeHeaderSize;
    header = reader.Peek(in_file, kLargeHeaderSize);
    if (header == nullptr) return std::nullopt;
    size = Read64(header + kBoxHeaderSize);
  } else if (size == kToTheEnd && may_be_open) {
    size = space.Size();
    box.is_open = true;
  }
  if (!IsReceived(box.type) || size < header_size ||
      size > std::numeric_limits<std::uint64_t>::max() - space.begin) {
    return std::nullopt;
  }
  box.whole = {space.begin, space.begin + size};
  box.body = {space.begin + header_size, box.whole.end};
  return box;
}

std::optional<Box> BoxWalk::Next() {
  if (left_.Size() == 0 || boxes_ == kMaxBoxes) return std::nullopt;
  ++boxes_;
  const auto box = ReadBox(reader_, left_, false);
  if (!box || box->whole.end > left_.end) return std::nullopt;
  left_.begin = box->whole.end;
  return box;
}

RowEnd BoxWalk::End() {
  if (left_.Size() == 0) return RowEnd::kNothing;
  if (reader_.IsZero(left_)) return RowEnd::kZeros;
  if (left_.Size() < kBoxHeaderSize) return RowEnd::kMalformed;
  const std::uint8_t* const header = reader_.Peek(left_, kBoxHeaderSize);
  return header != nullptr && IsReceived(Read32(header + 4)) ? RowEnd::kMalformed
                                                             : RowEnd::kNotReceived;
}

std::span<const std::uint8_t> FindBox(std::span<const std::uint8_t> boxes, std::uint32_t type) {
  while (boxes.size() >= kBoxHeaderSize) {
    const std::uint32_t size = Read32(boxes.data());
    if (size < kBoxHeaderSize || size > boxes.size()) break;
    if (Read32(boxes.data() + 4) == type)
      return boxes.subspan(kBoxHeaderSize, size - kBoxHeaderSize);
    boxes = boxes.subspan(size);
  }
  return {};
}

}  // namespace stream::isobmff
