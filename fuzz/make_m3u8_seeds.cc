// Writes the seeds of fuzz_m3u8 into a folder: one file for each text in
// tests/support/m3u8_playlists.h. The seeds are committed; run this again when that table changes.
#include <cstdio>
#include <filesystem>
#include <fstream>

#include "tests/support/m3u8_playlists.h"

using namespace stream;

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: make_m3u8_seeds FOLDER\n");
    return 2;
  }
  const std::filesystem::path folder = argv[1];
  for (const m3u8_test::Playlist& playlist : m3u8_test::Playlists()) {
    std::ofstream file(folder / playlist.name, std::ios::binary);
    if (!(file << playlist.text).flush()) {
      std::fprintf(stderr, "cannot write %s\n", (folder / playlist.name).string().c_str());
      return 1;
    }
  }
  return 0;
}
