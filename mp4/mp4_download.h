// The download side of the MP4 pipeline: from the network into the restart file, each byte at its
// true offset.
#ifndef MP4_MP4_DOWNLOAD_H_
#define MP4_MP4_DOWNLOAD_H_

#include <curl/curl.h>

#include <cstddef>
#include <cstdint>
#include <string>

#include "common/copy_buffer.h"

// Fetches `url` from the write offset to its end, or until g_mp4Running is cleared, then writes
// what could not be written yet, as long as that takes. Nothing is written once another address was
// started than that of the number `address`. Blocks.
void DownloadMp4(const std::string& url, std::uint64_t address);

// One download. It is used on the thread that performs the transfer.
class Mp4Transfer {
 public:
  explicit Mp4Transfer(std::uint64_t address);  // from the present write offset

  std::uint64_t Offset() const { return offset_; }
  bool HasPending() const { return pending_.Length() > 0; }

  // Looks at the head of a reply, at its first piece. False when its body is not to be taken. A
  // server that does not know ranges sends the stream from its beginning.
  bool AcceptReply(CURL* handle);

  // Takes a piece of the body, which may be empty, and writes all that waits. Returns how many
  // bytes it took: 0 ends the transfer. Bytes that cannot be written now wait for the next call;
  // when too many of them do, this one waits. The first time that they cannot be written is
  // reported in a console line.
  std::size_t Take(const char* data, std::size_t length);

 private:
  enum class Outcome { kDone, kLater, kNever };

  Outcome WritePending();
  int WriteToFile(const std::string& path) const;
  void ReportFailure(const std::string& path, int error);
  void Advance();

  const std::uint64_t address_;
  std::uint64_t seeks_;
  std::uint64_t offset_;  // of the first byte that waits
  bool reply_seen_ = false;
  bool failure_reported_ = false;
  CopyBuffer pending_;  // received and not written yet
};

#endif  // MP4_MP4_DOWNLOAD_H_
