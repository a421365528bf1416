#include "mp4/mp4_download.h"

#include <cerrno>
#include <cstdio>
#include <limits>
#include <system_error>
#include <utility>

#include "common/clock.h"
#include "common/console.h"
#include "common/http_transfer.h"
#include "platform/files.h"

namespace stream {
namespace {

// What the write callback gets.
struct RunningDownload {
  CURL* handle;
  Mp4Transfer& transfer;
};

std::size_t OnMp4Bytes(char* data, std::size_t size, std::size_t count, void* download) {
  const auto& running = *static_cast<const RunningDownload*>(download);
  const std::size_t length = size * count;
  if (!g_mp4Running.load() || IsHtmlPage(data, length)) return 0;
  if (!running.transfer.AcceptReply(running.handle)) return 0;
  return running.transfer.OnBytes(data, length);
}

void PerformInto(Mp4Transfer& transfer, const std::string& url) {
  RunningDownload running{nullptr, transfer};
  const Transfer request{url, GuardedCallback<OnMp4Bytes>, &running, g_mp4Running};
  const CurlHandle handle = SetUpDownload(request, transfer.Offset());
  running.handle = handle.get();
  PerformDownload(handle, request);
}

int LastError() { return errno != 0 ? errno : EIO; }

// Both return 0 or a value of errno.
int WriteAt(std::FILE* file, std::uint64_t offset, const CopyBuffer& bytes) {
  const auto size = static_cast<std::size_t>(bytes.Length());
  const bool is_written = std::fseek(file, static_cast<long>(offset), SEEK_SET) == 0 &&
                          std::fwrite(bytes.Data(), 1, size, file) == size;
  return is_written ? 0 : LastError();
}
int Close(platform::File file) { return std::fclose(file.release()) == 0 ? 0 : LastError(); }

}  // namespace

Mp4Transfer::Mp4Transfer(RunId run) : run_(run) {
  const MutexLock lock(g_mp4File->mutex);
  offset_ = g_mp4File->write_offset;
  seeks_ = g_mp4File->seeks;
  failure_reported_ = std::exchange(g_mp4File->failure_reported, false);
}

bool Mp4Transfer::AcceptReply(CURL* handle) {
  constexpr long kOk = 200;
  constexpr long kFirstError = 400;
  if (std::exchange(reply_seen_, true) || offset_ == 0) return true;
  long status = 0;  // stays 0 for a local file
  curl_easy_getinfo(handle, CURLINFO_RESPONSE_CODE, &status);
  if (status == kOk) offset_ = 0;
  return status < kFirstError;  // an error page must not be written into the middle of a file
}

std::size_t Mp4Transfer::OnBytes(const char* data, std::size_t length) {
  if (data != nullptr && !pending_.Append(reinterpret_cast<const std::uint8_t*>(data),
                                          static_cast<std::uint32_t>(length))) {
    return 0;
  }
  constexpr std::int32_t kMaxPending = 16 << 20;
  Outcome outcome = WritePending();
  while (outcome == Outcome::kLater && g_mp4Running.load()) {
    SleepFor(std::chrono::milliseconds(1));
    if (pending_.Length() <= kMaxPending) break;
    outcome = WritePending();
  }
  if (outcome != Outcome::kNever) return length;
  pending_.Reset();
  return 0;
}

Mp4Transfer::Outcome Mp4Transfer::WritePending() {
  Mp4File& file = *g_mp4File;
  const MutexLock lock(file.mutex);
  if (!file.runs.IsCurrent(run_)) return Outcome::kNever;
  if (!HasPending()) return Outcome::kDone;
  const auto size = static_cast<std::uint64_t>(pending_.Length());
  if (!file.ranges.Contains(offset_, size)) {
    // Offsets are 32-bit numbers, so bytes after 2 GiB are not stored. Kept for compatibility.
    if (offset_ > static_cast<std::uint64_t>(std::numeric_limits<std::int32_t>::max())) {
      ConsoleLine("mp4 download ends at 2 GiB.");
      return Outcome::kNever;
    }
    if (const int error = WriteToFile(file.path); error != 0) {
      ReportFailure(file.path, error);
      return Outcome::kLater;
    }
    file.ranges.Add(offset_, offset_ + size);
    ++file.revision;
  }
  Advance(file);
  return Outcome::kDone;
}

// Returns 0 or a value of errno.
int Mp4Transfer::WriteToFile(const std::string& path) const {
  platform::File file = platform::OpenFile(path, "rb+");
  if (file == nullptr) return LastError();
  const int write_error = WriteAt(file.get(), offset_, pending_);
  const int close_error = Close(std::move(file));
  return write_error != 0 ? write_error : close_error;
}

// Logged once per start, since the write is retried every millisecond.
void Mp4Transfer::ReportFailure(const std::string& path, int error) {
  if (std::exchange(failure_reported_, true)) return;
  ConsoleLine("mp4 cannot write " + path + ": " + std::generic_category().message(error));
}

// If the target of a seek is within the bytes just processed, this transfer serves the seek, and
// the next start continues after those bytes.
void Mp4Transfer::Advance(Mp4File& file) {
  const std::uint64_t before = offset_;
  offset_ += static_cast<std::uint64_t>(pending_.Length());
  pending_.Reset();
  if (before <= file.write_offset && file.write_offset <= offset_) seeks_ = file.seeks;
  if (seeks_ == file.seeks) file.write_offset = offset_;
}

void DownloadMp4(const std::string& url, RunId run) {
  Mp4Transfer transfer(run);
  PerformInto(transfer, url);
  ConsoleLine("mp4 Download thread stop.");
  while (g_mp4Running.load() && transfer.HasPending()) transfer.OnBytes(nullptr, 0);
}

}  // namespace stream
