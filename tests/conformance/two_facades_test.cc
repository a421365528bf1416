// Two facades in one process, each with a player of its own.
#include "tests/support/two_facades.h"

#include "tests/conformance/conformance.h"
#include "tests/support/blocked_video_call.h"

namespace stream {

namespace conformance {
namespace {

template <typename Format>
class TwoFacadesTest : public Conformance<Format> {
 protected:
  static bool WaitForOk(RecordingPlayer& player, const std::string& url) {
    return player.WaitFor([&](const RecordingPlayer::Record& record) {
      return record.HasMessage(Format::kOkLine + url);
    });
  }

  // The result of EndDownload after the other facade's EndDownload, which clears a shared run flag.
  static constexpr bool kEndAfterAnotherOnesEnd = Format::kOwnRunFlag;
};

TYPED_TEST_SUITE(TwoFacadesTest, Formats, FormatNames);

TYPED_TEST(TwoFacadesTest, PlaysAfterTheOtherFacadeAndItsPlayerAreDestroyed) {
  PlayOnAnotherFacade(this->server_.Whole("a"), TypeParam::kOkLine);
  this->ExpectToPlayWhole("b", TypeParam::kDueAgain, 1);
}

TYPED_TEST(TwoFacadesTest, SeeksAndStartsAfterTheOtherFacadeAndItsPlayerAreDestroyed) {
  this->BeginAndPlayWhole("a");
  PlayOnAnotherFacade(this->server_.Whole("b"), TypeParam::kOkLine);
  EXPECT_EQ(this->downloader_.EndDownload(), TestFixture::kEndAfterAnotherOnesEnd);
  this->StartAgain();
  EXPECT_TRUE(this->downloader_.SetStartPostion(0));
  EXPECT_EQ(this->player_.Snapshot().MessagesWith(this->PositionPrefix()).size(), 1U);
  this->player_.Forget();
  this->ExpectToPlayWhole("a", TypeParam::kDueAgain, 2);
}

TYPED_TEST(TwoFacadesTest, LinesGoToThePlayerOfTheCalledFacade) {
  RecordingPlayer other_player;
  CStreamDownloader other(&other_player);
  other.BeginDownload(this->server_.Endless("a"));
  ASSERT_TRUE(WaitForFrames(other_player, 3));
  EXPECT_TRUE(other.EndDownload());
  this->ExpectToPlayWhole("b", TypeParam::kDueAgain, 1);  // closes player_

  other_player.Forget();
  EXPECT_TRUE(other.SetStartPostion(0));
  const std::string url = this->server_.Whole("c");
  EXPECT_TRUE(other.BeginDownload(url));
  EXPECT_TRUE(WaitForFrames(other_player, TypeParam::kDueAgain.video));
  EXPECT_TRUE(this->WaitForOk(other_player, url));
  EXPECT_TRUE(other.EndDownload());
  EXPECT_EQ(other_player.Snapshot().MessagesWith(this->PositionPrefix()).size(), 1U);
}

TYPED_TEST(TwoFacadesTest, EachRunningStartReportsToItsOwnPlayer) {
  RecordingPlayer other_player;
  CStreamDownloader other(&other_player);
  const std::string url = this->server_.Whole("a");
  const std::string other_url = this->server_.Whole("b");
  this->BeginAndPlayWhole("a");
  other.BeginDownload(other_url);
  ASSERT_TRUE(this->WaitForOk(other_player, other_url));
  EXPECT_TRUE(other.EndDownload());
  EXPECT_EQ(this->downloader_.EndDownload(), TestFixture::kEndAfterAnotherOnesEnd);
  EXPECT_FALSE(this->player_.Snapshot().HasMessage(this->OkLine(other_url)));
  EXPECT_FALSE(other_player.Snapshot().HasMessage(this->OkLine(url)));
  EXPECT_EQ(this->player_.Snapshot().MessagesWith(TypeParam::kOkLine).size(), 1U);
  EXPECT_EQ(other_player.Snapshot().MessagesWith(TypeParam::kOkLine).size(), 1U);
}

TYPED_TEST(TwoFacadesTest, EndAfterTheOtherFacadesStopWaitsForTheCallOfItsPlayer) {
  BlockedVideoCall call(this->player_);
  this->downloader_.BeginDownload(this->server_.Whole("a"));
  ASSERT_TRUE(call.WaitUntilEntered());
  ASSERT_TRUE(this->WaitForAudio(TypeParam::kDue.audio) && this->server_.WaitForWhole());
  PlayOnAnotherFacade(this->server_.Whole("b"), TypeParam::kOkLine);
  EXPECT_FALSE(TypeParam::Runs());
  EXPECT_EQ(StopDuringBlockedCall(call, this->downloader_), TestFixture::kEndAfterAnotherOnesEnd);
  this->player_.Close();
}

TYPED_TEST(TwoFacadesTest, ConcurrentStartsEndWithTheStopOfBoth) {
  RecordingPlayer other_player;
  for (int i = 0; i < 5; ++i) {
    CStreamDownloader other(&other_player);
    this->StartAgain();
    other_player.Forget();
    const std::string url = this->server_.Endless("a" + std::to_string(i));
    const std::string other_url = this->server_.Endless("b" + std::to_string(i));
    this->downloader_.BeginDownload(url);
    other.BeginDownload(other_url);
    EXPECT_TRUE(this->server_.WaitForRequests(PathOf(url), 1));
    EXPECT_TRUE(this->server_.WaitForRequests(PathOf(other_url), 1));
    this->downloader_.SetStartPostion(0);
    other.SetStartPostion(0);
    EXPECT_TRUE(this->Stop());
    EXPECT_EQ(other.EndDownload(), TestFixture::kEndAfterAnotherOnesEnd);
    EXPECT_FALSE(TypeParam::Runs());
    EXPECT_EQ(this->player_.Snapshot().MessagesWith(this->PositionPrefix()).size(), 1U);
    EXPECT_EQ(other_player.Snapshot().MessagesWith(this->PositionPrefix()).size(), 1U);
  }
}

// Formats whose pipelines share one run flag: the stop of one pipeline also ends the others.
template <typename Format>
class SharedRunFlagTest : public Conformance<Format> {};

using FormatsWithOneRunFlag = testing::Types<TsFormat, FlvFormat, Mp4Format>;
TYPED_TEST_SUITE(SharedRunFlagTest, FormatsWithOneRunFlag, FormatNames);

// The server of the first start sends nothing more, so only the stop can end its transfer.
TYPED_TEST(SharedRunFlagTest, EndAfterTheOtherFacadesStopWaitsForAStalledTransfer) {
  this->downloader_.BeginDownload(this->server_.Gated("a"));
  ASSERT_TRUE(this->WaitForVideo(3) && this->server_.WaitForGate());
  PlayOnAnotherFacade(this->server_.Whole("b"), TypeParam::kOkLine);
  EXPECT_FALSE(TypeParam::Runs());
  EXPECT_FALSE(this->Stop());  // closes the player: no task may call it any more
}

}  // namespace
}  // namespace conformance

}  // namespace stream
