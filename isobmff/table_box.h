// Where one of a track's sample tables lies in the file, and its bytes once they are needed.
//
// Opening a file looks at the heads of the tables only: that their entries lie inside their box,
// and that the last entry has been received. An index of megabytes is so opened in microseconds.
#ifndef ISOBMFF_TABLE_BOX_H_
#define ISOBMFF_TABLE_BOX_H_

#include <cstdint>
#include <memory>
#include <optional>
#include <span>

#include "isobmff/box.h"
#include "isobmff/file.h"

namespace isobmff {

struct TableBox {
  std::uint32_t count = 0;  // of entries, or of samples
  unsigned entry_bits = 0;  // 0 where every entry is `same_size`
  std::uint32_t same_size = 0;
  ByteRange entries;
};

// A full box with a count and that many entries of entry_bytes: stts, ctts, stsc, stco, co64, stss.
// Nothing where the entries do not fit into the box.
std::optional<TableBox> ReadTableBox(HeaderReader& reader, const ByteRange& body,
                                     unsigned entry_bytes);

// stsz and stz2, whose entries may be of fewer bits, or none because all samples have one size.
std::optional<TableBox> ReadSizeTableBox(HeaderReader& reader, const ByteRange& body);
std::optional<TableBox> ReadCompactSizeTableBox(HeaderReader& reader, const ByteRange& body);

// Whether the last entry of a table whose entries are numbers from 1 on is there. Zeros are bytes
// that have not been received yet, or damage.
bool LastEntryIsReceived(HeaderReader& reader, const TableBox& table);

// The entries as they lie in the file.
class TableBytes {
 public:
  // Nothing where they cannot be read.
  static std::optional<TableBytes> Load(const File& file, const TableBox& table);

  const std::uint8_t* Data() const { return bytes_.get(); }

 private:
  explicit TableBytes(std::unique_ptr<std::uint8_t[]> bytes) : bytes_(std::move(bytes)) {}

  std::unique_ptr<std::uint8_t[]> bytes_;
};

}  // namespace isobmff

#endif  // ISOBMFF_TABLE_BOX_H_
