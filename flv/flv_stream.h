// FlvStream: buffers the bytes of an FLV stream between the producers, which receive them, and the
// parser, which reads them through FlvStreamSource and waits for those that are missing.
//
// There is one for the whole process, since one FLV pipeline plays at a time and the facade does
// not destroy its FLV pipeline. Kept for compatibility. Each start begins a new stream in it and
// gets a number; a thread with an older number can neither stage nor read.
//
// Thread-safe.
#ifndef FLV_FLV_STREAM_H_
#define FLV_FLV_STREAM_H_

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <optional>
#include <utility>

#include "common/byte_buffer.h"
#include "common/never_destroyed.h"
#include "flv/flv_source.h"

// The run flag of the FLV pipeline: the loops of all its tasks run while it is set.
extern std::atomic<bool> g_flvRunning;

class FlvStream {
 public:
  // The parser starts when more than this many bytes are unread.
  static constexpr std::uint32_t kReadySize = 10240;

  // Far more than is ever unread of a stream that is parsed as it is received, and far less than
  // the buffer can count.
  static constexpr std::uint32_t kMaxUnread = std::uint32_t{1} << 30;

  explicit FlvStream(std::uint32_t most_unread = kMaxUnread) : most_unread_(most_unread) {}

  // Begins a new, empty stream and returns its number.
  std::uint64_t Begin();

  // Appends a piece that begins at `offset` of the stream, without the bytes that were received
  // before: a local file is received from two producers, but each of its bytes is parsed once. If a
  // slow parser has let kMaxUnread bytes accumulate, waits until there are fewer. Returns false
  // for an older stream, if a stop ends the wait, and if memory runs out.
  bool Stage(std::uint64_t stream, std::uint64_t offset, const void* bytes, std::uint32_t size);

  // Marks the end of the input: nothing more will be staged.
  void EndDownload(std::uint64_t stream);

  // Marks the end of parsing: unread bytes are dropped, and so is every later piece, for which
  // Stage still returns true. So a transfer that continues after its parser has ended, for example
  // of an endless stream that is not FLV, does not fill the memory.
  void EndParsing(std::uint64_t stream);

  // Wakes all waiting threads. Call this after g_flvRunning was cleared.
  void Stop();

  // Waits until more than kReadySize bytes are unread, the download has ended, g_flvRunning is
  // cleared or another stream was begun.
  void AwaitReady(std::uint64_t stream);

  // Used by FlvStreamSource. They follow the contract of FlvSource, with one exception: a Skip of
  // more than kMaxUnread bytes may drop the first part and then fail.
  bool Await(std::uint64_t stream, std::uint32_t count);
  bool Read(std::uint64_t stream, std::uint8_t* bytes, std::uint32_t count);
  bool Skip(std::uint64_t stream, std::uint32_t count);

  // Releases the memory of the unread bytes. Call this after the tasks have ended.
  void Release();

  // Returns whether this is the stream that was begun last.
  bool IsCurrent(std::uint64_t stream) const { return stream == stream_.load(); }

  // Number of bytes received and not read yet.
  std::uint32_t UnreadSize() const;

  // Number of bytes dropped since the stream began.
  std::uint64_t DroppedSize() const;

 private:
  using Lock = std::unique_lock<std::mutex>;

  bool MayReceiveMore(std::uint64_t stream) const;
  bool AwaitRoom(std::uint64_t stream, std::uint64_t end, Lock& lock) const;
  bool AwaitUnread(std::uint64_t stream, std::uint32_t count, Lock& lock) const;

  const std::uint32_t most_unread_;
  mutable std::mutex mutex_;
  std::atomic<std::uint64_t> stream_{0};  // number of the last stream; changed with mutex_ held
  // All guarded by mutex_.
  std::condition_variable ready_;
  std::optional<CByteBuffer> unread_{std::in_place};
  std::uint64_t received_ = 0;  // bytes of the stream so far, including dropped ones
  std::uint64_t dropped_ = 0;
  bool downloading_ = false;
  bool parsing_ = false;
};

extern NeverDestroyed<FlvStream> g_flvStream;

// A stream of g_flvStream, as a source for the parser.
class FlvStreamSource final : public FlvSource {
 public:
  explicit FlvStreamSource(std::uint64_t stream) : stream_(stream) {}

  bool Runs() const override { return g_flvRunning.load() && g_flvStream->IsCurrent(stream_); }
  bool Await(std::uint32_t count) override { return g_flvStream->Await(stream_, count); }
  bool Read(std::uint8_t* bytes, std::uint32_t count) override {
    return g_flvStream->Read(stream_, bytes, count);
  }
  bool Skip(std::uint32_t count) override { return g_flvStream->Skip(stream_, count); }

 private:
  const std::uint64_t stream_;
};

#endif  // FLV_FLV_STREAM_H_
