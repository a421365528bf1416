#include "host/console/dump.h"

#include <gtest/gtest.h>

#include <thread>

#include "tests/host/host_support.h"

namespace host {
namespace {

class DumpTest : public testing::Test {
 protected:
  DumpTest() : dump_(Dump::Open(directory_.path() / "a" / "b", error_)) {}

  std::string Content(const char* name) const {
    return ContentOf(directory_.path() / "a" / "b" / name);
  }

  TestDirectory directory_;
  std::string error_;
  std::unique_ptr<Dump> dump_;
};

TEST_F(DumpTest, NothingDumpedLeavesEmptyPayloadsAndHeaderLines) {
  ASSERT_NE(dump_, nullptr) << error_;
  EXPECT_TRUE(dump_->Close());
  EXPECT_EQ(Content("video.es"), "");
  EXPECT_EQ(Content("audio.es"), "");
  EXPECT_EQ(Content("frames.csv"), "kind,index,pts,dts,play,size,crc32,arrival_ms\n");
  EXPECT_EQ(Content("events.csv"), "arrival_ms,event,value\n");
}

TEST_F(DumpTest, FramesAreCountedPerKindAndPayloadsAppended) {
  ASSERT_NE(dump_, nullptr) << error_;
  dump_->WriteFrame(FrameKind::kVideo, FrameOf(600, "123456789"), 1.25);
  dump_->WriteFrame(FrameKind::kAudio, FrameOf(0, "a"), 2);
  dump_->WriteFrame(FrameKind::kVideo, FrameOf(8'589'934'590, std::string("\0\n", 2)), 3.0006);
  EXPECT_TRUE(dump_->Close());
  EXPECT_EQ(Content("video.es"), std::string("123456789\0\n", 11));
  EXPECT_EQ(Content("audio.es"), "a");
  // cbf43926 is the published check value of this CRC, for "123456789".
  EXPECT_EQ(Content("frames.csv"),
            "kind,index,pts,dts,play,size,crc32,arrival_ms\n"
            "video,0,600,300,200,9,cbf43926,1.250\n"
            "audio,0,0,0,0,1,e8b7be43,2.000\n"
            "video,1,8589934590,4294967295,2863311530,2,a10cfbe1,3.001\n");
}

TEST_F(DumpTest, EmptyFrameHasARowAndNoPayload) {
  ASSERT_NE(dump_, nullptr) << error_;
  MediaFrame frame = FrameOf(6, "");
  frame.data = nullptr;
  dump_->WriteFrame(FrameKind::kAudio, frame, 0);
  EXPECT_TRUE(dump_->Close());
  EXPECT_EQ(Content("audio.es"), "");
  EXPECT_EQ(Content("frames.csv"),
            "kind,index,pts,dts,play,size,crc32,arrival_ms\naudio,0,6,3,2,0,00000000,0.000\n");
}

TEST_F(DumpTest, EventValuesAreQuoted) {
  ASSERT_NE(dump_, nullptr) << error_;
  dump_->WriteEvent(0.5, "message", "PLAY TS NO:a,b:<p class=\"x\">\n");
  dump_->WriteEvent(7, "duration", "10.033333");
  EXPECT_TRUE(dump_->Close());
  EXPECT_EQ(Content("events.csv"),
            "arrival_ms,event,value\n"
            "0.500,message,\"PLAY TS NO:a,b:<p class=\"\"x\"\">\n\"\n"
            "7.000,duration,10.033333\n");
}

TEST_F(DumpTest, FramesOfTwoThreadsKeepTheOrderOfTheirKind) {
  ASSERT_NE(dump_, nullptr) << error_;
  constexpr int kFrames = 500;
  const auto write = [this](FrameKind kind) {
    for (int i = 0; i < kFrames; ++i) {
      dump_->WriteFrame(kind, FrameOf(static_cast<std::uint64_t>(i), "xy"), 0);
    }
  };
  std::thread video(write, FrameKind::kVideo);
  write(FrameKind::kAudio);
  video.join();
  EXPECT_TRUE(dump_->Close());
  EXPECT_EQ(Content("video.es").size(), 2U * kFrames);
  EXPECT_EQ(Content("audio.es").size(), 2U * kFrames);

  std::ifstream rows(directory_.path() / "a" / "b" / "frames.csv");
  std::string row;
  std::getline(rows, row);
  int next_video = 0;
  int next_audio = 0;
  while (std::getline(rows, row)) {
    int& next = row.starts_with("video") ? next_video : next_audio;
    const std::string index = std::to_string(next++);
    std::string begin = row.substr(0, 5);
    begin.append(",").append(index).append(",").append(index).append(",");
    EXPECT_TRUE(row.starts_with(begin)) << row;
  }
  EXPECT_EQ(next_video, kFrames);
  EXPECT_EQ(next_audio, kFrames);
}

TEST_F(DumpTest, OlderFilesAreReplaced) {
  ASSERT_NE(dump_, nullptr) << error_;
  dump_->WriteFrame(FrameKind::kVideo, FrameOf(1, "old"), 0);
  EXPECT_TRUE(dump_->Close());
  dump_ = Dump::Open(directory_.path() / "a" / "b", error_);
  ASSERT_NE(dump_, nullptr) << error_;
  EXPECT_TRUE(dump_->Close());
  EXPECT_EQ(Content("video.es"), "");
}

TEST_F(DumpTest, DirectoryThatIsAFileIsReported) {
  std::ofstream(directory_.path() / "file") << "x";
  EXPECT_EQ(Dump::Open(directory_.path() / "file", error_), nullptr);
  EXPECT_NE(error_.find("file"), std::string::npos) << error_;
}

TEST_F(DumpTest, FileThatCannotBeCreatedIsReported) {
  std::filesystem::create_directories(directory_.path() / "c" / "audio.es");
  EXPECT_EQ(Dump::Open(directory_.path() / "c", error_), nullptr);
  EXPECT_NE(error_.find("audio.es"), std::string::npos) << error_;
}

TEST_F(DumpTest, FullDeviceMakesTheDumpIncomplete) {
  const std::filesystem::path full = "/dev/full";
  if (!std::filesystem::exists(full)) GTEST_SKIP() << "there is no /dev/full here";
  std::filesystem::create_directories(directory_.path() / "d");
  std::filesystem::create_symlink(full, directory_.path() / "d" / "video.es");
  dump_ = Dump::Open(directory_.path() / "d", error_);
  ASSERT_NE(dump_, nullptr) << error_;
  dump_->WriteFrame(FrameKind::kVideo, FrameOf(1, "x"), 0);
  EXPECT_FALSE(dump_->Close());
}

}  // namespace
}  // namespace host
