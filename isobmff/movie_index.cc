#include "isobmff/movie_index.h"

#include <algorithm>
#include <utility>

#include "isobmff/track_parser.h"

namespace stream::isobmff {
namespace {

constexpr std::uint64_t kHeadSize = 4096;
constexpr std::uint64_t kTailSize = 1024;

// Returns the first moov box of the file. It may be truncated.
std::optional<Box> FindMovie(HeaderReader& reader) {
  constexpr int kMaxBoxes = 65536;  // before the moov box
  ByteRange left{0, reader.FileSize()};
  for (int i = 0; i < kMaxBoxes; ++i) {
    const auto box = ReadBox(reader, left, true);
    if (!box || box->type == FourCc("moov")) return box;
    if (box->whole.end >= left.end) break;
    left.begin = box->whole.end;
  }
  return std::nullopt;
}

// Returns whether all children of the moov box are there. Zeros after the last child that may stand
// for bytes not received yet count as padding only if no track fits there.
bool IsWhole(BoxWalk& walk, const UnreceivedTail& tail) {
  constexpr std::uint64_t kSmallerThanATrack = 128;
  const RowEnd end = walk.End();
  if (end != RowEnd::kZeros) return end == RowEnd::kNothing;
  return !tail.Reaches(walk.Left().end) || walk.Left().Size() <= kSmallerThanATrack;
}

bool HasBytesAt(const platform::RandomAccessFile& file, std::uint64_t offset,
                const Bytes& expected) {
  std::uint8_t found[kHeadSize];
  return file.ReadAt(offset, found, expected.size()) == expected.size() &&
         std::equal(expected.begin(), expected.end(), found);
}

bool Load(const platform::RandomAccessFile& file, std::uint64_t offset, std::uint64_t size,
          Bytes& bytes) {
  bytes.resize(static_cast<std::size_t>(size));
  return file.ReadAt(offset, bytes.data(), bytes.size()) == bytes.size();
}

}  // namespace

std::shared_ptr<const MovieIndex> MovieIndex::Read(const platform::RandomAccessFile& file) {
  HeaderReader reader(file, file.OpenedSize());
  const auto movie = FindMovie(reader);
  if (!movie || movie->whole.end > reader.FileSize()) return nullptr;
  auto index = std::make_shared<MovieIndex>();
  if (!index->ReadMovie(reader, *movie) || !index->Remember(file, *movie)) return nullptr;
  return index;
}

bool MovieIndex::IsStoredIn(const platform::RandomAccessFile& file) const {
  const std::uint64_t size = file.OpenedSize();
  return (is_open_ ? location_.end == size : location_.end <= size) &&
         HasBytesAt(file, location_.begin, head_) &&
         HasBytesAt(file, location_.end - tail_.size(), tail_);
}

bool MovieIndex::ReadMovie(HeaderReader& reader, const Box& movie) {
  const UnreceivedTail tail(reader, movie.whole);
  bool has_header = false;
  BoxWalk walk(reader, movie.body);
  while (const auto box = walk.Next()) {
    if (box->type == FourCc("mvhd") && !has_header) {
      const auto timing = ReadTiming(reader, box->body);
      if (!timing) return false;
      timing_ = *timing;
      has_header = true;
    } else if (box->type == FourCc("trak")) {
      if (!AddTrack(reader, tail, *box)) return false;
    }
  }
  return has_header && !reader.HadTooManyBoxes() && IsWhole(walk, tail);
}

// Returns false if the index is not complete or has too many tracks. A damaged track does not hide
// the others.
bool MovieIndex::AddTrack(HeaderReader& reader, const UnreceivedTail& tail, const Box& box) {
  constexpr std::size_t kMaxTracks = 1024;
  TrackFacts facts;
  const TrackState state = ReadTrack(reader, tail, box.body, facts);
  if (state == TrackState::kNotReceived || tracks_.size() == kMaxTracks) return false;
  if (state == TrackState::kUsable) tracks_.emplace_back(std::move(facts));
  return true;
}

bool MovieIndex::Remember(const platform::RandomAccessFile& file, const Box& movie) {
  location_ = movie.whole;
  is_open_ = movie.is_open;
  const std::uint64_t tail = std::min(kTailSize, location_.Size());
  return Load(file, location_.begin, std::min(kHeadSize, location_.Size()), head_) &&
         Load(file, location_.end - tail, tail, tail_);
}

}  // namespace stream::isobmff
