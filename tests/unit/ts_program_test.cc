#include "ts/ts_program.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "tests/support/ts_packets.h"
#include "ts/ts_stream_type.h"

namespace stream {
namespace {

using namespace ts_test;  // NOLINT: the builders read best without it

// The console output of a call.
std::string Printed(const std::function<void()>& call) {
  testing::internal::CaptureStdout();
  call();
  return testing::internal::GetCapturedStdout();
}

constexpr std::size_t kSection = 5;  // offset of the section in a packet without adaptation field

// Makes a section of a given length with a valid checksum, whatever its fields contain.
Packet PatWithSectionLength(unsigned length) {
  Bytes body(length >= 4 ? length - 4 : 0, 0);
  for (std::size_t i = 0; i < body.size(); ++i) body[i] = i < 5 ? std::uint8_t{0} : Low(i);
  return MakeSectionPacket(0, MakeSection(0, body));
}

TEST(Crc32Test, ChecksumOfTheStandardTestText) {
  const std::string text = "123456789";
  EXPECT_EQ(ts_crc32(reinterpret_cast<const std::uint8_t*>(text.data()), 9), 0x0376E6E7U);
  EXPECT_EQ(ts_crc32(nullptr, 0), 0xFFFFFFFFU);
}

TEST(ParsePatTest, OneProgramIsStoredWithItsRawNumber) {
  ts_program_table programs{};
  EXPECT_EQ(parse_pat(MakePat({{0x0102, 0x1ABC}}).data(), programs.data()), 1);
  EXPECT_EQ(programs[0].pmt_pid, 0x1ABC);
  EXPECT_EQ(programs[0].program_number, 0x0201);  // the two bytes as stored in the packet
}

TEST(ParsePatTest, SectionLength12IsNoTransportStream) {
  ts_program_table programs{};
  std::int32_t result = 0;
  EXPECT_EQ(Printed([&] { result = parse_pat(PatWithSectionLength(12).data(), programs.data()); }),
            "The media file is not TS file\n");
  EXPECT_EQ(result, -1);
}

TEST(ParsePatTest, SectionLength13YieldsOneProgram) {
  ts_program_table programs{};
  EXPECT_EQ(parse_pat(PatWithSectionLength(13).data(), programs.data()), 1);
}

TEST(ParsePatTest, SectionLength189IsNoTransportStream) {
  ts_program_table programs{};
  Packet packet = MakePat();
  packet[kSection + 2] = 189;
  EXPECT_EQ(Printed([&] { EXPECT_EQ(parse_pat(packet.data(), programs.data()), -1); }),
            "The media file is not TS file\n");
}

TEST(ParsePatTest, SectionThatEndsBeyondThePacketIsTooLong) {
  ts_program_table programs{};
  Packet packet = MakePat();
  packet[kSection + 2] = 188;
  EXPECT_EQ(Printed([&] { EXPECT_EQ(parse_pat(packet.data(), programs.data()), -1); }),
            "total_len:13 is too long\n");
}

TEST(ParsePatTest, ChecksumHalfBeyondThePacketDoesNotMatch) {
  ts_program_table programs{};
  Packet packet = MakePat();
  packet[kSection + 2] = 182;  // the checksum starts at byte 186
  const std::string printed =
      Printed([&] { EXPECT_EQ(parse_pat(packet.data(), programs.data()), -1); });
  EXPECT_EQ(printed, "Pat Data is error!! pat_crc is 0xffff0000\n");
}

TEST(ParsePatTest, FourOfFiveProgramsAreStoredAndALineIsPrinted) {
  ts_program_table programs{};
  const Packet packet = MakePat({{1, 0x20}, {2, 0x21}, {3, 0x22}, {4, 0x23}, {5, 0x24}});
  EXPECT_EQ(Printed([&] { EXPECT_EQ(parse_pat(packet.data(), programs.data()), 4); }),
            "program number is bigger than MAX_PROGRAM_NUMBER!\n");
  EXPECT_EQ(programs[3].pmt_pid, 0x23);
}

TEST(ParsePatTest, NetworkEntryIsStoredLikeAProgram) {
  ts_program_table programs{};
  EXPECT_EQ(parse_pat(MakePat({{0, 0x10}, {1, kPmtPid}}).data(), programs.data()), 2);
  EXPECT_EQ(programs[0].pmt_pid, 0x10);
}

TEST(ParsePatTest, FlippedChecksumBitIsRejectedWithTheStoredChecksum) {
  ts_program_table programs{};
  Packet packet = MakePat();
  packet[kSection + 15] ^= 1;  // the last byte of the checksum
  const TsPacket view(packet.data());
  std::array<char, 64> expected{};
  std::snprintf(expected.data(), expected.size(), "Pat Data is error!! pat_crc is 0x%x\n",
                view.U32At(kSection + 12));
  EXPECT_EQ(Printed([&] { EXPECT_EQ(parse_pat(packet.data(), programs.data()), -1); }),
            expected.data());
}

TEST(ParsePatTest, AdaptationFieldBeforeTheSectionIsSkipped) {
  Bytes payload = {0};
  Append(payload, MakeSection(0, {0, 1, 0xC1, 0, 0, 0, 1, 0xE1, 0x23}));
  ts_program_table programs{};
  EXPECT_EQ(parse_pat(MakePacket(0, true, 0, payload).data(), programs.data()), 1);
  EXPECT_EQ(programs[0].pmt_pid, 0x123);
}

TEST(ParsePatTest, AdaptationFieldThatFillsThePacketIsTooLong) {
  ts_program_table programs{};
  Packet packet = MakePat();
  packet[3] = 0x30;
  packet[4] = 255;
  EXPECT_EQ(Printed([&] { EXPECT_EQ(parse_pat(packet.data(), programs.data()), -1); }),
            "total_len:261 is too long\n");
}

// A packet whose section starts at `start`, after an adaptation field, and is all 0xFF.
Packet SectionAt(std::uint8_t start, std::uint16_t pid) {
  Packet packet = MakePacket(pid, true, 0, Bytes(184, 0xFF), true);
  packet[3] = 0x30;
  packet[4] = static_cast<std::uint8_t>(start - 6);
  return packet;
}

TEST(ParsePatTest, HeaderThatEndsWithThePacketIsTooLong) {
  ts_program_table programs{};
  const auto parse = [&](std::uint8_t start) {
    return Printed([&] { EXPECT_EQ(parse_pat(SectionAt(start, 0).data(), programs.data()), -1); });
  };
  EXPECT_EQ(parse(180), "total_len:180 is too long\n");
  EXPECT_EQ(parse(179), "") << "the header is read, and it is no PAT";
}

TEST(ParsePatTest, PacketWithoutPayloadPrintsItsControlField) {
  ts_program_table programs{};
  Packet packet = MakePat();
  packet[3] = 0x20;
  const std::string printed =
      Printed([&] { EXPECT_EQ(parse_pat(packet.data(), programs.data()), -1); });
  EXPECT_TRUE(printed.starts_with("ts_hd->header.adaptation_field_ctrl:0x2\n")) << printed;
}

TEST(ParsePatTest, OtherPidsAndOtherTablesAreRefusedWithoutALine) {
  ts_program_table programs{};
  Packet other_table = MakePat();
  other_table[kSection] = 2;
  EXPECT_EQ(Printed([&] {
              EXPECT_EQ(parse_pat(MakePmt().data(), programs.data()), -1);
              EXPECT_EQ(parse_pat(other_table.data(), programs.data()), -1);
            }),
            "");
}

TEST(ParsePatTest, NullArgumentsAreReported) {
  ts_program_table programs{};
  EXPECT_EQ(Printed([&] {
              EXPECT_EQ(parse_pat(nullptr, programs.data()), -1);
              EXPECT_EQ(parse_pat(MakePat().data(), nullptr), -1);
            }),
            "The parameter is NULL.\nThe parameter is NULL.\n");
}

class ParsePmtTest : public testing::Test {
 protected:
  ParsePmtTest() { program_.pmt_pid = kPmtPid; }
  std::int32_t Parse(const Packet& packet) { return parse_pmt(packet.data(), &program_); }

