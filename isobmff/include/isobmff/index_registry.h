// The indexes of the files that this process has open. Thread-safe.
#ifndef ISOBMFF_INDEX_REGISTRY_H_
#define ISOBMFF_INDEX_REGISTRY_H_

#include <memory>

#include "isobmff/movie_index.h"
#include "platform/random_access_file.h"

namespace stream::isobmff {

// Returns the index of an open file, shared with every other open handle of the file; null if the
// file has no complete index.
std::shared_ptr<const MovieIndex> IndexOf(const platform::RandomAccessFile& file);

}  // namespace stream::isobmff

#endif  // ISOBMFF_INDEX_REGISTRY_H_
