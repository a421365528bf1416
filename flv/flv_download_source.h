// The stream buffer as the parser reads it: waits for what is still to come.
#ifndef FLV_FLV_DOWNLOAD_SOURCE_H_
#define FLV_FLV_DOWNLOAD_SOURCE_H_

#include <atomic>
#include <cstdint>
#include <mutex>

#include "flv/flv_source.h"

// Looks for new bytes every 100 ms, for as long as g_flvRunning and `downloading` are set.
class FlvDownloadSource final : public FlvSource {
 public:
  explicit FlvDownloadSource(const std::atomic<bool>& downloading) : downloading_(downloading) {}

  bool Await(std::uint32_t count) override;
  bool Read(std::uint8_t* bytes, std::uint32_t count) override;
  bool Skip(std::uint32_t count) override;

 private:
  bool Await(std::uint32_t count, std::unique_lock<std::mutex>& lock) const;

  const std::atomic<bool>& downloading_;
};

#endif  // FLV_FLV_DOWNLOAD_SOURCE_H_
