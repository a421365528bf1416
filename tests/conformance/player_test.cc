// Unusual players: none at all, one that blocks, one that throws.
#include "tests/conformance/conformance.h"
#include "tests/support/blocked_video_call.h"
#include "tests/support/throwing_player.h"

namespace stream {

namespace conformance {
namespace {

template <typename Format>
class PlayerTest : public Conformance<Format> {};

TYPED_TEST_SUITE(PlayerTest, Formats, FormatNames);

TYPED_TEST(PlayerTest, WithoutAPlayerFramesAreRemovedAndReleased) {
  CStreamDownloader facade(nullptr);
  EXPECT_TRUE(facade.BeginDownload(this->server_.Whole("a")));
  EXPECT_TRUE(WaitUntil([this] { return this->AllAreTaken(TypeParam::kDue); }));
  EXPECT_TRUE(facade.SetStartPostion(1));
  EXPECT_TRUE(facade.EndDownload());
  EXPECT_TRUE(this->sleep_recorder_.WasPrompt(TypeParam::kPace));
}

TYPED_TEST(PlayerTest, PlayerThatBlocksInVideoGetsItsAudioAndTheStopWaitsOnlyForItsCall) {
  BlockedVideoCall call(this->player_);
  this->downloader_.BeginDownload(this->server_.Whole("a"));
  ASSERT_TRUE(call.WaitUntilEntered());
  EXPECT_TRUE(this->WaitForAudio(TypeParam::kDue.audio));
  EXPECT_EQ(this->player_.Snapshot().video.size(), 1U);
  EXPECT_TRUE(StopDuringBlockedCall(call, this->downloader_));
  this->player_.Close();
  EXPECT_EQ(this->player_.Snapshot().video.size(), 1U) << "another frame was delivered after it";
  EXPECT_TRUE(this->sleep_recorder_.WasPrompt(TypeParam::kPace));
}

TYPED_TEST(PlayerTest, PlayerThatThrowsInEveryCallGetsAllCallsAndCanBeStopped) {
  ThrowingPlayer player;
  CStreamDownloader facade(&player);
  testing::internal::CaptureStdout();
  EXPECT_TRUE(facade.BeginDownload(this->server_.Whole("a")));
  EXPECT_TRUE(WaitUntil([this] { return this->AllAreTaken(TypeParam::kDue); }));
  EXPECT_TRUE(facade.SetStartPostion(0));
  EXPECT_TRUE(facade.EndDownload());
  testing::internal::GetCapturedStdout();
  EXPECT_GE(player.calls.load(), static_cast<int>(TypeParam::kDue.video + TypeParam::kDue.audio));
  EXPECT_TRUE(this->sleep_recorder_.WasPrompt(TypeParam::kPace));
}

}  // namespace
}  // namespace conformance

}  // namespace stream
