// The binary contract with hosts: calls use the right slots of the player's virtual table, and
// their arguments are where a separately built program expects them.
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <string>
#include <type_traits>
#include <vector>

#include "common/player_port.h"
#include "public/stream_downloader.h"
#include "public/stream_player.h"

namespace stream {
namespace {

static_assert(std::is_trivially_copyable_v<MediaFrame>);
static_assert(std::is_standard_layout_v<MediaFrame>);
static_assert(sizeof(CStreamDownloader) == 48);
static_assert(!std::is_polymorphic_v<CStreamDownloader>);

// An object with the layout that the ABI defines for a class with virtual functions: a pointer to a
// table of functions, then the host's fields. It does not use this compiler's layout of
// CStreamPlayerImp.
struct RawPlayer {
  void* const* table;
  std::vector<int> slots;  // of the calls, in their order
  float seconds = 0;
  MediaFrame frame{};
  std::string text;
};

template <int kSlot>
void RecordSlot(RawPlayer* self) {
  self->slots.push_back(kSlot);
}
template <int kSlot>
void RecordSeconds(RawPlayer* self, float seconds) {
  self->slots.push_back(kSlot);
  self->seconds = seconds;
}
template <int kSlot>
void RecordFrame(RawPlayer* self, MediaFrame frame) {
  self->slots.push_back(kSlot);
  self->frame = frame;
}
template <int kSlot>
void RecordText(RawPlayer* self, std::string text) {
  self->slots.push_back(kSlot);
  self->text = std::move(text);
}

template <typename Function>
void* Entry(Function* function) {
  return reinterpret_cast<void*>(function);
}

class PlayerContractTest : public testing::Test {
 protected:
  CStreamPlayerImp* AsPlayer() { return reinterpret_cast<CStreamPlayerImp*>(&raw_); }

  const std::array<void*, 12> table_ = {
      Entry(RecordSlot<0>),    Entry(RecordSlot<1>),    Entry(RecordSlot<2>),
      Entry(RecordSlot<3>),    Entry(RecordSlot<4>),    Entry(RecordSeconds<5>),
      Entry(RecordSeconds<6>), Entry(RecordSeconds<7>), Entry(RecordFrame<8>),
      Entry(RecordFrame<9>),   Entry(RecordText<10>),   Entry(RecordText<11>)};
  RawPlayer raw_{table_.data(), {}, 0, {}, {}};
};

using Slots = std::vector<int>;

TEST_F(PlayerContractTest, DurationIsSlot5) {
  AsPlayer()->OnDuration(2.5F);
  EXPECT_EQ(raw_.slots, Slots{5});
  EXPECT_EQ(raw_.seconds, 2.5F);
}

TEST_F(PlayerContractTest, BufferedTimeIsSlot6) {
  AsPlayer()->OnBufferedTime(3.5F);
  EXPECT_EQ(raw_.slots, Slots{6});
  EXPECT_EQ(raw_.seconds, 3.5F);
}

TEST_F(PlayerContractTest, AudioClockIsSlot7AndAudioFrameSlot8) {
  std::uint8_t payload[] = {1, 2};
  FrameRecord frame;
  frame.pts = 1;
  frame.dts = 2;
  frame.playTime = 90'000;
  frame.data = payload;
  frame.size = 2;
  PlayerPort(AsPlayer()).AudioFrame(frame);
  EXPECT_EQ(raw_.slots, (Slots{7, 8}));
  EXPECT_EQ(raw_.seconds, 1.0F);
  EXPECT_EQ(raw_.frame.pts, 1U);
  EXPECT_EQ(raw_.frame.dts, 2U);
  EXPECT_EQ(raw_.frame.playTime, 90'000U);
  EXPECT_EQ(raw_.frame.size, 2);
  EXPECT_EQ(raw_.frame.data, payload);
}

TEST_F(PlayerContractTest, VideoFrameIsSlot9) {
  FrameRecord frame;
  frame.pts = 7;
  PlayerPort(AsPlayer()).VideoFrame(frame);
  EXPECT_EQ(raw_.slots, Slots{9});
  EXPECT_EQ(raw_.frame.pts, 7U);
}

TEST_F(PlayerContractTest, MessageIsSlot10AndPlayResultSlot11) {
  AsPlayer()->OnMessage("a line longer than what fits into a string object itself");
  AsPlayer()->OnPlayResult("PLAY:FLV OK:");
  EXPECT_EQ(raw_.slots, (Slots{10, 11}));
  EXPECT_EQ(raw_.text, "PLAY:FLV OK:");
}

}  // namespace
}  // namespace stream
