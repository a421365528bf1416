#include "common/adts.h"

#include <gtest/gtest.h>

namespace stream {
namespace {

// `count` bits of a header starting at bit `position`.
std::uint32_t Bits(const AdtsHeader& header, unsigned position, unsigned count) {
  std::uint32_t value = 0;
  for (unsigned bit = position; bit < position + count; ++bit) {
    const std::uint32_t byte = header[bit / 8];
    value = value << 1 | (byte >> (7 - bit % 8) & 1U);
  }
  return value;
}

constexpr unsigned kChannelsAt = 23;
constexpr unsigned kLengthAt = 30;

TEST(AdtsTest, HeaderHasEveryFieldAtItsPosition) {
  const AdtsHeader header = MakeAdtsHeader({3, 2}, 1000);
  EXPECT_EQ(Bits(header, 0, 12), 0xFFFU) << "syncword";
  EXPECT_EQ(Bits(header, 12, 1), 0U) << "ID";
  EXPECT_EQ(Bits(header, 13, 2), 0U) << "layer";
  EXPECT_EQ(Bits(header, 15, 1), 1U) << "protection_absent";
  EXPECT_EQ(Bits(header, 16, 2), 1U) << "profile";
  EXPECT_EQ(Bits(header, 18, 4), 3U) << "sampling_frequency_index";
  EXPECT_EQ(Bits(header, 22, 1), 0U) << "private_bit";
  EXPECT_EQ(Bits(header, kChannelsAt, 3), 2U) << "channel_configuration";
  EXPECT_EQ(Bits(header, 26, 4), 0U) << "the four flags";
  EXPECT_EQ(Bits(header, kLengthAt, 13), 1007U) << "aac_frame_length";
  EXPECT_EQ(Bits(header, 43, 11), 0x7FFU) << "adts_buffer_fullness";
  EXPECT_EQ(Bits(header, 54, 2), 0U) << "number_of_raw_data_blocks_in_frame";
}

TEST(AdtsTest, KnownHeaderByteByByte) {
  EXPECT_EQ(MakeAdtsHeader({4, 2}, 371 - 7),
            (AdtsHeader{0xFF, 0xF1, 0x50, 0x80, 0x2E, 0x7F, 0xFC}));
}

TEST(AdtsTest, HeaderOfAnEmptyFrameCountsItsOwnLength) {
  EXPECT_EQ(Bits(MakeAdtsHeader({}, 0), kLengthAt, 13), kAdtsHeaderSize);
}

TEST(AdtsTest, LongestFrameOfThirteenBitsFits) {
  const AdtsHeader header = MakeAdtsHeader({}, 8191 - kAdtsHeaderSize);
  EXPECT_EQ(Bits(header, kLengthAt, 13), 8191U);
}

TEST(AdtsTest, LengthBeyondThirteenBitsIsTruncatedAndChangesNoOtherField) {
  const AdtsHeader too_long = MakeAdtsHeader({15, 7}, 8192 - kAdtsHeaderSize);
  EXPECT_EQ(Bits(too_long, kLengthAt, 13), 0U);
  EXPECT_EQ(Bits(too_long, 26, 4), 0U);
  EXPECT_EQ(MakeAdtsHeader({15, 7}, 0xFFFFFF), MakeAdtsHeader({15, 7}, 0xFFFFFF & 0x1FFF));
}

TEST(AdtsTest, ChannelConfigurationBeyondThreeBitsIsTruncated) {
  EXPECT_EQ(MakeAdtsHeader({3, 8}, 10), MakeAdtsHeader({3, 0}, 10));
  EXPECT_EQ(MakeAdtsHeader({3, 15}, 10), MakeAdtsHeader({3, 7}, 10));
}

TEST(AdtsTest, FieldsOfConfigurationsThatEncodersWrite) {
  struct Case {
    std::uint16_t config;
    std::uint16_t index;
    std::uint16_t channels;
  };
  for (const Case& row : {Case{0x1588, 11, 1}, Case{0x1390, 7, 2}, Case{0x1210, 4, 2},
                          Case{0x1190, 3, 2}, Case{0x1188, 3, 1}, Case{0x1208, 4, 1}}) {
    const AdtsFields fields = FieldsOfAudioSpecificConfig(row.config);
    EXPECT_EQ(fields.sampling_frequency_index, row.index) << std::hex << row.config;
    EXPECT_EQ(fields.channel_configuration, row.channels) << std::hex << row.config;
  }
}

TEST(AdtsTest, SamplingIndexTakesThreeBitsOfTheFirstByteAndTheTopBitOfTheSecond) {
  EXPECT_EQ(FieldsOfAudioSpecificConfig(0xF800).sampling_frequency_index, 0U);
  EXPECT_EQ(FieldsOfAudioSpecificConfig(0x0700).sampling_frequency_index, 14U);
  EXPECT_EQ(FieldsOfAudioSpecificConfig(0x0080).sampling_frequency_index, 1U);
}

TEST(AdtsTest, ChannelsTakeFourBitsOfTheSecondByte) {
  EXPECT_EQ(FieldsOfAudioSpecificConfig(0x0078).channel_configuration, 15U);
  EXPECT_EQ(FieldsOfAudioSpecificConfig(0xFF87).channel_configuration, 0U);
}

TEST(AdtsTest, NoConfigurationGivesZeroFields) {
  const AdtsHeader header = MakeAdtsHeader(FieldsOfAudioSpecificConfig(0), 10);
  EXPECT_EQ(Bits(header, 18, 4), 0U);
  EXPECT_EQ(Bits(header, kChannelsAt, 3), 0U);
  EXPECT_EQ(Bits(header, 16, 2), 1U) << "the profile is still AAC LC";
}

TEST(AdtsTest, ObjectTypeOfTheConfigurationIsIgnored) {
  EXPECT_EQ(MakeAdtsHeader(FieldsOfAudioSpecificConfig(0x2990), 10),
            MakeAdtsHeader(FieldsOfAudioSpecificConfig(0x1190), 10));
}

}  // namespace
}  // namespace stream
