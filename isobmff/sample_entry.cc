#include "isobmff/sample_entry.h"

#include "isobmff/big_endian.h"
#include "isobmff/box.h"

namespace stream::isobmff {
namespace {

using View = std::span<const std::uint8_t>;

// Reads bytes from the front of a view. Bytes after the end read as zero or empty; Good() is false
// then.
class ByteReader {
 public:
  explicit ByteReader(View bytes) : left_(bytes) {}

  bool Good() const { return good_; }
  View Left() const { return left_; }

  View Read(std::size_t size) {
    good_ = good_ && size <= left_.size();
    if (!good_) return {};
    const View bytes = left_.first(size);
    left_ = left_.subspan(size);
    return bytes;
  }
  std::uint8_t Read8() {
    const View bytes = Read(1);
    return bytes.empty() ? std::uint8_t{0} : bytes[0];
  }
  std::uint16_t Read16() {
    const View bytes = Read(2);
    return bytes.empty() ? std::uint16_t{0} : isobmff::Read16(bytes.data());
  }

 private:
  View left_;
  bool good_ = true;
};

Bytes Copy(View view) { return {view.begin(), view.end()}; }

// Adds the announced NAL units that are complete.
void ReadParameterSets(ByteReader& reader, unsigned count, std::vector<Bytes>& sets) {
  for (; count > 0 && reader.Good(); --count) {
    const View set = reader.Read(reader.Read16());
    if (!set.empty()) sets.push_back(Copy(set));
  }
}

AvcConfig ParseAvcConfig(View body) {
  constexpr std::size_t kProfileAndLevel = 3;
  constexpr unsigned kSequenceCountMask = 0x1F;
  AvcConfig config;
  ByteReader reader(body);
  if (reader.Read8() != 1) return config;  // version
  reader.Read(kProfileAndLevel + 1);       // and the size of the NAL unit lengths
  ReadParameterSets(reader, reader.Read8() & kSequenceCountMask, config.sequence);
  ReadParameterSets(reader, reader.Read8(), config.picture);
  return config;
}

// Removes one descriptor of MPEG-4 Systems (ISO/IEC 14496-1, 8.3.3) from the front and returns its
// body, which is empty if the descriptor has another tag. Its size has up to four bytes of seven
// bits each.
View ReadDescriptor(ByteReader& reader, std::uint8_t tag) {
  const std::uint8_t found = reader.Read8();
  std::uint32_t size = 0;
  std::uint8_t byte = 0x80;
  for (int i = 0; i < 4 && (byte & 0x80) != 0; ++i) {
    byte = reader.Read8();
    size = size << 7 | (byte & 0x7FU);
  }
  const View body = reader.Read(size);
  return found == tag ? body : View();
}

// Skips the optional fields before the decoder configuration.
void SkipStreamHead(ByteReader& stream) {
  stream.Read16();  // stream ID
  const std::uint8_t flags = stream.Read8();
  if ((flags & 0x80) != 0) stream.Read16();              // ID of the stream that it depends on
  if ((flags & 0x40) != 0) stream.Read(stream.Read8());  // URL
  if ((flags & 0x20) != 0) stream.Read16();              // ID of the clock reference stream
}

std::optional<ElementaryStream> ParseElementaryStream(View body) {
  constexpr std::uint8_t kStreamTag = 3;
  constexpr std::uint8_t kDecoderTag = 4;
  constexpr std::uint8_t kSpecificInfoTag = 5;
  constexpr std::size_t kVersionAndFlags = 4;
  constexpr std::size_t kAfterObjectType = 12;
  ByteReader box(body);
  box.Read(kVersionAndFlags);
  ByteReader stream(ReadDescriptor(box, kStreamTag));
  SkipStreamHead(stream);
  ByteReader decoder(ReadDescriptor(stream, kDecoderTag));
  ElementaryStream result;
  result.object_type = decoder.Read8();
  decoder.Read(kAfterObjectType);
  if (!decoder.Good()) return std::nullopt;
  const View info = ReadDescriptor(decoder, kSpecificInfoTag);
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
  constexpr std::size_t kFixedFields = 78;
  ByteReader reader(body);
  reader.Read(kFixedFields);
  if (!reader.Good()) return;
  const View children = reader.Left();
  const View avc = FindBox(children, FourCc("avcC"));
  if (!avc.empty()) entry.avc = ParseAvcConfig(avc);
  FindElementaryStream(children, entry);
}

// Version 2 of QuickTime's sound description has the channel count in its additional fields.
int ReadVersion2(ByteReader& reader) {
  constexpr std::size_t kBeforeChannels = 12;
  constexpr std::size_t kAfterChannels = 20;
  reader.Read(kBeforeChannels);
  const View channels = reader.Read(4);
  reader.Read(kAfterChannels);
  return reader.Good() ? static_cast<int>(Read32(channels.data()) & 0xFFFF) : -1;
}

// `box_version` is the version of the stsd box. If it is not 0, version 1 of the entry is the ISO
// one, which has no additional fields.
void ParseSound(View body, std::uint8_t box_version, SampleEntry& entry) {
  constexpr std::size_t kBeforeVersion = 8;
  constexpr std::size_t kRevisionAndVendor = 6;
  constexpr std::size_t kAfterChannels = 10;
  constexpr std::size_t kVersion1Adds = 16;
  ByteReader reader(body);
  reader.Read(kBeforeVersion);
  const std::uint16_t version = reader.Read16();
  reader.Read(kRevisionAndVendor);
  int channels = reader.Read16();
  reader.Read(kAfterChannels);
  if (version == 1 && box_version == 0) reader.Read(kVersion1Adds);
  if (version == 2) channels = ReadVersion2(reader);
  if (!reader.Good()) return;
  entry.channels = channels;
  FindElementaryStream(reader.Left(), entry);
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

}  // namespace stream::isobmff
