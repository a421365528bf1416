// The zeros that an index ends with, where they may stand for bytes that have not been received
// yet.
//
// A file whose space is reserved before it is downloaded reads as zeros from some place on to its
// end. Zeros that end within or right behind the index, with another box after them, are not of
// that kind: the index was received as a whole, and what is wrong in it is damage.
#ifndef ISOBMFF_UNRECEIVED_TAIL_H_
#define ISOBMFF_UNRECEIVED_TAIL_H_

#include <cstdint>

#include "isobmff/box.h"

namespace isobmff {

class UnreceivedTail {
 public:
  // `index` is the whole moov box.
  UnreceivedTail(HeaderReader& reader, const ByteRange& index);

  // Whether the last of the bytes in front of `end`, an offset in the index, may not have been
  // received.
  bool Reaches(std::uint64_t end) const { return end > begin_; }

 private:
  std::uint64_t begin_;
};

}  // namespace isobmff

#endif  // ISOBMFF_UNRECEIVED_TAIL_H_
