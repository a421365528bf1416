// Transfers and local files that fail, and unusual ones that must still play. Each test runs the
// download task and the play task to their end.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "tests/support/flv_parse.h"
#include "tests/support/flv_tasks.h"
#include "tests/support/local_file.h"
#include "tests/support/test_server.h"

namespace stream {
namespace {

using flv_test::Bytes;
using flv_test::Join;
using flv_test::MakeStream;
using flv_test::MakeStreamOfSize;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

constexpr std::size_t kMebibyte = 1 << 20;
constexpr std::size_t kPreloadLimit = 10 * kMebibyte;

class FlvFaultTest : public FlvTasks {
 protected:
  // Plays the stream at an address and compares every frame with those parsed from memory.
  void ExpectAllFrames(const std::string& url, const Bytes& stream) {
    const FrameDump expected = ParseFlv(stream).frames;
    ResetFrameQueues();
    EXPECT_EQ(DumpText(DownloadAndPlay(url)), DumpText(expected));
    EXPECT_EQ(g_flvStream->DroppedSize(), 0U) << "bytes were received twice or not parsed";
    EXPECT_THAT(player_.Snapshot().messages, ElementsAre("PLAY FLV CACHE_NO OK:" + url));
  }

  TestServer server_;
};

TEST_F(FlvFaultTest, TransferThatSucceedsIsLogged) {
  server_.Serve(MakeStream(3));
  const std::string url = server_.Url("/plain/a.flv");
  std::string console;
  EXPECT_EQ(DownloadAndPlay(url, &console).video.size(), 5U);
  EXPECT_THAT(console, HasSubstr("[DOWNLOAD]: " + url + "\n"));
}

TEST_F(FlvFaultTest, HtmlPageIsRefusedAtItsFirstBlockAndNotLogged) {
  server_.Serve("<html>" + std::string(5'000'000, '.'));
  std::string console;
  const std::string url = server_.Url("/plain/a.flv");
  EXPECT_TRUE(DownloadAndPlay(url, &console).video.empty());
  EXPECT_EQ(console, "ReadHead Err\n");
  EXPECT_THAT(player_.Snapshot().messages, ElementsAre("PLAY FLV NO:" + url));
}

TEST_F(FlvFaultTest, RefusedConnectionIsReportedAsNoStream) {
  std::string url;
  {
    const TestServer gone;
    url = gone.Url("/plain/a.flv");
  }
  std::string console;
  DownloadAndPlay(url, &console);
  EXPECT_EQ(console, "ReadHead Err\n");
  EXPECT_THAT(player_.Snapshot().results, ElementsAre("PLAY:FLV NO:" + url));
}

TEST_F(FlvFaultTest, TruncatedBodyPlaysUpToTheCut) {
  Bytes stream = MakeStream(40);
  server_.Serve(stream);
  std::string console;
  const FrameDump dump = DownloadAndPlay(server_.Url("/cut/a.flv"), &console);
  stream.resize(stream.size() / 2);
  EXPECT_EQ(DumpText(dump), DumpText(ParseFlv(stream).frames));
  EXPECT_THAT(console, Not(HasSubstr("[DOWNLOAD]")));
  EXPECT_THAT(console, HasSubstr("read over\n"));
}

TEST_F(FlvFaultTest, ErrorPageWithoutHtmlIsReportedAsNoFlvFile) {
  std::string console;
  const std::string url = server_.Url("/nowhere/a.flv");
  DownloadAndPlay(url, &console);
  EXPECT_EQ(console, "[DOWNLOAD]: " + url + "\nnot flv file\nReadHead Err\n");
  EXPECT_THAT(player_.Snapshot().messages, ElementsAre("PLAY FLV NO:" + url));
}

TEST_F(FlvFaultTest, BodyInBlocksOfSevenBytesPlaysWhole) {
  const Bytes stream = MakeStream(40);
  server_.Serve(stream);
  EXPECT_EQ(DownloadAndPlay(server_.Url("/pieces/7/a.flv")).video.size(), 42U);
}

TEST_F(FlvFaultTest, MissingLocalFileIsReportedAsNoStream) {
  std::string console;
  DownloadAndPlay("file:///no/such/file.flv", &console);
  EXPECT_EQ(console, "ReadHead Err\n");
  EXPECT_THAT(player_.Snapshot().messages, ElementsAre("PLAY FLV NO:file:///no/such/file.flv"));
}

TEST_F(FlvFaultTest, EmptyLocalFileIsReportedAsNoStream) {
  const std::string url = "file://" + WriteLocalFile("a.flv", {});
  EXPECT_TRUE(DownloadAndPlay(url).video.empty());
  EXPECT_THAT(player_.Snapshot().messages, ElementsAre("PLAY FLV NO:" + url));
}

TEST_F(FlvFaultTest, LocalFileOfThirteenBytesHasNoFrames) {
  const Bytes stream = Join({flv_test::Header(), flv_test::LastBackPointer()});
  ExpectAllFrames("file://" + WriteLocalFile("a.flv", stream), stream);
}

TEST_F(FlvFaultTest, LocalFileOfTenKilobytesPlaysOnce) {
  const Bytes stream = MakeStreamOfSize(10'000);
  ExpectAllFrames("file://" + WriteLocalFile("a.flv", stream), stream);
}

TEST_F(FlvFaultTest, LocalFileOfAMegabytePlaysOnce) {
  const Bytes stream = MakeStreamOfSize(1'000'000, 5000);
  ExpectAllFrames("file://" + WriteLocalFile("a.flv", stream), stream);
}

TEST_F(FlvFaultTest, LocalFileAboveThePreloadLimitPlaysOnce) {
  const Bytes stream = MakeStreamOfSize(12 * kMebibyte, 60'000);
  ExpectAllFrames("file://" + WriteLocalFile("a.flv", stream), stream);
}

// The transfer decodes "%62" as a letter; the preload does not.
TEST_F(FlvFaultTest, LocalFileThatOnlyTheTransferCanOpenPlaysOnce) {
  const Bytes stream = MakeStreamOfSize(12 * kMebibyte, 60'000);
  std::string url = "file://" + WriteLocalFile("only_b.flv", stream);
  ExpectAllFrames(url.replace(url.rfind('b'), 1, "%62"), stream);
}

TEST_F(FlvFaultTest, LocalFileThatOnlyThePreloadCanOpenPlaysOnce) {
  const Bytes stream = MakeStreamOfSize(200'000, 1000);
  const std::string url = "file://" + WriteLocalFile("only_%61.flv", stream);
  std::filesystem::remove("only_a.flv");
  ExpectAllFrames(url, stream);
}

TEST_F(FlvFaultTest, PreloadEndsAtItsLimit) {
  Bytes stream = MakeStreamOfSize(12 * kMebibyte, 60'000);
  const std::string url = "file://" + WriteLocalFile("only_%61.flv", stream);
  std::filesystem::remove("only_a.flv");
  const FrameDump dump = DownloadAndPlay(url);
  stream.resize(kPreloadLimit);  // a multiple of the preload's block size
  EXPECT_EQ(DumpText(dump), DumpText(ParseFlv(stream).frames));
}

TEST_F(FlvFaultTest, ReadOnlyLocalFilePlaysOnceAndIsNotChanged) {
  const Bytes stream = MakeStreamOfSize(300'000, 2000);
  const std::string path = WriteLocalFile("read_only.flv", stream);
  std::filesystem::permissions(path, std::filesystem::perms::owner_read);
  ExpectAllFrames("file://" + path, stream);
  EXPECT_EQ(std::filesystem::file_size(path), stream.size());
  std::filesystem::permissions(path, std::filesystem::perms::owner_all);
}

TEST_F(FlvFaultTest, LocalFileOfAnotherFormatIsReportedAsNoStream) {
  const std::string url = "file://" + WriteLocalFile("a.flv", Bytes(100'000, 0x47));
  DownloadAndPlay(url);
  EXPECT_THAT(player_.Snapshot().messages, ElementsAre("PLAY FLV NO:" + url));
}

}  // namespace
}  // namespace stream
