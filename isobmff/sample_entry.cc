#include "isobmff/sample_entry.h"

#include "isobmff/big_endian.h"
#include "isobmff/box.h"

namespace isobmff {
namespace {

using View = std::span<const std::uint8_t>;

// Removes bytes from the front of a view. Bytes after the end read as zero or empty; Good() is
// false then.
class Taker {
 public:
  explicit Taker(View bytes) : left_(bytes) {}

  bool Good() const { return good_; }
  View Left() const { return left_; }

  View Take(std::size_t size) {
    good_ = good_ && size <= left_.size();
    if (!good_) return {};
    const View taken = left_.first(size);
    left_ = left_.subspan(size);
    return taken;
  }
  std::uint8_t Take8() {
    const View taken = Take(1);
    return taken.empty() ? std::uint8_t{0} : taken[0];
  }
  std::uint16_t Take16() {
    const View taken = Take(2);
    return taken.empty() ? std::uint16_t{0} : Read16(taken.data());
  }

 private:
  View left_;
  bool good_ = true;
};

Bytes Copy(View view) { return {view.begin(), view.end()}; }

// Adds the announced NAL units that are complete.
void TakeParameterSets(Taker& taker, unsigned count, std::vector<Bytes>& sets) {
  for (; count > 0 && taker.Good(); --count) {
    const View set = taker.Take(taker.Take16());
    if (!set.empty()) sets.push_back(Copy(set));
  }
}

AvcConfig ParseAvcConfig(View body) {
  constexpr std::size_t kProfileAndLevel = 3;
  constexpr unsigned kSequenceCountMask = 0x1F;
  AvcConfig config;
  Taker taker(body);
  if (taker.Take8() != 1) return config;  // version
  taker.Take(kProfileAndLevel + 1);       // and the size of the NAL unit lengths
  TakeParameterSets(taker, taker.Take8() & kSequenceCountMask, config.sequence);
  TakeParameterSets(taker, taker.Take8(), config.picture);
  return config;
}

// Removes one descriptor of MPEG-4 Systems (ISO/IEC 14496-1, 8.3.3) from the front and returns its
// body, which is empty if the descriptor has another tag. Its size has up to four bytes of seven
// bits each.
View TakeDescriptor(Taker& taker, std::uint8_t tag) {
  const std::uint8_t found = taker.Take8();
  std::uint32_t size = 0;
  std::uint8_t byte = 0x80;
  for (int i = 0; i < 4 && (byte & 0x80) != 0; ++i) {
    byte = taker.Take8();
    size = size << 7 | (byte & 0x7FU);
  }
  const View body = taker.Take(size);
  return found == tag ? body : View();
}

// Skips the optional fields before the decoder configuration.
void SkipStreamHead(Taker& stream) {
  stream.Take16();  // stream ID
  const std::uint8_t flags = stream.Take8();
  if ((flags & 0x80) != 0) stream.Take16();              // ID of the stream that it depends on
  if ((flags & 0x40) != 0) stream.Take(stream.Take8());  // URL
  if ((flags & 0x20) != 0) stream.Take16();              // ID of the clock reference stream
}

std::optional<ElementaryStream> ParseElementaryStream(View body) {
  constexpr std::uint8_t kStreamTag = 3;
  constexpr std::uint8_t kDecoderTag = 4;
  constexpr std::uint8_t kSpecificInfoTag = 5;
  constexpr std::size_t kVersionAndFlags = 4;
  constexpr std::size_t kBehindObjectType = 12;
  Taker box(body);
  box.Take(kVersionAndFlags);
  Taker stream(TakeDescriptor(box, kStreamTag));
  SkipStreamHead(stream);
  Taker decoder(TakeDescriptor(stream, kDecoderTag));
  ElementaryStream result;
  result.object_type = decoder.Take8();
  decoder.Take(kBehindObjectType);
  if (!decoder.Good()) return std::nullopt;
  const View info = TakeDescriptor(decoder, kSpecificInfoTag);
  if (!info.empty()) result.specific_info = Copy(info);
  return result;
}

void FindElementaryStream(View children, SampleEntry& entry) {
  View esds = FindBox(children, FourCc("esds"));
  // QuickTime stores it in a wave box, after other boxes.
  if (esds.empty()) esds = FindBox(FindBox(children, FourCc("wave")), FourCc("esds"));
  if (!esds.empty()) entry.stream = ParseElementaryStream(esds);
}

void ParseVideo(View body, SampleEntry& entry) {
  constexpr std::size_t kBeforeWidth = 24;
  constexpr std::size_t kBehindHeight = 50;
  Taker taker(body);
  taker.Take(kBeforeWidth);
  entry.width = taker.Take16();
  entry.height = taker.Take16();
  taker.Take(kBehindHeight);
  if (!taker.Good()) return;
  const View children = taker.Left();
  const View avc = FindBox(children, FourCc("avcC"));
  if (!avc.empty()) entry.avc = ParseAvcConfig(avc);
  FindElementaryStream(children, entry);
}

// Version 2 of QuickTime's sound description has the channel count in its additional fields.
int TakeVersion2(Taker& taker) {
  constexpr std::size_t kBeforeChannels = 12;
  constexpr std::size_t kBehindChannels = 20;
  taker.Take(kBeforeChannels);
  const View channels = taker.Take(4);
  taker.Take(kBehindChannels);
  return taker.Good() ? static_cast<int>(Read32(channels.data()) & 0xFFFF) : -1;
}

// `box_version` is the version of the stsd box. If it is not 0, version 1 of the entry is the ISO
// one, which has no additional fields.
void ParseSound(View body, std::uint8_t box_version, SampleEntry& entry) {
  constexpr std::size_t kBeforeVersion = 8;
  constexpr std::size_t kRevisionAndVendor = 6;
  constexpr std::size_t kBehindChannels = 10;
  constexpr std::size_t kVersion1Adds = 16;
  Taker taker(body);
  taker.Take(kBeforeVersion);
  const std::uint16_t version = taker.Take16();
  taker.Take(kRevisionAndVendor);
  int channels = taker.Take16();
  taker.Take(kBehindChannels);
  if (version == 1 && box_version == 0) taker.Take(kVersion1Adds);
  if (version == 2) channels = TakeVersion2(taker);
  if (!taker.Good()) return;
  entry.channels = channels;
  FindElementaryStream(taker.Left(), entry);
}

}  // namespace

std::optional<SampleEntry> ParseSampleEntry(View body, std::uint32_t handler) {
  constexpr std::size_t kEntryHeaderSize = 8;
  constexpr std::size_t kCountAt = 4;
  constexpr std::size_t kListHeaderSize = 8;
  SampleEntry entry;
  if (body.size() < kListHeaderSize) return std::nullopt;
  if (Read32(body.data() + kCountAt) == 0) return entry;
  const std::uint8_t box_version = body[0];
  body = body.subspan(kListHeaderSize);
  if (body.size() < kEntryHeaderSize) return std::nullopt;
  const std::uint32_t size = Read32(body.data());
  if (size < kEntryHeaderSize || size > body.size()) return std::nullopt;
  const View name = body.subspan(4, 4);
  entry.name.assign(name.begin(), name.end());
  const View content = body.subspan(kEntryHeaderSize, size - kEntryHeaderSize);
  if (handler == FourCc("vide")) ParseVideo(content, entry);
  if (handler == FourCc("soun")) ParseSound(content, box_version, entry);
  return entry;
}

std::uint8_t AudioObjectType(View config) {
  constexpr unsigned kEscape = 31;
  if (config.empty()) return 0;
  const unsigned type = config[0] >> 3;
  if (type != kEscape) return static_cast<std::uint8_t>(type);
  if (config.size() < 2) return 0;
  return static_cast<std::uint8_t>(32 + ((config[0] & 7U) << 3 | config[1] >> 5));
}

}  // namespace isobmff
