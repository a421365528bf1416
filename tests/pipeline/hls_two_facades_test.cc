#include <gtest/gtest.h>

#include "tests/support/hls_play.h"
#include "tests/support/two_facades.h"

namespace {

using ts_test::MakeStream;

using HlsTwoFacadesTest = HlsPlay;

TEST_F(HlsTwoFacadesTest, SeekAndStartAfterAnotherFacadeAndItsPlayerAreGone) {
  PutOnDemand(MakeStream(40), 4);
  downloader_.BeginDownload(ListUrl());
  ASSERT_TRUE(WaitForVideo(5));
  PlayOnAnotherFacade(ListUrl(), "PLAY M3U8 OK:");
  EXPECT_TRUE(downloader_.EndDownload());
  player_.Forget();
  downloader_.SetStartPostion(0);
  downloader_.BeginDownload(ListUrl());
  EXPECT_TRUE(WaitForVideo(30));
  EXPECT_TRUE(Stop());
  const Record record = player_.Snapshot();
  EXPECT_EQ(record.MessagesWith("PLAY M3U8 StartPostion:").size(), 1U);
  EXPECT_EQ(record.MessagesWith("PLAY M3U8 OK:").size(), 1U);
}

}  // namespace
