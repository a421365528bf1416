#include "common/user_agent.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "common/http_transfer.h"

namespace stream {
namespace {

using testing::HasSubstr;

TEST(UserAgentTest, IosMarkerSelectsTheIphoneAgent) {
  EXPECT_STREQ(UserAgentFor("http://h/a.ts?x=1&pt=ios&y=2"),
               "Mozilla/5.0 (iPhone; CPU iPhone OS 5_1_1 like Mac OS X) AppleWebKit/534.46 (KHTML, "
               "like Gecko) Version/5.1 Mobile/9B206 Safari/7534.48.3");
}

TEST(UserAgentTest, AndroidMarkerSelectsTheAndroidAgent) {
  EXPECT_STREQ(UserAgentFor("http://h/a.ts?x=1&pt=android&y=2"),
               "Mozilla/5.0 (Linux; U; Android 4.0.3; zh-cn; M032 Build/IML74K) "
               "AppleWebKit/534.30 (KHTML, like Gecko) Version/4.0 Mobile Safari/534.30");
}

TEST(UserAgentTest, AndroidHasPriorityIfBothMarkersArePresent) {
  EXPECT_THAT(UserAgentFor("http://h/a.ts?x&pt=ios&pt=android&"), HasSubstr("Android"));
}

TEST(UserAgentTest, MarkerAtTheStartDoesNotCount) {
  EXPECT_EQ(UserAgentFor("&pt=android&"), nullptr);
  EXPECT_THAT(UserAgentFor("&pt=android&pt=ios&"), HasSubstr("iPhone"));
}

TEST(UserAgentTest, MarkersAreCaseSensitiveAndWhole) {
  EXPECT_EQ(UserAgentFor("http://h/a.ts?x&pt=IOS&"), nullptr);
  EXPECT_EQ(UserAgentFor("http://h/a.ts?x&pt=ios"), nullptr);
}

TEST(UserAgentTest, SetUserAgentReturnsWhetherOneWasSet) {
  const CurlHandle handle = MakeCurlHandle();
  ASSERT_NE(handle, nullptr);
  EXPECT_TRUE(SetUserAgent(handle.get(), "http://h/a.ts?x&pt=ios&"));
  EXPECT_FALSE(SetUserAgent(handle.get(), "http://h/a.ts"));
}

}  // namespace
}  // namespace stream
