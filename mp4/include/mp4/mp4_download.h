// The download side of the MP4 pipeline: writes the stream from the network into the restart file,
// each byte at its true offset.
#ifndef MP4_MP4_DOWNLOAD_H_
#define MP4_MP4_DOWNLOAD_H_

#include <curl/curl.h>

#include <cstddef>
#include <cstdint>
#include <string>

#include "common/copy_buffer.h"
#include "common/run_id.h"
#include "mp4/mp4_state.h"

namespace stream {

// Fetches `url` from the write offset until its end or until g_mp4Running is cleared. Then retries
// the bytes that could not be written, until they are written or g_mp4Running is cleared. Writes
// nothing once the next run of the restart file has begun. Blocks.
void DownloadMp4(const std::string& url, RunId run);

// One download. Used on the thread that performs the transfer.
class Mp4Transfer {
 public:
  explicit Mp4Transfer(RunId run);  // starts at the current write offset

  std::uint64_t Offset() const { return offset_; }
  bool HasPending() const { return pending_.Length() > 0; }

  // Checks the status of the reply, when its first piece is received. Returns false if the body
  // must not be written. A server that does not support ranges sends the stream from its beginning;
  // the offset is then reset to 0.
  bool AcceptReply(CURL* handle);

  // Accepts a piece of the body, which may be empty, and writes all pending bytes. Returns the
  // number of accepted bytes; 0 ends the transfer. Bytes that cannot be written stay pending until
  // the next call; if there are too many of them, this call waits. The first failure to write is
  // logged.
  std::size_t OnBytes(const char* data, std::size_t length);

 private:
  enum class Outcome { kDone, kLater, kNever };

  Outcome WritePending() EXCLUDES(g_mp4File->mutex);
  int WriteToFile(const std::string& path) const;
  void ReportFailure(const std::string& path, int error);
  void Advance(Mp4File& file) REQUIRES(file.mutex);

  const RunId run_;
  std::uint64_t seeks_;
  std::uint64_t offset_;  // of the first pending byte
  bool reply_seen_ = false;
  bool failure_reported_ = false;
  CopyBuffer pending_;  // received and not written yet
};

}  // namespace stream

#endif  // MP4_MP4_DOWNLOAD_H_
