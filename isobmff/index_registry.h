// The indexes of the files that this process has open. Any thread may call it.
#ifndef ISOBMFF_INDEX_REGISTRY_H_
#define ISOBMFF_INDEX_REGISTRY_H_

#include <memory>

#include "isobmff/file.h"
#include "isobmff/movie_index.h"

namespace isobmff {

// The index of an opened file, shared with every other handle of the file that is open. Null where
// the file holds no complete index.
std::shared_ptr<const MovieIndex> IndexOf(const File& file);

}  // namespace isobmff

#endif  // ISOBMFF_INDEX_REGISTRY_H_
