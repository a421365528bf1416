#include "isobmff/track_parser.h"

#include <span>
#include <utility>

#include "isobmff/big_endian.h"

namespace stream::isobmff {
namespace {

constexpr std::size_t kAfterVersion = 4;  // where the content of a full box begins

char SmallLetter(std::uint8_t letter) {
  return static_cast<char>(letter >= 'A' && letter <= 'Z' ? letter - 'A' + 'a' : letter);
}

// The size of the two times in mvhd, mdhd and tkhd, which precede the other fields. Returns nullopt
// for an unknown version.
std::optional<std::size_t> SizeOfTimes(HeaderReader& reader, const ByteRange& body) {
  const std::uint8_t* const version = reader.Peek(body, 1);
  if (version == nullptr || *version > 1) return std::nullopt;
  return *version == 1 ? 16 : 8;
}

// Collects the content of a track's boxes. The first box of each kind counts.
class TrackReader {
 public:
  TrackReader(HeaderReader& reader, const UnreceivedTail& tail) : reader_(reader), tail_(tail) {}

  TrackState Read(const ByteRange& body, TrackFacts& facts) {
    ReadChildren(body, &TrackReader::TrackChild);
    ReadDescription();
    RequireEntries();
    // Tracks of other kinds are not played, so nothing waits for the rest of them.
    const bool is_played =
        handler_ == 0 || handler_ == FourCc("vide") || handler_ == FourCc("soun");
    if (is_incomplete_ && is_played) return TrackState::kNotReceived;
    if (is_incomplete_ || is_damaged_ || !HasAll()) return TrackState::kDamaged;
    facts = std::move(facts_);
    return TrackState::kUsable;
  }

 private:
  using Child = void (TrackReader::*)(const Box&);

  bool HasAll() const {
    return facts_.id != 0 && has_timing_ && handler_ != 0 && has_entry_ && facts_.tables.Complete();
  }

  // A malformed child ends the walk. Read decides whether the children before it are sufficient.
  void ReadChildren(const ByteRange& body, Child child) {
    // Even a table with one entry is larger, so a shorter run of zeros is padding.
    constexpr std::uint64_t kSmallestTable = 20;
    BoxWalk walk(reader_, body);
    while (const auto box = walk.Next()) (this->*child)(*box);
    const RowEnd end = walk.End();
    const bool may_hold_a_table = end == RowEnd::kNotReceived ||
                                  (end == RowEnd::kZeros && walk.Left().Size() >= kSmallestTable);
    is_incomplete_ |= may_hold_a_table && tail_.Reaches(body.end);
  }

  void TrackChild(const Box& box) {
    if (box.type == FourCc("tkhd") && facts_.id == 0) ReadId(box.body);
    if (box.type == FourCc("mdia")) ReadChildren(box.body, &TrackReader::MediaChild);
  }

  void MediaChild(const Box& box) {
    if (box.type == FourCc("mdhd") && !has_timing_) ReadMediaTiming(box.body);
    if (box.type == FourCc("hdlr") && handler_ == 0) ReadHandler(box.body);
    if (box.type == FourCc("minf")) ReadChildren(box.body, &TrackReader::InformationChild);
  }

  void InformationChild(const Box& box) {
    if (box.type == FourCc("stbl")) ReadChildren(box.body, &TrackReader::TableChild);
  }

  void TableChild(const Box& box) {
    SampleTableBoxes& tables = facts_.tables;
    switch (box.type) {
      case FourCc("stsd"):
        if (!description_) description_ = box.body;
        break;
      case FourCc("stts"):
        Keep(tables.times, ReadTableBox(reader_, box.body, 8));
        break;
      case FourCc("ctts"):
        Keep(tables.composition, ReadTableBox(reader_, box.body, 8));
        break;
      case FourCc("stsc"):
        KeepNumbers(tables.chunk_runs, ReadTableBox(reader_, box.body, 12));
        break;
      case FourCc("stsz"):
        Keep(tables.sizes, ReadSizeTableBox(reader_, box.body));
        break;
      case FourCc("stz2"):
        Keep(tables.sizes, ReadCompactSizeTableBox(reader_, box.body));
        break;
      case FourCc("stco"):
        KeepNumbers(tables.offsets, ReadTableBox(reader_, box.body, 4));
        break;
      case FourCc("co64"):
        KeepNumbers(tables.offsets, ReadTableBox(reader_, box.body, 8));
        break;
      case FourCc("stss"):
        KeepNumbers(tables.sync, ReadTableBox(reader_, box.body, 4));
        break;
      default:
        break;
    }
  }

