// The calls to an installed libmp4v2 that query its tracks.
#include <gtest/gtest.h>

#include "fake_mp4v2.h"
#include "mp4/mp4_tracks.h"

namespace stream {
namespace {

constexpr MP4TrackId kTrack = 1;

TEST(Mp4InstalledTracksTest, ParameterSetsOfATrackWithoutANameAreNotRequested) {
  g_fake_mp4v2 = {};
  const Mp4VideoTrack track = DescribeVideoTrack(&g_fake_mp4v2, kTrack);
  EXPECT_EQ(g_fake_mp4v2.parameter_set_calls, 0) << "the library crashes in this call";
  EXPECT_EQ(track.codec, "");
  EXPECT_FALSE(track.has_headers);
}

TEST(Mp4InstalledTracksTest, SearchRequestsNoParameterSetsOfATrackWithoutAName) {
  g_fake_mp4v2 = {};
  EXPECT_EQ(FindMp4Track(&g_fake_mp4v2, "vide"), MP4_INVALID_TRACK_ID);
  EXPECT_EQ(g_fake_mp4v2.parameter_set_calls, 0) << "the library crashes in this call";
}

TEST(Mp4InstalledTracksTest, ParameterSetsOfATrackWithANameAreRequested) {
  g_fake_mp4v2 = {"avc1"};
  const Mp4VideoTrack track = DescribeVideoTrack(&g_fake_mp4v2, kTrack);
  EXPECT_EQ(g_fake_mp4v2.parameter_set_calls, 1);
  EXPECT_EQ(track.codec, "H264");
  EXPECT_FALSE(track.has_headers) << "the library returned none";
}

}  // namespace
}  // namespace stream
