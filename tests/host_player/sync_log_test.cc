#include "host/player/sync_log.h"

#include <gtest/gtest.h>

#include "tests/host/host_support.h"

namespace player {
namespace {

TEST(SyncLogTest, EachComparisonIsALine) {
  const TestDirectory directory;
  const std::filesystem::path file = directory.path() / "sync.csv";
  std::string error;
  const auto log = SyncLog::Open(file, error);
  ASSERT_NE(log, nullptr) << error;
  log->Add(1.48, 1.4785);
  log->Add(100, 100.0000014);
  EXPECT_TRUE(log->Close());
  EXPECT_EQ(ContentOf(file),
            "picture_seconds,sound_seconds\n1.480000,1.478500\n100.000000,100.000001\n");
}

TEST(SyncLogTest, FileThatCannotBeWrittenIsRefused) {
  const TestDirectory directory;
  std::string error;
  EXPECT_EQ(SyncLog::Open(directory.path() / "none" / "sync.csv", error), nullptr);
  EXPECT_NE(error.find("cannot write"), std::string::npos);
}

}  // namespace
}  // namespace player