  ts_program_info program_;
};

TEST_F(ParsePmtTest, StreamsAreStoredWithTypesAndPids) {
  EXPECT_EQ(Parse(MakePmt({{0x24, 0x201, {1, 2, 3}}, {0x0F, 0x202}})), 0);
  EXPECT_EQ(program_.video_stream_type, kStreamTypeH265);
  EXPECT_EQ(program_.video_pid, 0x201);
  EXPECT_EQ(program_.audio_stream_type, kStreamTypeAdts);
  EXPECT_EQ(program_.audio_pid[0], 0x202);
  EXPECT_EQ(program_.audio_count, 1);
  EXPECT_EQ(program_.pcr_pid, kVideoPid);
  EXPECT_EQ(ts_last_stream_type, kStreamTypeH265);
}

TEST_F(ParsePmtTest, SixthAudioStreamIsStoredInTheLastSlot) {
  const Packet packet = MakePmt({{0x1B, 0x200},
                                 {0x0F, 0x201},
                                 {0x0F, 0x202},
                                 {0x0F, 0x203},
                                 {0x0F, 0x204},
                                 {0x0F, 0x205},
                                 {0x0F, 0x206}});
  EXPECT_EQ(Parse(packet), 0);
  EXPECT_EQ(program_.audio_pid[0], 0x201);
  EXPECT_EQ(program_.audio_pid[3], 0x206);
  EXPECT_EQ(program_.audio_count, 4);
}

TEST_F(ParsePmtTest, LastVideoStreamListedWins) {
  EXPECT_EQ(Parse(MakePmt({{0x1B, 0x201}, {0x02, 0x202}})), 0);
  EXPECT_EQ(program_.video_pid, 0x202);
  EXPECT_EQ(program_.video_stream_type, kStreamTypeMpeg2Video);
}

TEST_F(ParsePmtTest, AudioAloneIsNoPlayableProgram) {
  ts_last_stream_type = 0;
  EXPECT_EQ(Parse(MakePmt({{0x0F, 0x202}})), -1);
  EXPECT_EQ(program_.audio_pid[0], 0x202);
  EXPECT_EQ(ts_last_stream_type, 0);  // not changed by audio
}

TEST_F(ParsePmtTest, UnknownTypeIsReportedAndRecorded) {
  EXPECT_EQ(Printed([&] {
              EXPECT_EQ(Parse(MakePmt({{0x86, 0x205}, {0x1B, 0x201}})), 0);
            }),
            "ES stream type isn't known:0x86\n");
  EXPECT_EQ(Parse(MakePmt({{0x1B, 0x201}, {0x86, 0x205}})), 0);
  EXPECT_EQ(ts_last_stream_type, 0x86);
}

TEST_F(ParsePmtTest, ProgramDescriptorsAreSkipped) {
  const Packet packet =
      MakeSectionPacket(kPmtPid, MakePmtSection({{0x1B, 0x201}}, {0x05, 4, 'H', 'D', 'M', 'V'}));
  EXPECT_EQ(Parse(packet), 0);
  EXPECT_EQ(program_.video_pid, 0x201);
}

TEST_F(ParsePmtTest, FlippedChecksumBitIsRejectedWithTheStoredChecksum) {
  Packet packet = MakePmt({{0x1B, 0x201}});
  const std::size_t crc_position = kSection + 12 + 5;
  packet[crc_position] ^= 0x80;
  std::array<char, 64> expected{};
  std::snprintf(expected.data(), expected.size(), "Pmt Data is error!! pmt_crc is 0x%x\n",
                TsPacket(packet.data()).U32At(crc_position));
  EXPECT_EQ(Printed([&] { EXPECT_EQ(Parse(packet), -1); }), expected.data());
}

TEST_F(ParsePmtTest, WrongLengthsAreTooLong) {
  Packet packet = MakePmt({{0x1B, 0x201}});
  packet[kSection + 11] = 200;  // program_info_length beyond the section
  EXPECT_EQ(Printed([&] { EXPECT_EQ(Parse(packet), -1); }),
            "total_len:217 is too long(section_len:18, program_info_len:200, es_info_len:65341)\n");
}

TEST_F(ParsePmtTest, SectionShorterThanItsHeaderIsTooLong) {
  Packet packet = MakePmt({{0x1B, 0x201}});
  packet[kSection + 2] = 12;
  EXPECT_EQ(Printed([&] { EXPECT_EQ(Parse(packet), -1); }),
            "total_len:17 is too long(section_len:12, program_info_len:0, es_info_len:65535)\n");
}

TEST_F(ParsePmtTest, StreamEntryThatExtendsBeyondTheSectionEndsTheLoop) {
  Bytes body = {0, 1, 0xC1, 0, 0, 0xE1, 0x01, 0xF0, 0, 0x1B, 0xE2, 0x01, 0xFF, 0xFF};
  EXPECT_EQ(Parse(MakeSectionPacket(kPmtPid, MakeSection(2, body))), 0);
  EXPECT_EQ(program_.video_pid, 0x201);
}

TEST_F(ParsePmtTest, OtherTableOnThePmtPidIsReported) {
  Packet packet = MakePmt();
  packet[kSection] = 0x42;
  EXPECT_EQ(Printed([&] { EXPECT_EQ(Parse(packet), -1); }), "It isn't available PMT:256!\n");
}

TEST_F(ParsePmtTest, AdaptationFieldThatFillsThePacketIsTooLong) {
  Packet packet = MakePmt();
  packet[3] = 0x30;
  packet[4] = 183;
  EXPECT_EQ(Printed([&] { EXPECT_EQ(Parse(packet), -1); }), "total_len:189 is too long\n");
}

TEST_F(ParsePmtTest, SectionThatStartsBeyondThePacketIsTooLong) {
  const auto parse = [this](std::uint8_t start) {
    return Printed([&] { EXPECT_EQ(Parse(SectionAt(start, kPmtPid)), -1); });
  };
  EXPECT_EQ(parse(188), "total_len:188 is too long\n");
  EXPECT_EQ(parse(187), "It isn't available PMT:256!\n");
}

TEST_F(ParsePmtTest, PmtOfAnotherProgramIsRefusedWithoutALine) {
  EXPECT_EQ(Printed([&] { EXPECT_EQ(Parse(MakePmt({{0x1B, 0x201}}, 0x333)), -1); }), "");
  program_.pmt_pid = 0;
  EXPECT_EQ(Printed([&] { EXPECT_EQ(Parse(MakePmt({{0x1B, 0x201}}, 0)), -1); }), "");
}

TEST_F(ParsePmtTest, NullArgumentsAreReported) {
  EXPECT_EQ(Printed([&] {
              EXPECT_EQ(parse_pmt(nullptr, &program_), -1);
              EXPECT_EQ(parse_pmt(MakePmt().data(), nullptr), -1);
            }),
            "The parameter is NULL.\nThe parameter is NULL.\n");
}

}  // namespace
}  // namespace stream
