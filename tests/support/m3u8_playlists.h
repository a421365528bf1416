// Playlists and the expected results of the parser: the common source of the table tests and of the
// fuzzer's seeds.
#ifndef TESTS_SUPPORT_M3U8_PLAYLISTS_H_
#define TESTS_SUPPORT_M3U8_PLAYLISTS_H_

#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

namespace stream {

namespace m3u8_test {

// The base address of all these playlists.
inline constexpr char kBase[] = "http://host/a/b/list.m3u8";

// The initial value of the caller's sequence number, to detect whether the parser writes to it.
inline constexpr std::int64_t kUntouchedSequence = -77;

struct Playlist {
  std::string name;  // of the test case and of the seed file
  std::string text;
  // One line for the header with the fields that differ from a default header, then one line for
  // each entry.
  std::string expected;
};

// Prints a playlist in GoogleTest's output.
inline void PrintTo(const Playlist& playlist, std::ostream* out) { *out << playlist.name; }

inline std::string Repeated(const std::string& text, int times) {
  std::string all;
  for (int i = 0; i < times; ++i) all += text;
  return all;
}

inline std::vector<Playlist> MediaPlaylists() {
  return {
      {"media",
       "#EXTM3U\n#EXT-X-VERSION:3\n#EXT-X-TARGETDURATION:10\n#EXT-X-MEDIA-SEQUENCE:0\n"
       "#EXT-X-PLAYLIST-TYPE:VOD\n#EXTINF:10.000000,\nlist0.ts\n#EXTINF:9.5,a title, of sorts\n"
       "list1.ts\n#EXT-X-ENDLIST\n",
       "header ended version=3 target=10 total=19.5 sequence=0\n"
       "0: http://host/a/b/list0.ts 10\n"
       "1: http://host/a/b/list1.ts 9.5\n"},
      {"live",
       "#EXTM3U\n#EXT-X-VERSION:3\n#EXT-X-ALLOW-CACHE:NO\n#EXT-X-TARGETDURATION:2\n"
       "#EXT-X-MEDIA-SEQUENCE:4294967300\n#EXTINF:2.0,\nlive4.ts\n#EXTINF:2.0,\nlive5.ts\n",
       "header version=3 target=2 total=4 sequence=4294967300\n"
       "0: http://host/a/b/live4.ts 2\n"
       "1: http://host/a/b/live5.ts 2\n"},
      {"cache_allowed", "#EXTM3U\n#EXT-X-ALLOW-CACHE:YES\n", "header cache\n"},
      {"all_kinds_of_addresses",
       "#EXTM3U\n#EXTINF:1,\nseg.ts?token=a/b\n#EXTINF:1,\n/root/seg.ts\n#EXTINF:1,\n../up.ts\n"
       "#EXTINF:1,\nhttp://other/x.ts\n#EXTINF:1,\nhttps://other/x.ts\n#EXTINF:1,\n//cdn/x.ts\n"
       "#EXTINF:1,\nHTTP://other/x.ts\n",
       "header total=7\n"
       "0: http://host/a/b/seg.ts?token=a/b 1\n"
       "1: http://host/root/seg.ts 1\n"
       "2: http://host/a/b/../up.ts 1\n"
       "3: http://other/x.ts 1\n"
       "4: https://other/x.ts 1\n"
       "5: http://host//cdn/x.ts 1\n"
       "6: http://host/a/b/HTTP://other/x.ts 1\n"},
      {"carriage_returns", "#EXTM3U\r\n#EXTINF:10.0,\r\nseg0.ts\r\n#EXT-X-ENDLIST\r\n",
       "header ended total=10\n0: http://host/a/b/seg0.ts 10\n"},
      {"only_carriage_returns", "#EXTM3U\r#EXTINF:10.0,\rseg0.ts\r", "\n"},
      {"blank_lines_and_indents",
       "\n\n \t\n#EXTM3U  \n\n\t#EXTINF:4,\n\n  \n#\nx\n  seg 0.ts\t\n\n\n#EXT-X-ENDLIST \n \n",
       "header ended total=4\n0: http://host/a/b/seg 0.ts 4\n"},
      {"no_line_end_at_the_end", "#EXTM3U\n#EXTINF:4,\nseg0.ts",
       "header total=4\n0: http://host/a/b/seg0.ts 4\n"},
      {"comments_between_duration_and_address",
       "#EXTM3U\n#EXTINF:4,\n# a comment\n#EXT-X-BYTERANGE:1@0\n#EXT-X-DISCONTINUITY\nseg0.ts\n",
       "header total=4\n0: http://host/a/b/seg0.ts 4\n"},
      {"same_segment_twice", "#EXTM3U\n#EXTINF:4,\nseg0.ts\n#EXTINF:4,\nseg0.ts\n",
       "header total=8\n0: http://host/a/b/seg0.ts 4\n1: http://host/a/b/seg0.ts 4\n"},
  };
}

inline std::vector<Playlist> MasterPlaylists() {
  return {
      {"master",
       "#EXTM3U\n#EXT-X-STREAM-INF:PROGRAM-ID=1,BANDWIDTH=800000,RESOLUTION=1280x720\nhigh.m3u8\n"
       "#EXT-X-STREAM-INF:PROGRAM-ID=1,BANDWIDTH=200000,RESOLUTION=320x180\nlow.m3u8\n",
       "header\n"
       "200000: http://host/a/b/low.m3u8 0 program=1 bandwidth=200000 320x180\n"
       "800000: http://host/a/b/high.m3u8 0 program=1 bandwidth=800000 1280x720\n"},
      {"master_with_quoted_comma",
       "#EXTM3U\n#EXT-X-STREAM-INF:CODECS=\"avc1.64001f,mp4a.40.2\", BANDWIDTH = 5 \nv.m3u8\n",
       "header\n5: http://host/a/b/v.m3u8 0 bandwidth=5\n"},
      {"master_average_bandwidth_is_another_key",
       "#EXTM3U\n#EXT-X-STREAM-INF:AVERAGE-BANDWIDTH=7,BANDWIDTH=5,BANDWIDTH=6\nv.m3u8\n",
       "header\n5: http://host/a/b/v.m3u8 0 bandwidth=5\n"},
      {"master_second_address_of_a_variant",
       "#EXTM3U\n#EXT-X-STREAM-INF:BANDWIDTH=5\nfirst.m3u8\nsecond.m3u8\n",
       "header\n5: http://host/a/b/first.m3u8 0 bandwidth=5\n"},
      {"master_resolution_is_kept_when_the_next_has_none",
       "#EXTM3U\n#EXT-X-STREAM-INF:BANDWIDTH=1,RESOLUTION=640x360\na.m3u8\n"
       "#EXT-X-STREAM-INF:BANDWIDTH=2,RESOLUTION=720xp\nb.m3u8\n"
       "#EXT-X-STREAM-INF:PROGRAM-ID=x\nc.m3u8\n",
       "header\n"
       "0: http://host/a/b/c.m3u8 0 720x360\n"
       "1: http://host/a/b/a.m3u8 0 bandwidth=1 640x360\n"
       "2: http://host/a/b/b.m3u8 0 bandwidth=2 720x360\n"},
      {"master_and_media_in_one",
       "#EXTM3U\n#EXT-X-STREAM-INF:BANDWIDTH=9,RESOLUTION=4x3\nv.m3u8\n#EXTINF:2,\nseg.ts\n",
       "header total=2\n"
       "0: http://host/a/b/seg.ts 2 bandwidth=9 4x3\n"
       "9: http://host/a/b/v.m3u8 0 bandwidth=9 4x3\n"},
      {"master_variant_bears_a_duration_that_waits",
       "#EXTM3U\n#EXTINF:2,\n#EXT-X-STREAM-INF:BANDWIDTH=9\nv.m3u8\n",
       "header total=2\n9: http://host/a/b/v.m3u8 2 bandwidth=9\n"},
  };
}

inline std::vector<Playlist> FaultyPlaylists() {
  return {
      {"empty", "", "\n"},
      {"byte_order_mark", "\xEF\xBB\xBF#EXTM3U\n#EXTINF:4,\nseg0.ts\n",
       "total=4\n0: http://host/a/b/seg0.ts 4\n"},
      {"no_header", "#EXTINF:4,\nseg0.ts\n#EXT-X-ENDLIST\n",
       "ended total=4\n0: http://host/a/b/seg0.ts 4\n"},
      {"header_last", "#EXTINF:4,\nseg0.ts\n#EXTM3U\n",
       "header total=4\n0: http://host/a/b/seg0.ts 4\n"},
      {"header_with_a_tail", "#EXTM3U8\n#EXTM3U x\n#extm3u\n", "\n"},
      {"no_durations", "#EXTM3U\nseg0.ts\nseg1.ts\n#EXT-X-ENDLIST\n", "header ended\n"},
      {"durations_of_zero",
       "#EXTM3U\n#EXTINF:0,\na.ts\n#EXTINF:-0.0,\nb.ts\n#EXTINF:1e-99,\nc.ts\n", "header\n"},
      {"duration_without_a_number", "#EXTM3U\n#EXTINF:2,\n#EXTINF:x,\na.ts\n#EXTINF:,\nb.ts\n",
       "header total=4\n0: http://host/a/b/a.ts 2\n"},
      {"durations_without_a_comma", "#EXTM3U\n#EXTINF:2\na.ts\n#EXTINF: 3 s\nb.ts\n",
       "header total=5\n0: http://host/a/b/a.ts 2\n1: http://host/a/b/b.ts 3\n"},
      {"durations_that_no_segment_has",
       "#EXTM3U\n#EXTINF:-2,\na.ts\n#EXTINF:1e99,\nb.ts\n#EXTINF:nan,\nc.ts\n#EXTINF:0x10,\nd.ts\n",
       "header total=nan\n"
       "0: http://host/a/b/a.ts -2\n"
       "1: http://host/a/b/b.ts inf\n"
       "2: http://host/a/b/c.ts nan\n"
       "3: http://host/a/b/d.ts 16\n"},
      {"numbers_out_of_range",
       "#EXTM3U\n#EXT-X-VERSION:99999999999999999999\n#EXT-X-TARGETDURATION:-2147483649\n"
       "#EXT-X-MEDIA-SEQUENCE:9223372036854775808\n"
       "#EXT-X-STREAM-INF:PROGRAM-ID=-99999999999,BANDWIDTH=3000000000,RESOLUTION=1e9x+2147483648\n"
       "v.m3u8\n#EXT-X-STREAM-INF:BANDWIDTH=-5,RESOLUTION=99999999999x-99999999999\nw.m3u8\n",
       "header version=2147483647 target=-2147483648 sequence=9223372036854775807\n"
       "-5: http://host/a/b/w.m3u8 0 bandwidth=-5 2147483647x-2147483648\n"
       "2147483647: http://host/a/b/v.m3u8 0 program=-2147483648 bandwidth=2147483647 1x0\n"},
      {"numbers_that_are_none",
       "#EXTM3U\n#EXT-X-VERSION:4\n#EXT-X-VERSION:\n#EXT-X-VERSION:+\n#EXT-X-TARGETDURATION: +7s\n"
       "#EXT-X-TARGETDURATION:- 8\n#EXT-X-MEDIA-SEQUENCE:abc\n",
       "header version=4 target=7\n"},
      {"tags_cut_short",
       "#EXTM3U\n#EXTINF\n#EXTINF:\n#EXT-X-STREAM-INF\n#EXT-X-STREAM-INF:\nv.m3u8\n#EXT-X-ENDLIS\n",
       "header\n0: http://host/a/b/v.m3u8 0\n"},
      {"end_with_a_tail", "#EXTM3U\n#EXT-X-ENDLIST-OR-NOT\n", "header ended\n"},
      {"cache_yes_further_on", "#EXTM3U\n#EXT-X-ALLOW-CACHE:NO:YES\n", "header cache\n"},
      {"html_page",
       "<!DOCTYPE html>\n<html><head><title>404</title></head>\n<body>#EXTM3U</body>\n", "\n"},
      {"zero_bytes", std::string("#EXTM3U\0\n#EXTINF:2\0,\na\0b.ts\n", 28),
       std::string("total=2\n0: http://host/a/b/a\0b.ts 2\n", 36)},
  };
}

inline std::vector<Playlist> LongPlaylists() {
  constexpr int kMany = 200;
  std::string numbered;
  for (int i = 0; i < kMany; ++i) numbered += std::to_string(i) + ": http://host/a/b/s.ts 1\n";
  const std::string thousand(1000, '1');
  return {
      {"many_segments", "#EXTM3U\n" + Repeated("#EXTINF:1,\ns.ts\n", kMany) + "#EXT-X-ENDLIST\n",
       "header ended total=200\n" + numbered},
      {"long_lines",
       "#EXTM3U\n#EXTINF:" + std::string(1000, '0') + "2." + std::string(1000, '0') + "," +
           thousand + "\n" + thousand + ".ts\n#EXT-X-STREAM-INF:" + Repeated("A=1,", 250) +
           "BANDWIDTH=" + std::string(1000, '0') + "6," + Repeated(",=", 500) + "\nv.m3u8\n",
       "header total=2\n0: http://host/a/b/" + thousand +
           ".ts 2\n6: http://host/a/b/v.m3u8 0 bandwidth=6\n"},
      {"long_numbers",
       "#EXTM3U\n#EXT-X-VERSION:" + thousand + "\n#EXT-X-MEDIA-SEQUENCE:-" + thousand +
           "\n#EXTINF:-" + thousand + ",\na.ts\n#EXTINF:0." + std::string(1000, '0') +
           "1e1001,\nb.ts\n",
       "header version=2147483647 total=-inf sequence=-9223372036854775808\n"
       "0: http://host/a/b/a.ts -inf\n1: http://host/a/b/b.ts 1\n"},
  };
}

inline std::vector<Playlist> Playlists() {
  std::vector<Playlist> all;
  for (const auto& part :
       {MediaPlaylists(), MasterPlaylists(), FaultyPlaylists(), LongPlaylists()}) {
    all.insert(all.end(), part.begin(), part.end());
  }
  return all;
}

}  // namespace m3u8_test

}  // namespace stream

#endif  // TESTS_SUPPORT_M3U8_PLAYLISTS_H_
