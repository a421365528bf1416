// MP4 files for tests, written box by box: a small file that plays, or one that differs from it in
// the detail under test.
//
// BuildMp4 writes the samples of all tracks, one chunk of each track in turn, and returns the file
// offsets of the samples and of the index. A track's `replaced` boxes replace its own; an empty one
// omits the box.
#ifndef TESTS_SUPPORT_MP4_BOXES_H_
#define TESTS_SUPPORT_MP4_BOXES_H_

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <initializer_list>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace mp4_boxes {

using Bytes = std::vector<std::uint8_t>;

// --- Pieces ---

inline Bytes Number(std::uint64_t value, int bytes) {
  Bytes out;
  for (int shift = (bytes - 1) * 8; shift >= 0; shift -= 8)
    out.push_back(static_cast<std::uint8_t>(value >> shift));
  return out;
}
inline Bytes U8(std::uint64_t value) { return Number(value, 1); }
inline Bytes U16(std::uint64_t value) { return Number(value, 2); }
inline Bytes U32(std::uint64_t value) { return Number(value, 4); }
inline Bytes U64(std::uint64_t value) { return Number(value, 8); }
inline Bytes Zeros(std::size_t count) { return Bytes(count); }
inline Bytes Text(const std::string& text) { return {text.begin(), text.end()}; }

inline void Append(Bytes& to, const Bytes& more) { to.insert(to.end(), more.begin(), more.end()); }

inline Bytes Join(std::initializer_list<Bytes> parts) {
  Bytes out;
  for (const Bytes& part : parts) Append(out, part);
  return out;
}

inline Bytes Box(const std::string& type, const Bytes& body) {
  return Join({U32(body.size() + 8), Text(type), body});
}

// The same with a 64-bit size.
inline Bytes LargeBox(const std::string& type, const Bytes& body) {
  return Join({U32(1), Text(type), U64(body.size() + 16), body});
}

inline Bytes FullBox(const std::string& type, unsigned version, const Bytes& body) {
  return Box(type, Join({U8(version), Zeros(3), body}));
}

// A full box with an entry count and its entries.
inline Bytes Table(const std::string& type, const std::vector<Bytes>& entries,
                   unsigned version = 0) {
  Bytes body = U32(entries.size());
  for (const Bytes& entry : entries) Append(body, entry);
  return FullBox(type, version, body);
}

inline void WriteFile(const std::string& path, const Bytes& bytes) {
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  file.write(reinterpret_cast<const char*>(bytes.data()),
             static_cast<std::streamsize>(bytes.size()));
}

// --- Sample entries ---

inline Bytes AvcC(const std::vector<Bytes>& sequence, const std::vector<Bytes>& picture) {
  Bytes body = {1, 0x64, 0, 0x1E, 0xFF, static_cast<std::uint8_t>(0xE0 | sequence.size())};
  for (const Bytes& set : sequence) Append(body, Join({U16(set.size()), set}));
  body.push_back(static_cast<std::uint8_t>(picture.size()));
  for (const Bytes& set : picture) Append(body, Join({U16(set.size()), set}));
  return Box("avcC", body);
}

inline Bytes VideoEntry(const std::string& name, const Bytes& children, unsigned width = 640,
                        unsigned height = 360) {
  return Box(name,
             Join({Zeros(6), U16(1), Zeros(16), U16(width), U16(height), Zeros(50), children}));
}

// A descriptor whose size field has `size_bytes` bytes.
inline Bytes Descriptor(unsigned tag, const Bytes& body, int size_bytes = 1) {
  Bytes out = U8(tag);
  for (int i = size_bytes - 1; i >= 0; --i)
    out.push_back(static_cast<std::uint8_t>((body.size() >> (7 * i) & 0x7F) | (i == 0 ? 0 : 0x80)));
  Append(out, body);
  return out;
}

inline Bytes Esds(unsigned object_type, const Bytes& config, int size_bytes = 1) {
  Bytes decoder = Join({U8(object_type), U8(0x15), Zeros(11)});
  if (!config.empty()) Append(decoder, Descriptor(5, config, size_bytes));
  const Bytes stream =
      Join({U16(1), U8(0), Descriptor(4, decoder, size_bytes), Descriptor(6, U8(2), size_bytes)});
  return FullBox("esds", 0, Descriptor(3, stream, size_bytes));
}

inline Bytes AudioSampleEntry(const std::string& name, unsigned channels, const Bytes& children,
                              unsigned rate = 48000) {
  return Box(name, Join({Zeros(6), U16(1), Zeros(8), U16(channels), U16(16), Zeros(4), U16(rate),
                         U16(0), children}));
}

inline const Bytes kSps = {0x67, 0x64, 0x00, 0x1E, 0xAC, 0xD9, 0x40};
inline const Bytes kPps = {0x68, 0xEB, 0xE3, 0xCB};
inline const Bytes kAacLc48000Stereo = {0x11, 0x90};

inline Bytes AvcEntry() { return VideoEntry("avc1", AvcC({kSps}, {kPps})); }
inline Bytes AacEntry() { return AudioSampleEntry("mp4a", 2, Esds(0x40, kAacLc48000Stereo)); }

// --- Files ---

struct Sample {
  Bytes data;
  std::uint32_t duration = 1;
  std::int32_t composition = 0;
  bool sync = true;
};

struct Track {
  std::uint32_t id = 1;
  std::string handler = "vide";
  std::uint32_t time_scale = 1000;
  Bytes entry = AvcEntry();
  std::vector<Sample> samples;
  std::size_t samples_a_chunk = 1;
  unsigned version = 0;        // of tkhd and mdhd
  unsigned size_bits = 32;     // 32: stsz box; 4, 8 or 16: stz2 box
  bool large_offsets = false;  // co64 instead of stco
  unsigned composition_version =
      0;       // of ctts, which is written if any sample has a composition offset
  Bytes more;  // boxes after tkhd
  std::map<std::string, Bytes> replaced;  // boxes of the sample table to replace, by type
  std::map<std::string, std::size_t>
      padding;  // zeros at the end of trak, mdia, minf or stbl, by type
};

struct Movie {
  std::uint32_t time_scale = 1000;
  std::uint64_t duration = 0;
  unsigned version = 0;  // of mvhd
  bool index_first = true;
  bool large_boxes = false;  // moov and mdat have 64-bit sizes
  Bytes before;              // boxes before moov and mdat
  Bytes in_index;            // more boxes at the end of moov
  std::vector<Track> tracks;
};

struct File {
  Bytes bytes;
  std::size_t index_begin = 0;  // the moov box
  std::size_t index_end = 0;
  std::vector<std::vector<std::uint64_t>> offsets;  // of each track's samples
};

namespace detail {

inline Bytes Times(unsigned version) { return Zeros(version == 1 ? 16 : 8); }
inline Bytes Length(unsigned version, std::uint64_t value) {
  return Number(value, version == 1 ? 8 : 4);
}

// Run-length encodes a value of the samples.
template <typename Value>
Bytes RunBox(const std::string& type, const std::vector<Sample>& samples, unsigned version,
             Value value) {
  std::vector<std::pair<std::uint32_t, std::uint32_t>> runs;
  for (const Sample& sample : samples) {
    const std::uint32_t its = value(sample);
    if (runs.empty() || runs.back().second != its) runs.emplace_back(0, its);
    ++runs.back().first;
  }
  std::vector<Bytes> entries;
  entries.reserve(runs.size());
  for (const auto& [count, its] : runs) entries.push_back(Join({U32(count), U32(its)}));
  return Table(type, entries, version);
}

inline Bytes SizeBox(const Track& track) {
  if (track.size_bits == 32) {
    Bytes body = Join({U32(0), U32(track.samples.size())});
    for (const Sample& sample : track.samples) Append(body, U32(sample.data.size()));
    return FullBox("stsz", 0, body);
  }
  Bytes body = Join({Zeros(3), U8(track.size_bits), U32(track.samples.size())});
  bool half = false;
  for (const Sample& sample : track.samples) {
    if (track.size_bits != 4) {
      Append(body, Number(sample.data.size(), static_cast<int>(track.size_bits / 8)));
    } else if (half) {
      body.back() = static_cast<std::uint8_t>(body.back() | sample.data.size());
    } else {
      body.push_back(static_cast<std::uint8_t>(sample.data.size() << 4));
    }
    half = !half;
  }
  return FullBox("stz2", 0, body);
}

inline std::size_t ChunkCount(const Track& track) {
  return (track.samples.size() + track.samples_a_chunk - 1) / track.samples_a_chunk;
}

inline Bytes ChunkRunBox(const Track& track) {
  std::vector<Bytes> entries;
  const std::size_t rest = track.samples.size() % track.samples_a_chunk;
  const std::size_t chunks = ChunkCount(track);
  if (chunks > (rest == 0 ? 0U : 1U))
    entries.push_back(Join({U32(1), U32(track.samples_a_chunk), U32(1)}));
  if (rest != 0) entries.push_back(Join({U32(chunks), U32(rest), U32(1)}));
  return Table("stsc", entries);
}

inline Bytes OffsetBox(const Track& track, const std::vector<std::uint64_t>& offsets) {
  std::vector<Bytes> entries;
  for (std::size_t i = 0; i < offsets.size(); i += track.samples_a_chunk)
    entries.push_back(track.large_offsets ? U64(offsets[i]) : U32(offsets[i]));
  return Table(track.large_offsets ? "co64" : "stco", entries);
}

inline Bytes SyncBox(const Track& track) {
  std::vector<Bytes> entries;
  for (std::size_t i = 0; i < track.samples.size(); ++i) {
    if (track.samples[i].sync) entries.push_back(U32(i + 1));
  }
  return entries.size() == track.samples.size() ? Bytes() : Table("stss", entries);
}

inline Bytes PaddedBox(const Track& track, const std::string& type, const Bytes& body) {
  const auto padding = track.padding.find(type);
  return Box(type, Join({body, Zeros(padding == track.padding.end() ? 0 : padding->second)}));
}

inline Bytes SampleTableBox(const Track& track, const std::vector<std::uint64_t>& offsets) {
  const bool reordered = std::any_of(track.samples.begin(), track.samples.end(),
                                     [](const Sample& s) { return s.composition != 0; });
  std::vector<std::pair<std::string, Bytes>> boxes = {
      {"stsd", Table("stsd", {track.entry})},
      {"stts", RunBox("stts", track.samples, 0, [](const Sample& s) { return s.duration; })},
      {"stss", SyncBox(track)},
      {"ctts",
       reordered ? RunBox("ctts", track.samples, track.composition_version,
                          [](const Sample& s) { return static_cast<std::uint32_t>(s.composition); })
                 : Bytes()},
      {"stsc", ChunkRunBox(track)},
      {"stsz", SizeBox(track)},
      {"stco", OffsetBox(track, offsets)}};
  Bytes body;
  for (auto& [type, box] : boxes) {
    const auto other = track.replaced.find(type);
    Append(body, other == track.replaced.end() ? box : other->second);
  }
  return PaddedBox(track, "stbl", body);
}

// Declares that the media data is in this file (ISO/IEC 14496-12, 8.7.1). The bundled reader
// ignores it, but libmp4v2 reads no sample of a track without it.
inline Bytes DataInformationBox() {
  constexpr unsigned kInThisFile = 1;
  const Bytes url = Box("url ", Join({U8(0), Zeros(2), U8(kInThisFile)}));
  return Box("dinf", Table("dref", {url}));
}

inline Bytes TrackBox(const Track& track, const std::vector<std::uint64_t>& offsets) {
  std::uint64_t duration = 0;
  for (const Sample& sample : track.samples) duration += sample.duration;
  const unsigned version = track.version;
  const Bytes tkhd = FullBox(
      "tkhd", version,
      Join({Times(version), U32(track.id), Zeros(4), Length(version, duration), Zeros(60)}));
  const Bytes mdhd =
      FullBox("mdhd", version,
              Join({Times(version), U32(track.time_scale), Length(version, duration), Zeros(4)}));
  const Bytes hdlr = FullBox("hdlr", 0, Join({Zeros(4), Text(track.handler), Zeros(13)}));
  const Bytes minf =
      PaddedBox(track, "minf", Join({DataInformationBox(), SampleTableBox(track, offsets)}));
  const Bytes mdia = PaddedBox(track, "mdia", Join({mdhd, hdlr, minf}));
  return PaddedBox(track, "trak", Join({tkhd, track.more, mdia}));
}

inline Bytes IndexBox(const Movie& movie, const std::vector<std::vector<std::uint64_t>>& offsets) {
  const unsigned version = movie.version;
  Bytes body = FullBox(
      "mvhd", version,
      Join({Times(version), U32(movie.time_scale), Length(version, movie.duration), Zeros(80)}));
  for (std::size_t i = 0; i < movie.tracks.size(); ++i)
    Append(body, TrackBox(movie.tracks[i], offsets[i]));
  Append(body, movie.in_index);
  return movie.large_boxes ? LargeBox("moov", body) : Box("moov", body);
}

// The samples of all tracks, one chunk of each in turn. `offsets` receives their offsets in the
// returned data.
inline Bytes InterleaveSamples(const std::vector<Track>& tracks,
                               std::vector<std::vector<std::uint64_t>>& offsets) {
  Bytes data;
  offsets.assign(tracks.size(), {});
  for (bool more = true; more;) {
    more = false;
    for (std::size_t t = 0; t < tracks.size(); ++t) {
      const auto& samples = tracks[t].samples;
      for (std::size_t i = 0; i < tracks[t].samples_a_chunk && offsets[t].size() < samples.size();
           ++i) {
        const Bytes& sample = samples[offsets[t].size()].data;
        offsets[t].push_back(data.size());
        Append(data, sample);
        more = true;
      }
    }
  }
  return data;
}

}  // namespace detail

inline File BuildMp4(const Movie& movie) {
  File file;
  const Bytes data = detail::InterleaveSamples(movie.tracks, file.offsets);
  file.bytes = Join({Box("ftyp", Join({Text("isom"), U32(512), Text("isom")})), movie.before});
  const std::size_t index_size = detail::IndexBox(movie, file.offsets).size();
  const std::size_t data_at =
      file.bytes.size() + (movie.large_boxes ? 16 : 8) + (movie.index_first ? index_size : 0);
  for (auto& of_track : file.offsets) {
    for (std::uint64_t& offset : of_track) offset += data_at;
  }
  const Bytes index = detail::IndexBox(movie, file.offsets);
  const Bytes media = movie.large_boxes ? LargeBox("mdat", data) : Box("mdat", data);
  file.index_begin = file.bytes.size() + (movie.index_first ? 0 : media.size());
  file.index_end = file.index_begin + index.size();
  Append(file.bytes, movie.index_first ? index : media);
  Append(file.bytes, movie.index_first ? media : index);
  return file;
}

// The same with an index whose size field is 0: the box extends to the end of the file.
inline File BuildWithOpenIndex(Movie movie) {
  movie.index_first = false;
  File file = BuildMp4(movie);
  std::fill_n(file.bytes.begin() + static_cast<std::ptrdiff_t>(file.index_begin), 4,
              std::uint8_t{0});
  return file;
}

// The file offset of a track's trak box; tracks are counted from 0.
inline std::size_t TrackBegin(const File& file, std::size_t track) {
  const Bytes type = Text("trak");
  auto found = file.bytes.begin() + static_cast<std::ptrdiff_t>(file.index_begin);
  for (std::size_t i = 0; i <= track; ++i)
    found = std::search(found + 1, file.bytes.end(), type.begin(), type.end());
  return static_cast<std::size_t>(found - file.bytes.begin()) - 4;
}

// --- Movies ---

// Samples of varying sizes, each filled with its number.
inline std::vector<Sample> NumberedSamples(std::size_t count, std::uint32_t duration,
                                           std::size_t key_every) {
  std::vector<Sample> samples;
  for (std::size_t i = 0; i < count; ++i) {
    Bytes data(1 + i * 7 % 13, static_cast<std::uint8_t>(i));
    samples.push_back({std::move(data), duration, 0, i % key_every == 0});
  }
  return samples;
}

// An H.264 track in chunks of 3 samples and an AAC track in chunks of 2.
inline Movie SmallMovie() {
  Track video;
  video.time_scale = 12800;
  video.samples = NumberedSamples(10, 512, 5);
  video.samples_a_chunk = 3;
  Track audio;
  audio.id = 2;
  audio.handler = "soun";
  audio.entry = AacEntry();
  audio.time_scale = 48000;
  audio.samples = NumberedSamples(15, 1024, 1);
  audio.samples_a_chunk = 2;
  Movie movie;
  movie.duration = 400;
  movie.tracks = {video, audio};
  return movie;
}

}  // namespace mp4_boxes

#endif  // TESTS_SUPPORT_MP4_BOXES_H_
