// The zeros at the end of an index that may stand for bytes not received yet.
//
// A file whose space is reserved before it is downloaded reads as zeros from some offset to its
// end. Zeros that end within the index or right after it, with another box after them, are
// different: the index was received completely, and whatever is wrong in it is damage.
#ifndef ISOBMFF_UNRECEIVED_TAIL_H_
#define ISOBMFF_UNRECEIVED_TAIL_H_

#include <cstdint>

#include "isobmff/box.h"

namespace stream::isobmff {

class UnreceivedTail {
 public:
  // `index` is the whole moov box.
  UnreceivedTail(HeaderReader& reader, const ByteRange& index);

  // Returns whether the last byte before `end`, an offset in the index, may not have been received.
  bool Reaches(std::uint64_t end) const { return end > begin_; }

 private:
  std::uint64_t begin_;
};

}  // namespace stream::isobmff

#endif  // ISOBMFF_UNRECEIVED_TAIL_H_
