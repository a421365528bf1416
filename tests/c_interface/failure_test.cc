// Exceptions thrown by the facade end in the C functions. In this program the facade does nothing
// but throw the exception that a test sets.
#include <gtest/gtest.h>

#include <exception>
#include <new>
#include <stdexcept>
#include <string>

#include "c_interface/stream_downloader_c.h"
#include "public/stream_downloader.h"

namespace {

std::exception_ptr thrown;  // thrown by every member except the destructor, if not null

bool ThrowOrReturnTrue() {
  if (thrown != nullptr) std::rethrow_exception(thrown);
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
// An exception thrown by a destructor would end the process.
CStreamDownloader::~CStreamDownloader() { EXPECT_EQ(thrown, nullptr); }
bool CStreamDownloader::BeginDownload(std::string /*url*/) { return ThrowOrReturnTrue(); }
bool CStreamDownloader::EndDownload() { return ThrowOrReturnTrue(); }
bool CStreamDownloader::SetStartPostion(float /*seconds*/) { return ThrowOrReturnTrue(); }

namespace {

struct Failure {
  std::exception_ptr thrown;
  sd_result result;
};

class CInterfaceFailureTest : public testing::TestWithParam<Failure> {
 protected:
  CInterfaceFailureTest() { callbacks_.size = sizeof(callbacks_); }
  ~CInterfaceFailureTest() override { thrown = nullptr; }

  sd_callbacks callbacks_{};
};

TEST_P(CInterfaceFailureTest, CreateReturnsTheErrorAndNoDownloader) {
  thrown = GetParam().thrown;
  sd_downloader* downloader = reinterpret_cast<sd_downloader*>(&callbacks_);
  EXPECT_EQ(sd_create(&callbacks_, &downloader), GetParam().result);
  EXPECT_EQ(downloader, nullptr);
}

TEST_P(CInterfaceFailureTest, EveryOtherFunctionReturnsTheErrorAndTheDownloaderStaysUsable) {
  sd_downloader* downloader = nullptr;
  ASSERT_EQ(sd_create(&callbacks_, &downloader), SD_OK);
  thrown = GetParam().thrown;
  EXPECT_EQ(sd_begin_download(downloader, "http", 4), GetParam().result);
  EXPECT_EQ(sd_set_start_position(downloader, 1), GetParam().result);
  EXPECT_EQ(sd_end_download(downloader), GetParam().result);
  EXPECT_EQ(sd_destroy(downloader), GetParam().result);
  thrown = nullptr;
  EXPECT_EQ(sd_begin_download(downloader, "http", 4), SD_OK);
  EXPECT_EQ(sd_destroy(downloader), SD_OK);
}

INSTANTIATE_TEST_SUITE_P(
    EveryKind, CInterfaceFailureTest,
    testing::Values(Failure{std::make_exception_ptr(std::bad_alloc()), SD_ERROR_OUT_OF_MEMORY},
                    Failure{std::make_exception_ptr(std::runtime_error("failed")), SD_ERROR_OTHER},
                    Failure{std::make_exception_ptr(1), SD_ERROR_OTHER}));

}  // namespace
