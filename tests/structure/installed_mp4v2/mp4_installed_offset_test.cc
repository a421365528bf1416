// The adapter that finds the file offset of a sample with an installed libmp4v2. The properties of
// the sample tables are supplied by the test.
#include "mp4/mp4_installed_offset.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

using namespace stream;

namespace {

struct FakeLibrary {
  std::map<std::string, std::uint64_t> properties;
  std::map<std::string, int> queries;
};

FakeLibrary g_library;
int g_first = 0;
int g_second = 0;
void* const kFile = &g_first;
void* const kOtherFile = &g_second;

void Set(const std::string& name, std::uint64_t value) {
  g_library.properties["mdia.minf.stbl." + name] = value;
}

void SetEntries(const std::string& table, const std::string& field,
                const std::vector<std::uint64_t>& values) {
  for (std::size_t i = 0; i < values.size(); ++i)
    Set(std::string(table).append(".entries[").append(std::to_string(i)).append("].").append(field),
        values[i]);
}

void SetRuns(const std::vector<std::uint64_t>& chunks, const std::vector<std::uint64_t>& samples) {
  Set("stsc.entryCount", chunks.size());
  SetEntries("stsc", "firstChunk", chunks);
  SetEntries("stsc", "samplesPerChunk", samples);
}

void SetOffsets(const std::string& table, const std::vector<std::uint64_t>& offsets) {
  Set(table + ".entryCount", offsets.size());
  SetEntries(table, "chunkOffset", offsets);
}

void SetSizes(const std::string& table, const std::vector<std::uint64_t>& sizes) {
  if (table == "stsz") Set("stsz.sampleSize", 0);
  Set(table + ".sampleCount", sizes.size());
  SetEntries(table, "entrySize", sizes);
}

// Two chunks of two samples each, then one of three.
void SetSmallTrack() {
  SetRuns({1, 3}, {2, 3});
  SetOffsets("stco", {100, 500, 900});
  SetSizes("stsz", {1, 2, 3, 4, 5, 6, 7});
}

std::vector<std::uint64_t> OffsetsOf(std::initializer_list<MP4SampleId> samples) {
  std::vector<std::uint64_t> offsets;
  for (const MP4SampleId sample : samples)
    offsets.push_back(MP4GetSampleFileOffset(kFile, 1, sample));
  return offsets;
}

using Offsets = std::vector<std::uint64_t>;

class Mp4InstalledOffsetTest : public testing::Test {
 protected:
  Mp4InstalledOffsetTest() {
    g_library = {};
    ForgetSampleFileOffsets(kFile);
    ForgetSampleFileOffsets(kOtherFile);
  }
};

TEST_F(Mp4InstalledOffsetTest, SamplesInOrder) {
  SetSmallTrack();
  EXPECT_EQ(OffsetsOf({1, 2, 3, 4, 5, 6, 7}), Offsets({100, 101, 500, 503, 900, 905, 911}));
}

TEST_F(Mp4InstalledOffsetTest, SamplesInAnyOrder) {
  SetSmallTrack();
  EXPECT_EQ(OffsetsOf({7, 1, 6, 4, 4, 2, 5, 3}), Offsets({911, 100, 905, 503, 503, 101, 900, 500}));
}

TEST_F(Mp4InstalledOffsetTest, LargeOffsetsAndCompactSizes) {
  SetRuns({1}, {2});
  SetOffsets("co64", {std::uint64_t{5} << 32});
  SetSizes("stz2", {9, 9});
  EXPECT_EQ(OffsetsOf({1, 2}), Offsets({std::uint64_t{5} << 32, (std::uint64_t{5} << 32) + 9}));
}

TEST_F(Mp4InstalledOffsetTest, SamplesOfOneSize) {
  SetRuns({1}, {1000});
  SetOffsets("stco", {50});
  Set("stsz.sampleSize", 4);
  Set("stsz.sampleCount", 1000);
  EXPECT_EQ(OffsetsOf({1, 1000}), Offsets({50, 50 + 4 * 999}));
}

// Iterating over them would take minutes.
TEST_F(Mp4InstalledOffsetTest, ManySamplesOfOneSizeInAChunkAreNotIteratedOver) {
  constexpr std::uint32_t kSamples = 4'000'000'000;
  SetRuns({1}, {kSamples});
  SetOffsets("stco", {50});
  Set("stsz.sampleSize", 4);
  Set("stsz.sampleCount", kSamples);
  EXPECT_EQ(OffsetsOf({1, kSamples, 3}), Offsets({50, 50 + std::uint64_t{4} * (kSamples - 1), 58}));
}

TEST_F(Mp4InstalledOffsetTest, MissingSamplesHaveNoOffset) {
  SetSmallTrack();
  EXPECT_EQ(OffsetsOf({0, 8, 0xFFFFFFFF}), Offsets({UINT64_MAX, UINT64_MAX, UINT64_MAX}));
  SetOffsets("stco", {100, 500});
  ForgetSampleFileOffsets(kFile);
  EXPECT_EQ(OffsetsOf({4, 5}), Offsets({503, UINT64_MAX}));
  EXPECT_EQ(MP4GetSampleFileOffset(nullptr, 1, 1), UINT64_MAX);
}

TEST_F(Mp4InstalledOffsetTest, TrackWithoutTablesHasNoOffsets) {
  EXPECT_EQ(OffsetsOf({1}), Offsets({UINT64_MAX}));
}

TEST_F(Mp4InstalledOffsetTest, ChunkRunsThatDoNotIncreaseEndTheTrack) {
  SetSmallTrack();
  SetRuns({1, 1}, {2, 3});
  EXPECT_EQ(OffsetsOf({1, 2}), Offsets({100, 101}));
  SetRuns({1}, {0});
  ForgetSampleFileOffsets(kFile);
  EXPECT_EQ(OffsetsOf({1}), Offsets({UINT64_MAX}));
}

TEST_F(Mp4InstalledOffsetTest, EachEntryIsReadOncePerOpenFile) {
  SetSmallTrack();
  OffsetsOf({1, 2, 3, 4, 5, 6, 7});
  for (const auto& [name, times] : g_library.queries) EXPECT_EQ(times, 1) << name;
}

TEST_F(Mp4InstalledOffsetTest, NextFileWithTheSameHandleIsReadAgain) {
  SetSmallTrack();
  EXPECT_EQ(OffsetsOf({1}), Offsets({100}));
  SetOffsets("stco", {700, 800, 900});
  EXPECT_EQ(MP4GetSampleFileOffset(kOtherFile, 1, 1), 700U);
  EXPECT_EQ(OffsetsOf({2}), Offsets({101}));
  ForgetSampleFileOffsets(kFile);
  EXPECT_EQ(OffsetsOf({1, 2}), Offsets({700, 701}));
}

}  // namespace

bool MP4GetTrackIntegerProperty(MP4FileHandle, MP4TrackId, const char* propName,
                                std::uint64_t* retVal) {
  const auto found = g_library.properties.find(propName);
  if (found == g_library.properties.end()) return false;
  ++g_library.queries[propName];
  *retVal = found->second;
  return true;
}
