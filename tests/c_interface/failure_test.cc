// What a facade throws ends in the C functions. The facade of this program does nothing but throw
// what a test wants.
#include <gtest/gtest.h>

#include <new>
#include <stdexcept>
#include <string>

#include "c_interface/stream_downloader_c.h"
#include "public/stream_downloader.h"

namespace {

enum class Thrown { kNothing, kBadAlloc, kRuntimeError, kNumber };

Thrown thrown = Thrown::kNothing;

bool ThrowOrReturnTrue() {
  switch (thrown) {
    case Thrown::kBadAlloc:
      throw std::bad_alloc();
    case Thrown::kRuntimeError:
      throw std::runtime_error("failed");
    case Thrown::kNumber:
      throw 1;  // NOLINT(misc-throw-by-value-catch-by-reference)
    case Thrown::kNothing:
      break;
  }
  return true;
}

}  // namespace

CStreamDownloader::CStreamDownloader(CStreamPlayerImp* player)
    : player_(player),
      hls_(nullptr),
      reserved_(nullptr),
      mp4_(nullptr),
      flv_(nullptr),
      ts_(nullptr) {
  ThrowOrReturnTrue();
}
CStreamDownloader::~CStreamDownloader() = default;
bool CStreamDownloader::BeginDownload(std::string /*url*/) { return ThrowOrReturnTrue(); }
bool CStreamDownloader::EndDownload() { return ThrowOrReturnTrue(); }
bool CStreamDownloader::SetStartPostion(float /*seconds*/) { return ThrowOrReturnTrue(); }

namespace {

struct Failure {
  Thrown thrown;
  sd_result result;
};

class CInterfaceFailureTest : public testing::TestWithParam<Failure> {
 protected:
  CInterfaceFailureTest() { callbacks_.size = sizeof(callbacks_); }
  ~CInterfaceFailureTest() override { thrown = Thrown::kNothing; }

  sd_callbacks callbacks_{};
};

TEST_P(CInterfaceFailureTest, CreateReturnsItAndMakesNothing) {
  thrown = GetParam().thrown;
  sd_downloader* downloader = reinterpret_cast<sd_downloader*>(&callbacks_);
  EXPECT_EQ(sd_create(&callbacks_, &downloader), GetParam().result);
  EXPECT_EQ(downloader, nullptr);
}

TEST_P(CInterfaceFailureTest, EveryOtherFunctionReturnsItAndTheDownloaderStays) {
  sd_downloader* downloader = nullptr;
  ASSERT_EQ(sd_create(&callbacks_, &downloader), SD_OK);
  thrown = GetParam().thrown;
  EXPECT_EQ(sd_begin_download(downloader, "http", 4), GetParam().result);
  EXPECT_EQ(sd_set_start_position(downloader, 1), GetParam().result);
  EXPECT_EQ(sd_end_download(downloader), GetParam().result);
  thrown = Thrown::kNothing;
  EXPECT_EQ(sd_begin_download(downloader, "http", 4), SD_OK);
  EXPECT_EQ(sd_destroy(downloader), SD_OK);
}

INSTANTIATE_TEST_SUITE_P(EveryKind, CInterfaceFailureTest,
                         testing::Values(Failure{Thrown::kBadAlloc, SD_ERROR_OUT_OF_MEMORY},
                                         Failure{Thrown::kRuntimeError, SD_ERROR_OTHER},
                                         Failure{Thrown::kNumber, SD_ERROR_OTHER}));

}  // namespace
