// What is asked of an installed libmp4v2 about its tracks.
#include <gtest/gtest.h>

#include "fake_mp4v2.h"
#include "mp4/mp4_tracks.h"

namespace {

constexpr MP4TrackId kTrack = 1;

TEST(Mp4InstalledTracksTest, VideoTrackWithoutANameIsNotAskedForParameterSets) {
  g_fake_mp4v2 = {};
  const Mp4VideoTrack track = DescribeVideoTrack(&g_fake_mp4v2, kTrack);
  EXPECT_EQ(g_fake_mp4v2.parameter_set_calls, 0) << "the library crashes there";
  EXPECT_EQ(track.codec, "");
  EXPECT_FALSE(track.has_headers);
}

TEST(Mp4InstalledTracksTest, SearchAsksATrackWithoutANameForNoParameterSets) {
  g_fake_mp4v2 = {};
  EXPECT_EQ(FindMp4Track(&g_fake_mp4v2, "vide"), MP4_INVALID_TRACK_ID);
  EXPECT_EQ(g_fake_mp4v2.parameter_set_calls, 0) << "the library crashes there";
}

TEST(Mp4InstalledTracksTest, VideoTrackWithANameIsAskedForParameterSets) {
  g_fake_mp4v2 = {"avc1"};
  const Mp4VideoTrack track = DescribeVideoTrack(&g_fake_mp4v2, kTrack);
  EXPECT_EQ(g_fake_mp4v2.parameter_set_calls, 1);
  EXPECT_EQ(track.codec, "H264");
  EXPECT_FALSE(track.has_headers) << "it gave none";
}

}  // namespace
