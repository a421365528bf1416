// Arbitrary bytes through the demultiplexer: through ts_demux_feed into the global queues, and
// through a TsDemuxer. Nothing is read or written out of bounds, and the output is not larger than
// the input. -close_fd_mask=1 suppresses the console lines about bad streams.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>
#include <vector>

#include "common/frame_queue.h"
#include "ts/pes_assembler.h"
#include "ts/ts_crc32.h"
#include "ts/ts_demux.h"
#include "ts/ts_demuxer.h"
#include "ts/ts_frame_sink.h"
#include "ts/ts_packet.h"

namespace stream {
namespace {

using Bytes = std::span<const std::uint8_t>;

// Ends the process, which libFuzzer reports as a crash.
void Require(bool condition) {
  if (!condition) std::abort();
}

bool IsPayloadSize(std::size_t size) { return size > 0 && size <= kMaxPesPayload; }

// Empties a global queue. Returns the number of payload bytes that were in it.
std::size_t Drain(FrameNodePtr (*pop)()) {
  std::size_t total = 0;
  while (const FrameNodePtr frame = pop()) {
    Require(IsPayloadSize(static_cast<std::size_t>(frame->size)));
    total += static_cast<std::size_t>(frame->size);
  }
  return total;
}

std::size_t DrainBoth() { return Drain(PopVideoFrame) + Drain(PopAudioFrame); }

// Counts the payload bytes of its frames.
class CountingSink final : public TsFrameSink {
 public:
  std::size_t Bytes() const { return bytes_; }
  void Reset() { bytes_ = 0; }

 private:
  void OnFrame(const TsFrame& frame) override {
    Require(IsPayloadSize(frame.payload.size()));
    bytes_ += frame.payload.size();
  }

  std::size_t bytes_ = 0;
};

// A demultiplexer of its own. There is one for all inputs, since its memory is large.
struct OwnDemuxer {
  CountingSink sink;
  TsDemuxer demuxer{sink};
};

OwnDemuxer& ResetOwnDemuxer() {
  static OwnDemuxer own;
  own.demuxer.Reset();
  own.sink.Reset();
  return own;
}

// Each packet is in a block of its own, so that a read past its end is detected.
template <typename Feed>
void FeedPacketByPacket(Bytes stream, const Feed& feed) {
  for (; stream.size() >= kTsPacketSize; stream = stream.subspan(kTsPacketSize)) {
    const Bytes bytes = stream.first(kTsPacketSize);
    const std::vector<std::uint8_t> packet(bytes.begin(), bytes.end());
    feed(packet.data(), static_cast<std::int32_t>(packet.size()));
  }
}

// Feeds the stream twice: the second time the state left by the first is still there.
void TwoStreamsPacketByPacket(Bytes stream) {
  const TsDemuxLock lock;
  ProcessTsDemuxer().Reset();
  ResetFrameQueues();
  FeedPacketByPacket(stream, ts_demux_feed);
  std::size_t out = DrainBoth();
  ResetFrameQueues();
  FeedPacketByPacket(stream, ts_demux_feed);
  out += DrainBoth();
  Require(out <= 2 * stream.size());
}

void AllInOneCall(Bytes stream) {
  auto& [sink, demuxer] = ResetOwnDemuxer();
  demuxer.Feed(stream.data(), static_cast<std::int32_t>(stream.size()));
  demuxer.Flush();
  Require(sink.Bytes() <= stream.size());
}

// Feeds the stream repeatedly until a PES packet that never ends exceeds its assembler's limit.
void UntilAssemblersAreFull(Bytes stream) {
  OwnDemuxer& own = ResetOwnDemuxer();
  const auto feed = [&own](const std::uint8_t* data, std::int32_t length) {
    own.demuxer.Feed(data, length);
  };
  std::size_t fed = 0;
  for (; fed < std::size_t{2} * kMaxPesPayload; fed += stream.size()) {
    FeedPacketByPacket(stream, feed);
  }
  own.demuxer.Flush();
  Require(own.sink.Bytes() <= fed);
}

// Corrects the checksum of the section in a PAT or PMT packet. Otherwise hardly any mutated section
// would pass the check.
void Sign(std::uint8_t* packet) {
  constexpr std::size_t kCrcSize = 4;
  const TsPacket fields(packet);
  const std::size_t start = (packet[3] & 0x20) == 0 ? 5 : 6 + fields.AdaptationFieldLength();
  const std::size_t end = start + 3 + fields.LengthAt(start + 1);
  if (end < start + 3 + kCrcSize || end > kTsPacketSize) return;
  const auto size = static_cast<std::uint16_t>(end - kCrcSize - start);
  const std::uint32_t crc = ts_crc32(packet + start, size);
  for (std::size_t i = 0; i < kCrcSize; ++i) {
    packet[end - kCrcSize + i] = static_cast<std::uint8_t>(crc >> (24 - 8 * i));
  }
}

void SignTables(std::span<std::uint8_t> stream) {
  constexpr std::uint16_t kFirstPmtPid = 0x1000;  // in the seeds
  constexpr std::uint16_t kLastPmtPid = 0x1001;
  for (; stream.size() >= kTsPacketSize; stream = stream.subspan(kTsPacketSize)) {
    const std::uint16_t pid = TsPacket(stream.data()).Pid();
    if (pid == 0 || (pid >= kFirstPmtPid && pid <= kLastPmtPid)) Sign(stream.data());
  }
}

}  // namespace

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t max_size);

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size,
                                               std::size_t max_size, unsigned seed) {
  const std::size_t mutated = LLVMFuzzerMutate(data, size, max_size);
  if (seed % 2 == 0) SignTables({data, mutated});
  return mutated;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  // A trailing part of this length, which the demultiplexer ignores, requests the long run.
  constexpr std::size_t kLongRunTail = 1;
  const Bytes stream(data, size);
  TwoStreamsPacketByPacket(stream);
  AllInOneCall(stream);
  if (size >= kTsPacketSize && size % kTsPacketSize == kLongRunTail) UntilAssemblersAreFull(stream);
  return 0;
}

}  // namespace stream
