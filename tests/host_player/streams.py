"""A stream of every kind that the player plays. Each function makes one of `seconds` seconds in the directory
`www` and returns the name of the file to play."""

from player import make_colours
from support import hls, mp4, samples

_H264 = ("-c:v", "libx264", "-preset", "veryfast", "-bf", "2")
_H265 = ("-c:v", "libx265", "-preset", "veryfast", "-x265-params", "log-level=error:keyint=25")
_COLOURS = ["red", "blue"]
RATE = 25  # pictures per second, in all streams


def transport_stream(www, seconds):
    samples.make_ts(www / "sample.ts", seconds)
    return "sample.ts"


def h265_in_a_transport_stream(www, seconds):
    make_colours(www / "sample.ts", _COLOURS, seconds / 2, *_H265)
    return "sample.ts"


def flv(www, seconds):
    samples.make_flv(www / "sample.flv", seconds)
    return "sample.flv"


def mp4_file(www, seconds):
    mp4.make_mp4(www / "sample.mp4", seconds, "-movflags", "+faststart")
    return "sample.mp4"


def http_live_streaming(www, seconds):
    hls.make_hls(www, seconds)
    return "list.m3u8"


def h265_in_http_live_streaming(www, seconds):
    make_colours(www / "list.m3u8", _COLOURS, seconds / 2, *_H265, "-f", "hls", "-hls_time", "1",
                 "-hls_playlist_type", "vod")
    return "list.m3u8"


def times_that_jump_in_the_middle(www, seconds):
    first = make_colours(www / "first.ts", ["red"], seconds / 2)
    second = make_colours(www / "second.ts", ["blue"], seconds / 2, *_H264,
                          "-output_ts_offset", "100")
    hls.joined([first, second], www / "sample.ts")
    return "sample.ts"


ALL = (transport_stream, h265_in_a_transport_stream, flv, mp4_file, http_live_streaming,
       h265_in_http_live_streaming, times_that_jump_in_the_middle)
