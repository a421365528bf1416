// The location of one of a track's sample tables in the file, and its bytes once they are needed.
//
// Opening a file checks only the heads of the tables: that their entries are inside their box, and
// that the last entry has been received. So an index of megabytes is opened in microseconds.
#ifndef ISOBMFF_TABLE_BOX_H_
#define ISOBMFF_TABLE_BOX_H_

#include <cstdint>
#include <memory>
#include <optional>
#include <span>

#include "isobmff/box.h"
#include "platform/random_access_file.h"

namespace stream::isobmff {

struct TableBox {
  std::uint32_t count = 0;  // number of entries, or of samples
  unsigned entry_bits = 0;  // 0 if every entry is `same_size`
  std::uint32_t same_size = 0;
  ByteRange entries;
};

// Reads a full box with a count and that many entries of `entry_bytes` each: stts, ctts, stsc,
// stco, co64, stss. Returns nullopt if the entries do not fit into the box or are too large.
std::optional<TableBox> ReadTableBox(HeaderReader& reader, const ByteRange& body,
                                     unsigned entry_bytes);

// The same for stsz and stz2, whose entries may have fewer bits, or be missing because all samples
// have one size.
std::optional<TableBox> ReadSizeTableBox(HeaderReader& reader, const ByteRange& body);
std::optional<TableBox> ReadCompactSizeTableBox(HeaderReader& reader, const ByteRange& body);

// Returns whether the last entry of a table has been received, for tables whose entries are never
// 0. Zeros are bytes that have not been received yet, or damage.
bool LastEntryIsReceived(HeaderReader& reader, const TableBox& table);

// The entries as they are stored in the file.
class TableBytes {
 public:
  // Returns nullopt if they cannot be read.
  static std::optional<TableBytes> Load(const platform::RandomAccessFile& file,
                                        const TableBox& table);

  const std::uint8_t* Data() const { return bytes_.get(); }

 private:
  explicit TableBytes(std::unique_ptr<std::uint8_t[]> bytes) : bytes_(std::move(bytes)) {}

  std::unique_ptr<std::uint8_t[]> bytes_;
};

}  // namespace stream::isobmff

#endif  // ISOBMFF_TABLE_BOX_H_
