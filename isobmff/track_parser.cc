#include "isobmff/track_parser.h"

#include <span>
#include <utility>

#include "isobmff/big_endian.h"

namespace isobmff {
namespace {

constexpr std::size_t kBehindVersion = 4;  // where a full box's content begins

char SmallLetter(std::uint8_t letter) {
  return static_cast<char>(letter >= 'A' && letter <= 'Z' ? letter - 'A' + 'a' : letter);
}

// Where the fields behind the two times of mvhd, mdhd and tkhd lie.
std::optional<std::size_t> SizeOfTimes(HeaderReader& reader, const ByteRange& body) {
  const std::uint8_t* const version = reader.Peek(body, 1);
  if (version == nullptr || *version > 1) return std::nullopt;
  return *version == 1 ? 16 : 8;
}

// What the boxes of a track bring together; the first of each kind counts.
class TrackReader {
 public:
  explicit TrackReader(HeaderReader& reader) : reader_(reader) {}

  std::optional<TrackFacts> Read(const ByteRange& body) {
    if (!Children(body, &TrackReader::TrackChild) || facts_.id == 0 || !has_timing_ ||
        facts_.handler.empty() || !description_ || !facts_.tables.Complete() ||
        !ReadDescription()) {
      return std::nullopt;
    }
    return std::move(facts_);
  }

 private:
  using Child = bool (TrackReader::*)(const Box&);

  // False where a child is malformed or the children do not fill the body.
  bool Children(const ByteRange& body, Child child) {
    BoxWalk walk(reader_, body);
    while (const auto box = walk.Next()) {
      if (!(this->*child)(*box)) return false;
    }
    return walk.Filled();
  }

  bool TrackChild(const Box& box) {
    if (box.type == FourCc("tkhd") && facts_.id == 0) return ReadId(box.body);
    if (box.type == FourCc("mdia")) return Children(box.body, &TrackReader::MediaChild);
    return true;
  }

  bool MediaChild(const Box& box) {
    if (box.type == FourCc("mdhd") && !has_timing_) return ReadMediaTiming(box.body);
    if (box.type == FourCc("hdlr") && facts_.handler.empty()) return ReadHandler(box.body);
    if (box.type == FourCc("minf")) return Children(box.body, &TrackReader::InformationChild);
    return true;
  }

  bool InformationChild(const Box& box) {
    return box.type != FourCc("stbl") || Children(box.body, &TrackReader::TableChild);
  }

  bool TableChild(const Box& box) {
    SampleTableBoxes& tables = facts_.tables;
    switch (box.type) {
      case FourCc("stsd"):
        if (!description_) description_ = box.body;
        return true;
      case FourCc("stts"):
        return Keep(tables.times, ReadTableBox(reader_, box.body, 8));
      case FourCc("ctts"):
        return Keep(tables.composition, ReadTableBox(reader_, box.body, 8));
      case FourCc("stsc"):
        return KeepNumbers(tables.chunk_runs, ReadTableBox(reader_, box.body, 12));
      case FourCc("stsz"):
        return Keep(tables.sizes, ReadSizeTableBox(reader_, box.body));
      case FourCc("stz2"):
        return Keep(tables.sizes, ReadCompactSizeTableBox(reader_, box.body));
      case FourCc("stco"):
        return KeepNumbers(tables.offsets, ReadTableBox(reader_, box.body, 4));
      case FourCc("co64"):
        return KeepNumbers(tables.offsets, ReadTableBox(reader_, box.body, 8));
      case FourCc("stss"):
        return KeepNumbers(tables.sync, ReadTableBox(reader_, box.body, 4));
      default:
        return true;
    }
  }

  static bool Keep(std::optional<TableBox>& kept, const std::optional<TableBox>& found) {
    if (!kept) kept = found;
    return found.has_value();
  }

  // Of a table whose entries are never 0.
  bool KeepNumbers(std::optional<TableBox>& kept, const std::optional<TableBox>& found) {
    return Keep(kept, found) && LastEntryHasCome(reader_, *found);
  }

  bool ReadId(const ByteRange& body) {
    const auto times = SizeOfTimes(reader_, body);
    if (!times) return false;
    const std::uint8_t* const bytes = reader_.Peek(body, kBehindVersion + *times + 4);
    if (bytes == nullptr) return false;
    facts_.id = Read32(bytes + kBehindVersion + *times);
    return true;
  }

  bool ReadMediaTiming(const ByteRange& body) {
    const auto timing = ReadTiming(reader_, body);
    if (!timing) return false;
    facts_.timing = *timing;
    has_timing_ = true;
    return true;
  }

  bool ReadHandler(const ByteRange& body) {
    constexpr std::size_t kTypeAt = kBehindVersion + 4;
    const std::uint8_t* const bytes = reader_.Peek(body, kTypeAt + 4);
    if (bytes == nullptr || Read32(bytes + kTypeAt) == 0) return false;
    handler_ = 0;
    for (const std::uint8_t letter : std::span(bytes + kTypeAt, 4)) {
      facts_.handler.push_back(SmallLetter(letter));
      handler_ = handler_ << 8 | static_cast<std::uint8_t>(facts_.handler.back());
    }
    return true;
  }

  bool ReadDescription() {
    constexpr std::uint64_t kMostBytes = std::uint64_t{1} << 24;
    if (description_->Size() > kMostBytes) return false;
    Bytes bytes(static_cast<std::size_t>(description_->Size()));
    if (const std::uint8_t* const near = reader_.Peek(*description_, bytes.size()))
      bytes.assign(near, near + bytes.size());
    else if (reader_.GetFile().ReadAt(description_->begin, bytes.data(), bytes.size()) !=
             bytes.size())
      return false;
    auto entry = ParseSampleEntry(bytes, handler_);
    if (!entry) return false;
    facts_.entry = *std::move(entry);
    return true;
  }

  HeaderReader& reader_;
  TrackFacts facts_;
  bool has_timing_ = false;
  std::uint32_t handler_ = 0;
  std::optional<ByteRange> description_;  // the body of stsd
};

}  // namespace

std::optional<Timing> ReadTiming(HeaderReader& reader, const ByteRange& body) {
  const auto times = SizeOfTimes(reader, body);
  if (!times) return std::nullopt;
  const bool is_long = *times == 16;
  const std::size_t scale_at = kBehindVersion + *times;
  const std::uint8_t* const bytes = reader.Peek(body, scale_at + (is_long ? 12 : 8));
  if (bytes == nullptr) return std::nullopt;
  const std::uint8_t* const duration = bytes + scale_at + 4;
  return Timing{Read32(bytes + scale_at), is_long ? Read64(duration) : Read32(duration)};
}

std::optional<TrackFacts> ReadTrack(HeaderReader& reader, const ByteRange& body) {
  return TrackReader(reader).Read(body);
}

}  // namespace isobmff
