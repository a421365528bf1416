// Writes the seeds of fuzz_isobmff into a folder: small files with every kind of box that the
// reader knows. The seeds are committed; run this again when the reader learns a new box.
#include <cstdio>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/mp4_boxes.h"

namespace {

using mp4_boxes::Bytes;
using mp4_boxes::Movie;
using mp4_boxes::Track;

Movie LargeAndLast() {
  Movie movie = mp4_boxes::SmallMovie();
  movie.index_first = false;
  movie.large_boxes = true;
  movie.version = 1;
  for (Track& track : movie.tracks) {
    track.version = 1;
    track.large_offsets = true;
  }
  return movie;
}

Movie Reordered(unsigned version) {
  Movie movie = mp4_boxes::SmallMovie();
  movie.tracks[0].composition_version = version;
  for (std::size_t i = 0; i < movie.tracks[0].samples.size(); ++i)
    movie.tracks[0].samples[i].composition =
        (version == 0 ? 0 : -40) + static_cast<int>(i % 3) * 40;
  return movie;
}

Movie CompactSizes(unsigned bits) {
  Movie movie = mp4_boxes::SmallMovie();
  for (Track& track : movie.tracks) track.size_bits = bits;
  return movie;
}

Movie QuickTime() {
  const Bytes wave = mp4_boxes::Box("wave", mp4_boxes::Esds(0x40, mp4_boxes::kAacLc48000Stereo, 4));
  Movie movie = mp4_boxes::SmallMovie();
  movie.tracks[1].entry =
      mp4_boxes::AudioSampleEntry("mp4a", 2, mp4_boxes::Join({Bytes(16), wave}));
  movie.tracks[1].entry[17] = 1;  // its version
  return movie;
}

Movie LongRuns() {
  Movie movie = mp4_boxes::SmallMovie();
  for (Track& track : movie.tracks) {
    track.samples = mp4_boxes::NumberedSamples(200, 40, 10);
    track.samples_a_chunk = 90;
  }
  for (std::size_t i = 0; i < 200; ++i)
    movie.tracks[0].samples[i].duration = static_cast<std::uint32_t>(1 + i % 2);
  return movie;
}

Movie Padded() {
  Movie movie = mp4_boxes::SmallMovie();
  movie.index_first = false;
  for (Track& track : movie.tracks)
    track.padding = {{"trak", 4}, {"mdia", 8}, {"minf", 12}, {"stbl", 3}};
  movie.in_index = Bytes(8);
  return movie;
}

Movie WithDamagedTracks() {
  Movie movie = mp4_boxes::SmallMovie();
  for (const char* const type : {"stsd", "stts", "stco"}) {
    Track track = movie.tracks[0];
    track.id = static_cast<std::uint32_t>(movie.tracks.size() + 1);
    track.samples.resize(2);
    track.replaced[type] = Bytes();
    movie.tracks.insert(movie.tracks.begin(), track);
  }
  movie.tracks[0].handler = "tmcd";
  return movie;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: make_mp4_seeds FOLDER\n");
    return 2;
  }
  const std::pair<const char*, Movie> seeds[] = {{"plain", mp4_boxes::SmallMovie()},
                                                 {"large_and_last", LargeAndLast()},
                                                 {"reordered", Reordered(0)},
                                                 {"reordered_negative", Reordered(1)},
                                                 {"sizes_of_4_bits", CompactSizes(4)},
                                                 {"sizes_of_8_bits", CompactSizes(8)},
                                                 {"sizes_of_16_bits", CompactSizes(16)},
                                                 {"quicktime", QuickTime()},
                                                 {"padded", Padded()},
                                                 {"damaged_tracks", WithDamagedTracks()},
                                                 {"long_runs", LongRuns()}};
  for (const auto& [name, movie] : seeds) {
    const std::filesystem::path path =
        std::filesystem::path(argv[1]) / (std::string(name) + ".mp4");
    mp4_boxes::WriteFile(path.string(), mp4_boxes::BuildMp4(movie).bytes);
    if (!std::filesystem::exists(path)) {
      std::fprintf(stderr, "cannot write %s\n", path.string().c_str());
      return 1;
    }
  }
  return 0;
}
