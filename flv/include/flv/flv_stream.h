// FlvStream: buffers the bytes of an FLV stream between the producers, which receive them, and the
// parser, which reads them through FlvStreamSource and waits for those that are missing.
//
// There is one for the whole process, since one FLV pipeline plays at a time and the facade does
// not destroy its FLV pipeline. Kept for compatibility. Each start begins a new run, with an empty
// stream; a thread with the id of an older run can neither stage nor read.
//
// Thread-safe.
#ifndef FLV_FLV_STREAM_H_
#define FLV_FLV_STREAM_H_

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <optional>
#include <utility>

#include "common/byte_buffer.h"
#include "common/clock.h"
#include "common/never_destroyed.h"
#include "common/run_id.h"
#include "flv/flv_source.h"
#include "platform/mutex.h"

namespace stream {

// The run flag of the FLV pipeline: the loops of all its tasks run while it is set.
extern std::atomic<bool> g_flvRunning;

class FlvStream {
 public:
  // The parser starts when more than this many bytes are unread.
  static constexpr std::uint32_t kReadySize = 10240;

  // Far more than is ever unread of a stream that is parsed as it is received, and far less than
  // the buffer can count.
  static constexpr std::uint32_t kMaxUnread = std::uint32_t{1} << 30;

  explicit FlvStream(std::uint32_t max_unread = kMaxUnread) : max_unread_(max_unread) {}

  // Begins the next run with an empty stream and returns its id.
  RunId Begin();

  // Appends a piece that begins at `offset` of the stream, without the bytes that were received
  // before: a local file is received from two producers, but each of its bytes is parsed once. If a
  // slow parser has let kMaxUnread bytes accumulate, waits until there are fewer. Returns false
  // for an older run, if a stop ends the wait, and if memory runs out.
  bool Stage(RunId run, std::uint64_t offset, const void* bytes, std::uint32_t size);

  // Marks the end of the input: nothing more will be staged.
  void MarkEndOfInput(RunId run);

  // Marks the end of parsing: unread bytes are dropped, and so is every later piece, for which
  // Stage still returns true. So a transfer that continues after its parser has ended, for example
  // of an endless stream that is not FLV, does not fill the memory.
  void EndParsing(RunId run);

  // Wakes all waiting threads. Call this after g_flvRunning was cleared.
  void Wake();

  // Waits until more than kReadySize bytes are unread, the download has ended, g_flvRunning is
  // cleared or another run was begun.
  void WaitUntilReady(RunId run);

  // Used by FlvStreamSource. They follow the contract of FlvSource, with one exception: a Skip of
  // more than kMaxUnread bytes may drop the first part and then fail.
  bool WaitForBytes(RunId run, std::uint32_t count);
  bool Read(RunId run, std::uint8_t* bytes, std::uint32_t count);
  bool Skip(RunId run, std::uint32_t count);

  // Releases the memory of the unread bytes. Call this after the tasks have ended.
  void Release();

  // Returns whether this is the run that was begun last.
  bool IsCurrent(RunId run) const { return runs_.IsCurrent(run); }

  // Number of bytes received and not read yet.
  std::uint32_t UnreadSize() const;

  // Number of bytes dropped since the stream began. For tests.
  std::uint64_t DroppedSize() const;

 private:
  bool MayReceiveMore(RunId run) const REQUIRES(mutex_);
  bool WaitForSpace(RunId run, std::uint64_t end) const REQUIRES(mutex_);
  bool WaitForUnread(RunId run, std::uint32_t count) const REQUIRES(mutex_);
  void SleepUnlocked(Clock::Duration duration) const REQUIRES(mutex_);

  const std::uint32_t max_unread_;
  mutable Mutex mutex_;
  std::condition_variable ready_;
  RunCounter runs_;  // changed with mutex_ held
  std::optional<CByteBuffer> unread_ GUARDED_BY(mutex_){std::in_place};
  // Bytes of the stream so far, including dropped ones.
  std::uint64_t received_ GUARDED_BY(mutex_) = 0;
  std::uint64_t dropped_ GUARDED_BY(mutex_) = 0;
  bool downloading_ GUARDED_BY(mutex_) = false;
  bool parsing_ GUARDED_BY(mutex_) = false;
};

extern NeverDestroyed<FlvStream> g_flvStream;

// One run of g_flvStream, as a source for the parser.
class FlvStreamSource final : public FlvSource {
 public:
  explicit FlvStreamSource(RunId run) : run_(run) {}

  bool Runs() const override { return g_flvRunning.load() && g_flvStream->IsCurrent(run_); }
  bool WaitForBytes(std::uint32_t count) override { return g_flvStream->WaitForBytes(run_, count); }
  bool Read(std::uint8_t* bytes, std::uint32_t count) override {
    return g_flvStream->Read(run_, bytes, count);
  }
  bool Skip(std::uint32_t count) override { return g_flvStream->Skip(run_, count); }

 private:
  const RunId run_;
};

}  // namespace stream

#endif  // FLV_FLV_STREAM_H_
