#include "stream_downloader_c.h"

const char* sd_version() { return STREAM_VERSION; }

uint32_t sd_version_number() {
  return STREAM_VERSION_MAJOR * 1'000'000 + STREAM_VERSION_MINOR * 1'000 + STREAM_VERSION_PATCH;
}
