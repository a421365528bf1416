#include "isobmff/unreceived_tail.h"

#include <algorithm>

namespace stream::isobmff {
namespace {

// Returns whether the file has data other than zeros right after the index.
bool IsFollowed(HeaderReader& reader, const ByteRange& index) {
  const ByteRange next{index.end,
                       index.end + std::min(reader.FileSize() - index.end, kBoxHeaderSize)};
  return next.Size() != 0 && !reader.IsZero(next);
}

// The offset at which the zeros at the end of the index begin. If there are more of them than are
// checked, or if they cannot be read, returns the beginning of the index.
std::uint64_t TrailingZeros(HeaderReader& reader, const ByteRange& index) {
  constexpr std::uint64_t kMax = HeaderReader::kMaxAtOnce;
  const auto size = static_cast<std::size_t>(std::min(index.Size(), kMax));
  const std::uint8_t* const bytes = reader.Peek({index.end - size, index.end}, size);
  if (bytes == nullptr) return index.begin;
  std::size_t kept = size;
  while (kept > 0 && bytes[kept - 1] == 0) --kept;
  return kept == 0 ? index.begin : index.end - (size - kept);
}

}  // namespace

UnreceivedTail::UnreceivedTail(HeaderReader& reader, const ByteRange& index)
    : begin_(IsFollowed(reader, index) ? index.end : TrailingZeros(reader, index)) {}

}  // namespace stream::isobmff
