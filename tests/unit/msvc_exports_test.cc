#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstring>
#include <limits>
#include <string>

#include "msvc/msvc_string.h"
#include "msvc/players.h"
#include "public/stream_downloader.h"
#include "tests/support/recording_player.h"

namespace stream {

extern "C" {
CStreamDownloader* MsvcConstruct(void* memory, CStreamPlayerImp* player);
void MsvcDestroy(CStreamDownloader* facade);
CStreamDownloader* MsvcAssign(CStreamDownloader* to, const CStreamDownloader* from);
bool MsvcBeginDownload(CStreamDownloader* facade, msvc::String* url);
bool MsvcEndDownload(CStreamDownloader* facade);
bool MsvcSetStartPostion(CStreamDownloader* facade, float seconds);
}

namespace {

// A facade as a Visual C++ host creates it. On Windows its player gets no line here, because the
// strings of this program are not those of Visual C++.
class MsvcFacade {
 public:
  explicit MsvcFacade(CStreamPlayerImp* player) { MsvcConstruct(memory_.data(), player); }
  ~MsvcFacade() { MsvcDestroy(Get()); }
  MsvcFacade(const MsvcFacade&) = delete;
  MsvcFacade& operator=(const MsvcFacade& other) {
    EXPECT_EQ(MsvcAssign(Get(), other.Get()), Get());
    return *this;
  }

  CStreamDownloader* Get() { return reinterpret_cast<CStreamDownloader*>(memory_.data()); }
  const CStreamDownloader* Get() const {
    return reinterpret_cast<const CStreamDownloader*>(memory_.data());
  }
  const void* FirstField() const {
    const void* field = nullptr;
    std::memcpy(&field, memory_.data(), sizeof(field));
    return field;
  }

 private:
  alignas(CStreamDownloader) std::array<unsigned char, sizeof(CStreamDownloader)> memory_{};
};

TEST(MsvcExportsTest, PlayerIsKnownAndInTheFirstFieldUntilTheFacadeIsDestroyed) {
  RecordingPlayer player;
  {
    const MsvcFacade facade(&player);
    EXPECT_TRUE(msvc::IsPlayer(&player));
    EXPECT_EQ(facade.FirstField(), &player);
  }
  EXPECT_FALSE(msvc::IsPlayer(&player));
}

TEST(MsvcExportsTest, FacadeWithoutAPlayerIsCreatedAndDestroyed) {
  const MsvcFacade facade(nullptr);
  EXPECT_EQ(facade.FirstField(), nullptr);
}

TEST(MsvcExportsTest, AssignedPlayerIsKnownAsLongAsEitherFacadeExists) {
  RecordingPlayer player;
  RecordingPlayer other;
  MsvcFacade assigned(&other);
  {
    const MsvcFacade facade(&player);
    assigned = facade;
  }
  EXPECT_EQ(assigned.FirstField(), &player);
  EXPECT_TRUE(msvc::IsPlayer(&player));
  EXPECT_FALSE(msvc::IsPlayer(&other));
}

// The library destroys the argument. Sanitizers report a leak or a second release.
TEST(MsvcExportsTest, AddressIsDestroyed) {
  MsvcFacade facade(nullptr);
  msvc::String url = msvc::MakeString(std::string(5000, 'a'));
  EXPECT_FALSE(MsvcBeginDownload(facade.Get(), &url));
}

TEST(MsvcExportsTest, ExceptionBecomesFalse) {
  MsvcFacade facade(nullptr);
  msvc::String url{};
  url.size = std::numeric_limits<std::size_t>::max() / 2 + 1;  // longer than any std::string
  url.capacity = msvc::String::kInside - 1;
  EXPECT_FALSE(MsvcBeginDownload(facade.Get(), &url));
}

TEST(MsvcExportsTest, MembersReturnWhatTheFacadeReturns) {
  MsvcFacade facade(nullptr);
  EXPECT_FALSE(MsvcSetStartPostion(facade.Get(), 1));
  EXPECT_FALSE(MsvcEndDownload(facade.Get()));
  msvc::String url = msvc::MakeString("file:///no/such.m3u8");
  EXPECT_TRUE(MsvcBeginDownload(facade.Get(), &url));
  EXPECT_TRUE(MsvcSetStartPostion(facade.Get(), 1));
  EXPECT_TRUE(MsvcEndDownload(facade.Get()));
}

}  // namespace
}  // namespace stream
