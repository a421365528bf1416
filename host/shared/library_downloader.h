// Implements the three operations that a host needs with the library's facade.
#ifndef HOST_SHARED_LIBRARY_DOWNLOADER_H_
#define HOST_SHARED_LIBRARY_DOWNLOADER_H_

#include <string>

#include "downloader.h"
#include "stream_downloader.h"

namespace host {

class LibraryDownloader final : public Downloader {
 public:
  explicit LibraryDownloader(CStreamPlayerImp& player) : facade_(&player) {}

  bool Begin(const std::string& address) override { return facade_.BeginDownload(address); }
  bool End() override { return facade_.EndDownload(); }
  bool SetStart(float seconds) override { return facade_.SetStartPostion(seconds); }

 private:
  CStreamDownloader facade_;
};

}  // namespace host

#endif  // HOST_SHARED_LIBRARY_DOWNLOADER_H_
