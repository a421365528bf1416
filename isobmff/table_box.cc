#include "isobmff/table_box.h"

#include <algorithm>

#include "isobmff/big_endian.h"

namespace stream::isobmff {
namespace {

constexpr std::size_t kCountAt = 4;        // after version and flags
constexpr std::size_t kTableHeadSize = 8;  // with the count
constexpr std::size_t kSizeTableHeadSize = 12;
// The sizes of 8.4 million samples, which is 93 hours at 25 frames per second. A larger table is
// taken for damage: loading it would delay a stop.
constexpr std::uint64_t kMaxTableBytes = std::uint64_t{1} << 25;

std::optional<TableBox> WithEntries(TableBox table, const ByteRange& body, std::size_t head) {
  const std::uint64_t size = (std::uint64_t{table.count} * table.entry_bits + 7) / 8;
  if (size > body.Size() - head || size > kMaxTableBytes) return std::nullopt;
  table.entries = {body.begin + head, body.begin + head + size};
  return table;
}

}  // namespace

std::optional<TableBox> ReadTableBox(HeaderReader& reader, const ByteRange& body,
                                     unsigned entry_bytes) {
  const std::uint8_t* const head = reader.Peek(body, kTableHeadSize);
  if (head == nullptr) return std::nullopt;
  return WithEntries({Read32(head + kCountAt), entry_bytes * 8, 0, {}}, body, kTableHeadSize);
}

std::optional<TableBox> ReadSizeTableBox(HeaderReader& reader, const ByteRange& body) {
  const std::uint8_t* const head = reader.Peek(body, kSizeTableHeadSize);
  if (head == nullptr) return std::nullopt;
  const std::uint32_t same_size = Read32(head + kCountAt);
  const unsigned entry_bits = same_size == 0 ? 32 : 0;
  return WithEntries({Read32(head + kTableHeadSize), entry_bits, same_size, {}}, body,
                     kSizeTableHeadSize);
}

std::optional<TableBox> ReadCompactSizeTableBox(HeaderReader& reader, const ByteRange& body) {
  const std::uint8_t* const head = reader.Peek(body, kSizeTableHeadSize);
  if (head == nullptr) return std::nullopt;
  const unsigned entry_bits = Read32(head + kCountAt) & 0xFF;  // after 24 reserved bits
  if (entry_bits != 4 && entry_bits != 8 && entry_bits != 16) return std::nullopt;
  return WithEntries({Read32(head + kTableHeadSize), entry_bits, 0, {}}, body, kSizeTableHeadSize);
}

bool LastEntryIsReceived(HeaderReader& reader, const TableBox& table) {
  if (table.count == 0) return true;
  const std::size_t entry_bytes = table.entry_bits / 8;
  const std::uint8_t* const entry =
      reader.Peek({table.entries.end - entry_bytes, table.entries.end}, entry_bytes);
  return entry != nullptr &&
         std::any_of(entry, entry + entry_bytes, [](std::uint8_t byte) { return byte != 0; });
}

std::optional<TableBytes> TableBytes::Load(const platform::RandomAccessFile& file,
                                           const TableBox& table) {
  const auto size = static_cast<std::size_t>(table.entries.Size());
  auto bytes = std::make_unique_for_overwrite<std::uint8_t[]>(size);
  if (file.ReadAt(table.entries.begin, bytes.get(), size) != size) return std::nullopt;
  return TableBytes(std::move(bytes));
}

}  // namespace stream::isobmff
