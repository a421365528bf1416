// Any bytes through ts_demux_feed: nothing is read or written out of bounds, and no more comes out
// than went in. What it prints about bad streams is kept off the screen by -close_fd_mask=1.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>
#include <vector>

#include "common/frame_queue.h"
#include "ts/pes_assembler.h"
#include "ts/ts_crc32.h"
#include "ts/ts_demux.h"
#include "ts/ts_packet.h"

namespace {

using Bytes = std::span<const std::uint8_t>;

// Ends the process, which libFuzzer takes for a crash.
void Require(bool condition) {
  if (!condition) std::abort();
}

// Empties a global queue. Returns how many bytes of payload were in it.
std::size_t Drain(FrameNodePtr (*pop)()) {
  std::size_t total = 0;
  while (const FrameNodePtr frame = pop()) {
    Require(frame->size > 0 && static_cast<std::uint32_t>(frame->size) <= kMaxPesPayload);
    total += static_cast<std::size_t>(frame->size);
  }
  return total;
}

std::size_t DrainBoth() { return Drain(PopVideoFrame) + Drain(PopAudioFrame); }

// Each packet in a block of its own, so that a read past its end is seen.
void FeedPacketByPacket(Bytes stream) {
  for (; stream.size() >= kTsPacketSize; stream = stream.subspan(kTsPacketSize)) {
    const Bytes bytes = stream.first(kTsPacketSize);
    const std::vector<std::uint8_t> packet(bytes.begin(), bytes.end());
    ts_demux_feed(packet.data(), static_cast<std::int32_t>(packet.size()));
  }
}

// A second stream follows: what the first has left behind is still there.
void TwoStreamsPacketByPacket(Bytes stream) {
  ts_demux_forget();
  ResetFrameQueues();
  FeedPacketByPacket(stream);
  std::size_t out = DrainBoth();
  ResetFrameQueues();
  FeedPacketByPacket(stream);
  out += DrainBoth();
  Require(out <= 2 * stream.size());
}

void AllInOneCall(Bytes stream) {
  ts_demux_forget();
  ResetFrameQueues();
  ts_demux_feed(stream.data(), static_cast<std::int32_t>(stream.size()));
  Require(DrainBoth() <= stream.size());
}

// The same again and again, until a PES packet that never ends has outgrown its assembler.
void UntilAssemblersAreFull(Bytes stream) {
  ts_demux_forget();
  ResetFrameQueues();
  for (std::size_t fed = 0; fed < std::size_t{2} * kMaxPesPayload; fed += stream.size()) {
    FeedPacketByPacket(stream);
    DrainBoth();
  }
}

// Gives the section of a PAT or PMT packet the checksum that it should have: else hardly any lie
// about its contents would get past the check.
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
  // A tail of this length, which the demultiplexer never sees, asks for the run that takes long.
  constexpr std::size_t kLongRunTail = 1;
  const TsDemuxLock lock;
  const Bytes stream(data, size);
  TwoStreamsPacketByPacket(stream);
  AllInOneCall(stream);
  if (size >= kTsPacketSize && size % kTsPacketSize == kLongRunTail) UntilAssemblersAreFull(stream);
  return 0;
}
