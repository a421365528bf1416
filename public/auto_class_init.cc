#include <cstring>

#include "stream_downloader.h"

void CStreamDownloader::__autoclassinit2(std::size_t size) {
  std::memset(static_cast<void*>(this), 0, size);
}
