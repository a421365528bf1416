#include "ts/ts_context.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "tests/support/ts_packets.h"

namespace stream {
namespace {

using namespace ts_test;  // NOLINT: the builders read best without it

std::int32_t HandleNothing(ts_context*, const std::uint8_t*, std::int32_t) { return 0; }

class TsContextTest : public testing::Test {
 protected:
  // Probes one packet per call, like the pipelines. Returns the console output.
  std::string Probe(const std::vector<Packet>& packets) {
    testing::internal::CaptureStdout();
    for (const Packet& packet : packets) ts_probe(context_, HandleNothing, packet.data(), 1);
    return testing::internal::GetCapturedStdout();
  }
  std::string Follow(const Packet& packet) {
    testing::internal::CaptureStdout();
    get_pmt_info(packet.data(), kTsPacketSize, context_);
    return testing::internal::GetCapturedStdout();
  }

  ts_context context_;
};

TEST_F(TsContextTest, ProbeChoosesAHandlerForEachPlayableVideo) {
  for (const std::uint8_t type : Bytes{0x02, 0x1B, 0x24}) {
    context_ = ts_context();
    EXPECT_EQ(Probe({MakePat(), MakePmt({{type, kVideoPid}, {0x0F, kAudioPid}})}), "");
    EXPECT_EQ(context_.handler, &HandleNothing);
    EXPECT_EQ(context_.video_pid, kVideoPid);
    EXPECT_EQ(context_.AudioPid(), kAudioPid);
  }
}

TEST_F(TsContextTest, ProbeSkipsMpeg4VisualAndAvsWithoutALine) {
  for (const std::uint8_t type : Bytes{0x10, 0x42}) {
    context_ = ts_context();
    EXPECT_EQ(Probe({MakePat(), MakePmt({{type, kVideoPid}})}), "");
    EXPECT_EQ(context_.handler, nullptr);
  }
}

TEST_F(TsContextTest, ProbeReportsThatMpeg1VideoIsNotKnown) {
  EXPECT_EQ(Probe({MakePat(), MakePmt({{0x01, kVideoPid}})}), "ES stream type=1 isn't known.\n");
  EXPECT_EQ(context_.handler, nullptr);
}

TEST_F(TsContextTest, ProbeNeedsThePatBeforeThePmt) {
  EXPECT_EQ(Probe({MakePmt(), MakePmt()}), "");
  EXPECT_EQ(context_.handler, nullptr);
  Probe({MakePat(), MakePmt()});
  EXPECT_NE(context_.handler, nullptr);
}

TEST_F(TsContextTest, ProbeReadsPatAndPmtFromOneBuffer) {
  std::vector<Packet> packets = {MakePat(), MakePmt()};
  ts_probe(context_, HandleNothing, packets[0].data(), 2);
  EXPECT_NE(context_.handler, nullptr);
}

TEST_F(TsContextTest, ProbeRefusesABufferThatDoesNotStartWithAPacket) {
  Packet packet = MakePat();
  packet[0] = 0x48;
  EXPECT_EQ(Probe({packet}), "The packet isn't TS packet\n");
}

TEST_F(TsContextTest, ProbeSkipsALaterPacketWithoutASyncByte) {
  std::vector<Packet> packets = {MakePat(), MakePat(), MakePmt()};
  packets[1][0] = 0;
  testing::internal::CaptureStdout();
  ts_probe(context_, HandleNothing, packets[0].data(), 3);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "The ts packet has not sync byte\n");
  EXPECT_NE(context_.handler, nullptr);
}

TEST_F(TsContextTest, ProbeSelectsTheFirstProgramThatHasVideo) {
  Probe({MakePat({{1, 0x20}, {2, 0x21}}), MakePmt({{0x0F, 0x30}}, 0x20),
         MakePmt({{0x1B, 0x40}, {0x0F, 0x41}}, 0x21)});
  EXPECT_EQ(context_.video_pid, 0x40);
  EXPECT_EQ(context_.AudioPid(), 0x30);  // always of the first program
}

TEST_F(TsContextTest, MovedPmtClearsTheProgramsStreamsUntilItIsReceived) {
  Probe({MakePat(), MakePmt()});
  Follow(MakePat({{1, 0x555}}));
  EXPECT_EQ(context_.programs[0].pmt_pid, 0x555);
  EXPECT_EQ(context_.AudioPid(), 0);
  EXPECT_EQ(context_.video_pid, kVideoPid);
  Follow(MakePmt({{0x1B, 0x60}, {0x0F, 0x61}}, 0x555));
  EXPECT_EQ(context_.video_pid, 0x60);
  EXPECT_EQ(context_.AudioPid(), 0x61);
}

TEST_F(TsContextTest, UnchangedPatKeepsTheStreams) {
  Probe({MakePat(), MakePmt()});
  EXPECT_EQ(Follow(MakePat()), "");
  EXPECT_EQ(context_.AudioPid(), kAudioPid);
}

TEST_F(TsContextTest, AudioThatMovesAloneIsNotFollowed) {
  Probe({MakePat(), MakePmt()});
  Follow(MakePmt({{0x1B, kVideoPid}, {0x0F, 0x77}}));
  EXPECT_EQ(context_.AudioPid(), kAudioPid);
}

TEST_F(TsContextTest, FailedPmtIsReported) {
  Probe({MakePat(), MakePmt()});
  EXPECT_EQ(Follow(MakePmt({{0x0F, 0x77}})), "get_pmt_info failed\n");
}

TEST_F(TsContextTest, LatestPmtOfTwoProgramsDeterminesTheVideo) {
  Probe({MakePat({{1, 0x20}, {2, 0x21}}), MakePmt({{0x1B, 0x40}}, 0x20)});
  Follow(MakePmt({{0x1B, 0x50}}, 0x21));
  EXPECT_EQ(context_.video_pid, 0x50);
  Follow(MakePmt({{0x1B, 0x40}}, 0x20));
  EXPECT_EQ(context_.video_pid, 0x40);
}

TEST_F(TsContextTest, BufferAboveSevenPacketsIsIgnored) {
  Probe({MakePat(), MakePmt()});
  std::vector<Packet> packets(8, MakePat({{1, 0x555}}));
  get_pmt_info(packets[0].data(), 8 * 188, context_);
  EXPECT_EQ(context_.programs[0].pmt_pid, kPmtPid);
  get_pmt_info(packets[0].data(), 7 * 188, context_);
  EXPECT_EQ(context_.programs[0].pmt_pid, 0x555);
}

}  // namespace
}  // namespace stream