  // If the bytes before `end` are not right, the track is incomplete where they may not have been
  // received yet, and damaged otherwise.
  void Require(bool is_right, std::uint64_t end) {
    if (!is_right) (tail_.Reaches(end) ? is_incomplete_ : is_damaged_) = true;
  }

  // A table that claims more than its box holds is damaged, not incomplete.
  void Keep(std::optional<TableBox>& kept, const std::optional<TableBox>& found) {
    if (!kept) kept = found;
    is_damaged_ |= !found.has_value();
  }

  // For a table whose entries are never 0.
  void KeepNumbers(std::optional<TableBox>& kept, const std::optional<TableBox>& found) {
    Keep(kept, found);
    if (found) Require(LastEntryIsReceived(reader_, *found), found->entries.end);
  }

  // If there are samples, the other tables must have entries to locate them.
  void RequireEntries() {
    const SampleTableBoxes& tables = facts_.tables;
    if (!tables.sizes || tables.sizes->count == 0) return;
    for (const auto& table : {tables.times, tables.chunk_runs, tables.offsets}) {
      if (table) Require(table->count != 0, table->entries.begin);
    }
  }

  void ReadId(const ByteRange& body) {
    const auto times = SizeOfTimes(reader_, body);
    const std::size_t id_at = kAfterVersion + times.value_or(0);
    const std::uint8_t* const bytes = times ? reader_.Peek(body, id_at + 4) : nullptr;
    if (bytes != nullptr) facts_.id = Read32(bytes + id_at);
    Require(facts_.id != 0, body.begin + id_at + 4);
  }

  void ReadMediaTiming(const ByteRange& body) {
    const auto timing = ReadTiming(reader_, body);
    has_timing_ = timing.has_value();
    is_damaged_ |= !has_timing_;
    if (timing) facts_.timing = *timing;
  }

  void ReadHandler(const ByteRange& body) {
    constexpr std::size_t kTypeAt = kAfterVersion + 4;
    const std::uint8_t* const bytes = reader_.Peek(body, kTypeAt + 4);
    const bool is_there = bytes != nullptr && bytes[kTypeAt + 3] != 0;  // else it may be cut off
    Require(is_there, body.begin + kTypeAt + 4);
    if (!is_there) return;
    for (const std::uint8_t letter : std::span(bytes + kTypeAt, 4)) {
      facts_.handler.push_back(SmallLetter(letter));
      handler_ = handler_ << 8 | static_cast<std::uint8_t>(facts_.handler.back());
    }
  }

  void ReadDescription() {
    constexpr std::uint64_t kMaxBytes = std::uint64_t{1} << 24;
    if (!description_ || description_->Size() > kMaxBytes) return;
    Bytes bytes(static_cast<std::size_t>(description_->Size()));
    if (const std::uint8_t* const near = reader_.Peek(*description_, bytes.size())) {
      bytes.assign(near, near + bytes.size());
    } else if (reader_.GetFile().ReadAt(description_->begin, bytes.data(), bytes.size()) !=
               bytes.size()) {
      is_incomplete_ = true;
      return;
    }
    auto entry = ParseSampleEntry(bytes, handler_);
    has_entry_ = entry.has_value();
    Require(has_entry_, description_->end);
    if (entry) facts_.entry = *std::move(entry);
  }

  HeaderReader& reader_;
  const UnreceivedTail& tail_;
  TrackFacts facts_;
  bool has_timing_ = false;
  bool has_entry_ = false;
  std::uint32_t handler_ = 0;             // the handler type, in lower case
  std::optional<ByteRange> description_;  // the body of stsd
  bool is_damaged_ = false;
  bool is_incomplete_ = false;
};

}  // namespace

std::optional<Timing> ReadTiming(HeaderReader& reader, const ByteRange& body) {
  const auto times = SizeOfTimes(reader, body);
  if (!times) return std::nullopt;
  const bool is_long = *times == 16;
  const std::size_t scale_at = kAfterVersion + *times;
  const std::uint8_t* const bytes = reader.Peek(body, scale_at + (is_long ? 12 : 8));
  if (bytes == nullptr) return std::nullopt;
  const std::uint8_t* const duration = bytes + scale_at + 4;
  return Timing{Read32(bytes + scale_at), is_long ? Read64(duration) : Read32(duration)};
}

TrackState ReadTrack(HeaderReader& reader, const UnreceivedTail& tail, const ByteRange& body,
                     TrackFacts& facts) {
  return TrackReader(reader, tail).Read(body, facts);
}

}  // namespace stream::isobmff
