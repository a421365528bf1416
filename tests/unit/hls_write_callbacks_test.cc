#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <mutex>
#include <string>

#include "hls/playlist_fetch.h"
#include "hls/segment_download.h"
#include "tests/support/hls_tasks.h"

namespace stream {
namespace {

class SegmentCallbackTest : public HlsTasks {
 protected:
  // Appends `length` bytes of value `kind`, as a transfer does.
  std::size_t Append(std::size_t length, char kind) {
    std::string bytes(length, kind);
    const std::lock_guard lock(stream_.download_mutex);
    return OnSegmentBytes(bytes.data(), 1, length, &stream_);
  }
  std::int32_t Length() {
    const std::lock_guard lock(stream_.download_mutex);
    return stream_.g_downloadLength;
  }
  void SetLength(std::int32_t length) {
    const std::lock_guard lock(stream_.download_mutex);
    stream_.g_downloadLength = length;
  }
};

TEST_F(SegmentCallbackTest, PiecesAreAppended) {
  EXPECT_EQ(Append(3, 'a'), 3U);
  EXPECT_EQ(Append(2, 'b'), 2U);
  EXPECT_EQ(Length(), 5);
  const std::lock_guard lock(stream_.download_mutex);
  EXPECT_EQ(std::string(stream_.g_downloadBuffer->begin(), stream_.g_downloadBuffer->begin() + 5),
            "aaabb");
}

TEST_F(SegmentCallbackTest, SizeAndCountAreMultiplied) {
  std::string bytes(188, 'x');
  const std::lock_guard lock(stream_.download_mutex);
  EXPECT_EQ(OnSegmentBytes(bytes.data(), 94, 2, &stream_), 188U);
  EXPECT_EQ(stream_.g_downloadLength, 188);
}

TEST_F(SegmentCallbackTest, EmptyPieceChangesNothing) {
  const std::lock_guard lock(stream_.download_mutex);
  EXPECT_EQ(OnSegmentBytes(nullptr, 1, 0, &stream_), 0U);
  EXPECT_EQ(stream_.g_downloadLength, 0);
}

TEST_F(SegmentCallbackTest, SegmentOfExactlyTheBufferSizeFits) {
  EXPECT_EQ(Append(15'728'000, 'a'), 15'728'000U);
  EXPECT_EQ(Append(640, 'b'), 640U);
  EXPECT_EQ(Length(), 15'728'640);
  const std::lock_guard lock(stream_.download_mutex);
  EXPECT_EQ(std::count(stream_.g_downloadBuffer->begin(), stream_.g_downloadBuffer->end(), 'a'),
            15'728'000);
  EXPECT_EQ(stream_.g_downloadBuffer->back(), 'b');
}

TEST_F(SegmentCallbackTest, OneByteMoreDropsTheWholeSegment) {
  SetLength(15'728'640 - 2);
  testing::internal::CaptureStdout();
  EXPECT_EQ(Append(3, 'c'), 0U);
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "A segment of more than 15728640 bytes is given up.\n");
  EXPECT_EQ(Length(), 0);
}

TEST_F(SegmentCallbackTest, PieceLargerThanTheBufferIsDropped) {
  testing::internal::CaptureStdout();
  EXPECT_EQ(Append(15'728'641, 'c'), 0U);
  EXPECT_THAT(testing::internal::GetCapturedStdout(), testing::HasSubstr("is given up.\n"));
  EXPECT_EQ(Length(), 0);
}

TEST_F(SegmentCallbackTest, NothingIsTakenAfterAStop) {
  EXPECT_EQ(Append(3, 'a'), 3U);
  hls_.running = false;
  EXPECT_EQ(Append(3, 'a'), 0U);
  EXPECT_EQ(Length(), 3);
}

TEST_F(SegmentCallbackTest, NothingIsTakenWithoutAPipeline) {
  stream_.ForgetActive(&hls_);
  EXPECT_EQ(Append(3, 'a'), 0U);
}

TEST_F(SegmentCallbackTest, LatestPipelineDecides) {
  const HlsTaskState last;  // is not running
  stream_.SetActive(&last);
  EXPECT_EQ(Append(3, 'a'), 0U);
  stream_.ForgetActive(&hls_);  // not the latest one: changes nothing
  stream_.SetActive(&hls_);
  stream_.ForgetActive(&last);
  EXPECT_EQ(Append(3, 'a'), 3U);
}

using TextCallback = std::size_t (*)(char*, std::size_t, std::size_t, void*);

// The same rules apply to both kinds of text.
class PlaylistCallbackTest : public HlsTasks, public testing::WithParamInterface<bool> {
 protected:
  std::string& Text() { return GetParam() ? stream_.g_variantText : stream_.g_playlistText; }
  std::size_t Append(std::string bytes) {
    const TextCallback on_bytes = GetParam() ? OnVariantBytes : OnPlaylistBytes;
    return on_bytes(bytes.data(), 1, bytes.size(), &stream_);
  }

