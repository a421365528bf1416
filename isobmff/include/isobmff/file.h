// The file that the reader reads.
#ifndef ISOBMFF_FILE_H_
#define ISOBMFF_FILE_H_

#include "platform/random_access_file.h"

namespace stream::isobmff {

using platform::FileId;
using File = platform::RandomAccessFile;

}  // namespace stream::isobmff

#endif  // ISOBMFF_FILE_H_
