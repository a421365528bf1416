// FlvStream: the bytes of an FLV stream between those who receive it and the parser, which reads
// them through FlvStreamSource and waits for what is still to come.
//
// There is one for the whole process, since one FLV pipeline plays at a time and the facade only
// forgets its FLV pipeline (kept on purpose). Each start begins a new stream in it and gets its
// number; whoever still holds an older number stages nothing and reads nothing.
//
// Safe from any thread.
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
  // The parser does not wait any longer to begin once more unread bytes than this are there.
  static constexpr std::uint32_t kReadySize = 10240;

  // Far more than a stream has that is parsed as it comes, and far less than the buffer can count.
  static constexpr std::uint32_t kMostUnread = std::uint32_t{1} << 30;

  explicit FlvStream(std::uint32_t most_unread = kMostUnread) : most_unread_(most_unread) {}

  // Begins a new, empty stream and returns its number.
  std::uint64_t Begin();

  // Puts a piece that begins at `offset` of the stream behind what is there, as far as it is not
  // there yet: a local file comes from two sides, and each byte of it is parsed once. Where a
  // slow parser has let kMostUnread bytes gather, waits until there are fewer. False for an older
  // stream, when a stop ends that wait, and when memory runs out.
  bool Stage(std::uint64_t stream, std::uint64_t offset, const void* bytes, std::uint32_t size);

  // Nothing more will be staged.
  void EndDownload(std::uint64_t stream);

  // Nothing more will be read: what is unread is dropped, and so is every later piece, for which
  // Stage still returns true. So a transfer that goes on after its parser has ended, such as that
  // of an endless stream that is no FLV, fills no memory.
  void EndParsing(std::uint64_t stream);

  // Wakes whoever waits, once g_flvRunning was cleared.
  void Stop();

  // Waits until more than kReadySize bytes are unread, the download has ended, or g_flvRunning is
  // cleared.
  void AwaitReady(std::uint64_t stream);

  // How FlvStreamSource reads; what FlvSource says of them holds, but that of a Skip of more than
  // kMostUnread the first part may be dropped though the rest does not come.
  bool Await(std::uint64_t stream, std::uint32_t count);
  bool Read(std::uint64_t stream, std::uint8_t* bytes, std::uint32_t count);
  bool Skip(std::uint64_t stream, std::uint32_t count);

  // Gives the memory of what is unread back. For when the tasks have ended.
  void Release();

  // Whether it is the one that was begun last.
  bool IsCurrent(std::uint64_t stream) const { return stream == stream_.load(); }

  // Bytes received and not read yet.
  std::uint32_t UnreadSize() const;

  // Bytes dropped since the stream began.
  std::uint64_t DroppedSize() const;

 private:
  using Lock = std::unique_lock<std::mutex>;

  bool MoreMayCome(std::uint64_t stream) const;
  bool AwaitRoom(std::uint64_t stream, std::uint64_t end, Lock& lock) const;
  bool AwaitUnread(std::uint64_t stream, std::uint32_t count, Lock& lock) const;

  const std::uint32_t most_unread_;
  mutable std::mutex mutex_;
  std::atomic<std::uint64_t> stream_{0};  // the number of the stream; changed with mutex_ held
  // All guarded by mutex_.
  std::condition_variable ready_;
  std::optional<CByteBuffer> unread_{std::in_place};
  std::uint64_t received_ = 0;  // bytes of the stream so far, dropped ones included
  std::uint64_t dropped_ = 0;
  bool downloading_ = false;
  bool parsing_ = false;
};

extern NeverDestroyed<FlvStream> g_flvStream;

// A stream of g_flvStream as the parser reads it.
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
