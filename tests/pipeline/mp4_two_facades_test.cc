#include <gtest/gtest.h>

#include <cstddef>
#include <filesystem>
#include <string>
#include <system_error>

#include "mp4/mp4_file_handle.h"
#include "tests/support/mp4_play.h"
#include "tests/support/two_facades.h"

namespace stream {
namespace {

// tests/conformance tests what every pipeline does beside another facade; this file tests what only
// MP4 does.
class Mp4TwoFacadesTest : public Mp4PlayFixture {
 protected:
  Mp4TwoFacadesTest() { ServeMovie(mp4_test::MakeMovie({.samples = 50, .video_size = 900})); }
};

TEST_F(Mp4TwoFacadesTest, EndAfterAnotherFacadesStopClosesTheFile) {
  const std::filesystem::path open_files = "/proc/self/fd";
  // Under wine the folder exists, but it lists the files of wine.
  constexpr bool kIsPosix = std::filesystem::path::preferred_separator == '/';
  if (!kIsPosix || !std::filesystem::exists(open_files))
    GTEST_SKIP() << "the system does not list open files";
  const auto count = [&] {
    std::size_t found = 0;
    std::error_code gone;  // the descriptor that listed the folder is closed by then
    for (const auto& entry : std::filesystem::directory_iterator(open_files)) {
      const auto target = std::filesystem::read_symlink(entry.path(), gone);
      if (!gone && target.filename() == "mebo.mp4") ++found;
    }
    return found;
  };
  downloader_.BeginDownload(server_.Address());
  ASSERT_TRUE(WaitForOutcome());
  if (kKeepMp4Open) {
    EXPECT_GT(count(), 0U);
  }
  PlayOnAnotherFacade(server_.Address(), "PLAY MP4 OK:");
  EXPECT_FALSE(downloader_.EndDownload());
  EXPECT_EQ(count(), 0U);
}

}  // namespace
}  // namespace stream
