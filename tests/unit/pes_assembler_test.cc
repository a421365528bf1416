#include "ts/pes_assembler.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace stream {
namespace {

class PesAssemblerTest : public testing::Test {
 protected:
  const std::unique_ptr<PesBuffer> buffer_ = std::make_unique<PesBuffer>();
  pes_assembler pes_{*buffer_};
  const std::vector<std::uint8_t> bytes_ = std::vector<std::uint8_t>(184, 0x5A);
};

TEST(PesTimestampTest, AllThirtyThreeBitsAreRead) {
  EXPECT_EQ(get_pes_timestamp({0x2F, 0xFF, 0xFF, 0xFF, 0xFF}), 0x1FFFFFFFFU);
  EXPECT_EQ(get_pes_timestamp({0x21, 0x00, 0x01, 0x00, 0x01}), 0U);
  EXPECT_EQ(get_pes_timestamp({0x28, 0x00, 0x00, 0x00, 0x02}), (std::uint64_t{1} << 32) + 1);
}

TEST(PesTimestampTest, MarkerBitsAndPrefixAreIgnored) {
  EXPECT_EQ(get_pes_timestamp({0xF1, 0x00, 0x01, 0x00, 0x01}), 0U);
}

TEST_F(PesAssemblerTest, PayloadsAreJoinedInOrder) {
  pes_.Begin(1, 2, bytes_.data(), 10);
  pes_.Append(bytes_.data(), 20);
  EXPECT_EQ(pes_.length, 30U);
  EXPECT_EQ(pes_.pts, 1U);
  EXPECT_EQ(pes_.dts, 2U);
  EXPECT_EQ(pes_.buffer[29], 0x5A);
}

TEST_F(PesAssemblerTest, GapMarksThePacketUntilTheNextBegins) {
  pes_.Begin(0, 0, bytes_.data(), 10);
  pes_.CheckContinuity(14);
  pes_.CheckContinuity(15);
  pes_.CheckContinuity(0);
  EXPECT_EQ(pes_.intact, 1U);
  pes_.CheckContinuity(2);
  EXPECT_EQ(pes_.cc_ok, 0U);
  EXPECT_EQ(pes_.intact, 0U);
  EXPECT_EQ(pes_.last_cc, 0);  // not updated while the packet is not intact
  pes_.CheckContinuity(1);
  EXPECT_EQ(pes_.cc_ok, 1U);
  EXPECT_EQ(pes_.intact, 0U);
  pes_.Begin(0, 0, bytes_.data(), 10);
  pes_.CheckContinuity(9);
  EXPECT_EQ(pes_.intact, 1U);
  EXPECT_EQ(pes_.last_cc, 9);
}

TEST_F(PesAssemblerTest, BytesBeyondOneMebibyteAreDroppedAndThePacketIsNotIntact) {
  pes_.Begin(0, 0, bytes_.data(), 184);
  while (pes_.length + 184 <= kMaxPesPayload) pes_.Append(bytes_.data(), 184);
  EXPECT_EQ(pes_.intact, 1U);
  pes_.Append(bytes_.data(), 184);
  EXPECT_EQ(pes_.length, kMaxPesPayload);
  EXPECT_EQ(pes_.intact, 0U);
  pes_.Append(bytes_.data(), 184);
  EXPECT_EQ(pes_.length, kMaxPesPayload);
}

TEST_F(PesAssemblerTest, PacketOfExactlyOneMebibyteIsIntact) {
  pes_.Begin(0, 0, bytes_.data(), kMaxPesPayload % 184);
  while (pes_.length < kMaxPesPayload) pes_.Append(bytes_.data(), 184);
  EXPECT_EQ(pes_.length, kMaxPesPayload);
  EXPECT_EQ(pes_.intact, 1U);
}

}  // namespace
}  // namespace stream
