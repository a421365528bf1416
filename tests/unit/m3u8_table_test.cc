// Parses every playlist of the table, and checks the fuzzer's seeds, which are generated from the
// same table.
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string>

#include "hls/playlist/m3u8_playlist.h"
#include "tests/support/m3u8_playlists.h"

namespace stream {
namespace {

using m3u8_test::kUntouchedSequence;
using m3u8_test::Playlist;

// Standard libraries print these values differently.
std::string Number(float number) {
  if (std::isnan(number)) return "nan";
  if (std::isinf(number)) return number < 0 ? "-inf" : "inf";
  std::ostringstream text;
  text << number;
  return text.str();
}

std::string Described(const M3u8Header& header, std::int64_t sequence) {
  std::string line;
  const auto add = [&line](const std::string& word) { line += (line.empty() ? "" : " ") + word; };
  if (header.hasHeader) add("header");
  if (!header.isLive) add("ended");
  if (header.allowCache) add("cache");
  if (header.version != 0) add("version=" + std::to_string(header.version));
  if (header.targetDuration != 0) add("target=" + std::to_string(header.targetDuration));
  if (header.totalDuration != 0) add("total=" + Number(header.totalDuration));
  if (sequence != kUntouchedSequence) add("sequence=" + std::to_string(sequence));
  return line + "\n";
}

std::string Described(std::int32_t key, const M3u8Entry& entry) {
  std::string line = std::to_string(key) + ": " + entry.uri + " " + Number(entry.duration);
  if (entry.programId != 0) line += " program=" + std::to_string(entry.programId);
  if (entry.bandwidth != 0) line += " bandwidth=" + std::to_string(entry.bandwidth);
  if (entry.width != 0 || entry.height != 0) {
    line += " " + std::to_string(entry.width) + "x" + std::to_string(entry.height);
  }
  return line + "\n";
}

class M3u8TableTest : public testing::TestWithParam<Playlist> {};

TEST_P(M3u8TableTest, IsParsedAsExpected) {
  M3u8Header header;
  std::int64_t sequence = kUntouchedSequence;
  M3u8Table entries;
  const bool result = ParseM3u8(header, m3u8_test::kBase, GetParam().text, sequence, entries);
  std::string found = Described(header, sequence);
  for (const auto& [key, entry] : entries) found += Described(key, entry);
  EXPECT_EQ(found, GetParam().expected);
  EXPECT_EQ(result, header.hasHeader);
}

INSTANTIATE_TEST_SUITE_P(Playlists, M3u8TableTest, testing::ValuesIn(m3u8_test::Playlists()),
                         [](const auto& playlist) { return playlist.param.name; });

std::string FileText(const std::filesystem::path& path) {
  std::ostringstream text;
  text << std::ifstream(path, std::ios::binary).rdbuf();
  return text.str();
}

// make_m3u8_seeds generates them.
TEST(M3u8SeedsTest, FuzzerSeedsEqualTheTextsOfTheTable) {
  std::map<std::string, std::string> texts;
  for (const Playlist& playlist : m3u8_test::Playlists()) texts[playlist.name] = playlist.text;
  std::map<std::string, std::string> seeds;
  for (const auto& file : std::filesystem::directory_iterator(M3U8_SEEDS)) {
    seeds[file.path().filename().string()] = FileText(file.path());
  }
  EXPECT_EQ(seeds, texts);
}

}  // namespace
}  // namespace stream