  const MutexLock lock_{stream_.playlist_mutex};
};

INSTANTIATE_TEST_SUITE_P(, PlaylistCallbackTest, testing::Bool(),
                         [](const auto& kind) { return kind.param ? "Variant" : "TopLevel"; });

TEST_P(PlaylistCallbackTest, PiecesAreAppended) {
  EXPECT_EQ(Append("#EXT"), 4U);
  EXPECT_EQ(Append("M3U\n"), 4U);
  EXPECT_EQ(Text(), "#EXTM3U\n");
  Text().clear();
}

TEST_P(PlaylistCallbackTest, NothingIsTakenAfterAStop) {
  hls_.running = false;
  EXPECT_EQ(Append("#EXT"), 0U);
  EXPECT_EQ(Text(), "");
}

TEST_P(PlaylistCallbackTest, EndlessTextEndsItsTransfer) {
  Text().assign(kMaxPlaylistSize - 4, '#');
  EXPECT_EQ(Append("1234"), 4U);
  EXPECT_EQ(Append("5"), 0U);
  EXPECT_EQ(Text().size(), kMaxPlaylistSize);
  Text().clear();
}

// Requests that fail at once for lack of a handle. They only prepare the text for a next body.
class LeftoverTest : public HlsTasks {
 protected:
  // The part of `body` that is kept before the next body.
  std::string LeftOf(const std::string& body) {
    {
      const std::lock_guard lock(stream_.playlist_mutex);
      stream_.g_playlistText = body;
    }
    hls_.playlistHandle.reset();
    EXPECT_FALSE(FetchPlaylist(hls_, {kUrl, true}));
    return PlaylistText();
  }
};

TEST_F(LeftoverTest, EmptyTextStaysEmpty) { EXPECT_EQ(LeftOf(""), ""); }

TEST_F(LeftoverTest, CompleteLinesAreKept) {
  EXPECT_EQ(LeftOf("<html></html>\n"), "<html></html>\n");
  EXPECT_EQ(LeftOf("one\n\ntwo\n"), "one\n\ntwo\n");
}

TEST_F(LeftoverTest, IncompleteLineIsDropped) {
  EXPECT_EQ(LeftOf("<html></html>"), "");
  EXPECT_EQ(LeftOf("#EXTM3U\n#EXTINF:10,\nseg1"), "#EXTM3U\n#EXTINF:10,\n");
}

TEST_F(LeftoverTest, TextOfUpToAMebibyteIsKept) {
  const std::string longest = std::string((1 << 20) - 1, 'x') + "\n";
  EXPECT_EQ(LeftOf(longest), longest);
}

TEST_F(LeftoverTest, LongerTextIsDropped) {
  EXPECT_EQ(LeftOf(std::string((1 << 20) + 1, '\n')), "");
}

TEST_F(LeftoverTest, SameRulesApplyToVariants) {
  const std::lock_guard lock(stream_.playlist_mutex);
  hls_.variantHandle.reset();
  stream_.g_variantText = "x\ny";
  EXPECT_FALSE(FetchVariant(hls_, kUrl));
  EXPECT_EQ(stream_.g_variantText, "x\n");
  stream_.g_variantText.assign((1 << 20) + 1, '\n');
  EXPECT_FALSE(FetchVariant(hls_, kUrl));
  EXPECT_EQ(stream_.g_variantText, "");
}

}  // namespace
}  // namespace stream
