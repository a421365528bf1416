#include "mp4/audio_specific_config.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

#include "common/bit_writer.h"

namespace stream {
namespace {

using Bytes = std::vector<std::uint8_t>;

// Packs fields, each given by its width and value, into bytes.
Bytes Fields(const std::vector<std::pair<unsigned, unsigned>>& fields) {
  unsigned bits = 0;
  for (const auto& [width, value] : fields) bits += width;
  Bytes bytes((bits + 7) / 8);
  BitWriter writer(bytes);
  for (const auto& [width, value] : fields) writer.Write(width, static_cast<std::uint16_t>(value));
  return bytes;
}

void ExpectConfig(const Bytes& bytes, unsigned type, unsigned index, unsigned channels) {
  const auto config = ParseAudioSpecificConfig(bytes);
  ASSERT_TRUE(config);
  EXPECT_EQ(config->object_type, type);
  EXPECT_EQ(config->sampling_frequency_index, index);
  EXPECT_EQ(config->channel_configuration, channels);
}

TEST(AudioSpecificConfigTest, AacLcOfTwoBytes) {
  ExpectConfig({0x11, 0x90}, 2, 3, 2);
  ExpectConfig({0x12, 0x08}, 2, 4, 1);
  ExpectConfig({0x11, 0xB0}, 2, 3, 6);
}

TEST(AudioSpecificConfigTest, EveryValueOfEveryField) {
  for (unsigned type = 0; type < 31; ++type) {
    for (unsigned index = 0; index < 15; ++index) {
      for (unsigned channels = 0; channels < 16; ++channels)
        ExpectConfig(Fields({{5, type}, {4, index}, {4, channels}}), type, index, channels);
    }
  }
}

// The fields of the extension follow those of the core stream.
TEST(AudioSpecificConfigTest, SbrAndPsWithHierarchicalSignalling) {
  ExpectConfig(Fields({{5, 5}, {4, 6}, {4, 2}, {4, 3}, {5, 2}}), 5, 6, 2);
  ExpectConfig(Fields({{5, 29}, {4, 7}, {4, 1}, {4, 4}, {5, 2}}), 29, 7, 1);
}

TEST(AudioSpecificConfigTest, ObjectTypeAbove31) {
  ExpectConfig(Fields({{5, 31}, {6, 10}, {4, 3}, {4, 6}}), 42, 3, 6);
  ExpectConfig(Fields({{5, 31}, {6, 63}, {4, 14}, {4, 15}}), 95, 14, 15);
}

TEST(AudioSpecificConfigTest, RateGivenAsANumber) {
  ExpectConfig(Fields({{5, 2}, {4, 15}, {12, 0xFFF}, {12, 0xFFF}, {4, 6}}), 2, 15, 6);
  ExpectConfig(Fields({{5, 31}, {6, 1}, {4, 15}, {12, 0}, {12, 0}, {4, 7}}), 33, 15, 7);
}

TEST(AudioSpecificConfigTest, TruncatedBytesAreNoConfig) {
  for (const Bytes& whole : {Bytes{0x11, 0x90}, Fields({{5, 31}, {6, 10}, {4, 3}, {4, 6}}),
                             Fields({{5, 2}, {4, 15}, {12, 1}, {12, 2}, {4, 6}}),
                             Fields({{5, 31}, {6, 1}, {4, 15}, {12, 0}, {12, 0}, {4, 7}})}) {
    EXPECT_TRUE(ParseAudioSpecificConfig(whole));
    for (std::size_t size = 0; size < whole.size(); ++size) {
      const Bytes cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
      EXPECT_FALSE(ParseAudioSpecificConfig(cut)) << size << " of " << whole.size();
    }
  }
}

}  // namespace
}  // namespace stream
