// The first start, the next start with the same or another address, and a start without a stop
// before it.
#include "tests/conformance/conformance.h"

namespace stream {

namespace conformance {
namespace {

template <typename Format>
class StartTest : public Conformance<Format> {
 protected:
  // Starts `url` so that another start without a stop may follow.
  void BeginAndWaitForVideo(const std::string& url) {
    EXPECT_TRUE(this->downloader_.BeginDownload(url));
    EXPECT_TRUE(this->WaitForVideo(1));
  }
};

TYPED_TEST_SUITE(StartTest, Formats, FormatNames);

TYPED_TEST(StartTest, PlaysEveryFrameOnceAndInOrder) {
  this->ExpectToPlayWhole("a", TypeParam::kDue);
  EXPECT_GT(this->sleep_recorder_.Sleeps(), 0U) << "no loop slept in the recorder's clock";
}

TYPED_TEST(StartTest, SameAddressAfterASeekToItsStartPlaysEverythingAgain) {
  this->ExpectToPlayWhole("a", TypeParam::kDue);
  this->StartAgain();
  EXPECT_TRUE(this->downloader_.SetStartPostion(0));
  EXPECT_EQ(this->player_.Snapshot().MessagesWith(this->PositionPrefix()).size(), 1U);
  this->player_.Forget();
  this->ExpectToPlayWhole("a", TypeParam::kDueAgain, 1);
  EXPECT_EQ(this->player_.Snapshot().MessagesWith(this->RestartPrefix()).size(),
            static_cast<std::size_t>(TypeParam::kRestartLines));
}

TYPED_TEST(StartTest, SameAddressAfterAStopInMidStreamContinues) {
  const std::string url = this->server_.Gated("a");
  this->BeginAndWaitForVideo(url);
  EXPECT_TRUE(this->StopPromptly());
  this->server_.ReleaseGated("a");
  this->StartAgain();
  EXPECT_TRUE(this->downloader_.BeginDownload(url));
  EXPECT_TRUE(this->WaitForVideo(10) && this->WaitForAudio(10));
  EXPECT_TRUE(this->StopPromptly());
  EXPECT_EQ(this->player_.Snapshot().MessagesWith(this->RestartPrefix()).size(),
            static_cast<std::size_t>(TypeParam::kRestartLines));
}

TYPED_TEST(StartTest, OtherAddressAfterAStopPlaysOnlyItsOwnFrames) {
  this->BeginAndWaitForVideo(this->server_.Endless("a"));
  EXPECT_TRUE(this->StopPromptly());
  this->StartAgain();
  this->ExpectToPlayWhole("b", TypeParam::kDueAgain, 1);
  EXPECT_TRUE(this->player_.Snapshot().MessagesWith(this->RestartPrefix()).empty());
  EXPECT_FALSE(this->player_.Snapshot().HasMessage(this->OkLine(this->server_.Endless("a"))));
}

TYPED_TEST(StartTest, SecondStartOfTheSameAddressRequestsItAgainAndOneStopEndsBoth) {
  const std::string url = this->server_.Endless("a");
  this->BeginAndWaitForVideo(url);
  EXPECT_TRUE(this->server_.WaitForRequests(PathOf(url), TypeParam::kAddressRequests));
  EXPECT_TRUE(this->downloader_.BeginDownload(url));
  EXPECT_TRUE(this->server_.WaitForRequests(PathOf(url), TypeParam::kAddressRequests + 1));
  EXPECT_TRUE(this->StopPromptly());
  EXPECT_EQ(this->player_.Snapshot().MessagesWith(this->StartLine(url)).size(), 2U);
  EXPECT_EQ(this->player_.Snapshot().MessagesWith(this->RestartPrefix()).size(),
            static_cast<std::size_t>(TypeParam::kRestartLines));
  EXPECT_FALSE(this->downloader_.EndDownload());
}

TYPED_TEST(StartTest, SecondStartOfAnotherAddressPlaysBesideTheFirst) {
  const std::string url = this->server_.Endless("b");
  this->BeginAndWaitForVideo(this->server_.Endless("a"));
  EXPECT_TRUE(this->downloader_.BeginDownload(url));
  EXPECT_TRUE(this->WaitForMessage(this->OkLine(url)));
  EXPECT_TRUE(this->StopPromptly());
  EXPECT_FALSE(this->downloader_.EndDownload());
}

TYPED_TEST(StartTest, OneStopEndsThreeStarts) {
  for (int i = 0; i < 3; ++i) this->downloader_.BeginDownload(this->server_.Endless("a"));
  EXPECT_TRUE(this->server_.WaitForRequests(1));
  EXPECT_TRUE(this->StopPromptly());
  this->StartAgain();
  this->ExpectToPlayWhole("b", TypeParam::kDueAgain, 1);
  EXPECT_FALSE(this->player_.Snapshot().HasMessage(this->OkLine(this->server_.Endless("a"))));
  EXPECT_EQ(this->server_.CountRequests(PathOf(this->server_.Whole("b"))), 1U);
}

}  // namespace
}  // namespace conformance

}  // namespace stream
