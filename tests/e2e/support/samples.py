"""Samples made by ffmpeg."""

from support.media_tools import make_file


def encoder(seconds, *input_options):
    """A command that makes H.264 with B-frames and AAC, without its output. The same parameters give the same
    stream."""
    command = ["ffmpeg", "-nostdin", "-v", "error", "-y"]
    command += [*input_options, "-f", "lavfi"]
    command += ["-i", f"testsrc2=size=320x240:rate=25:duration={seconds}"]
    command += [*input_options, "-f", "lavfi"]
    command += ["-i", f"sine=frequency=440:sample_rate=44100:duration={seconds}"]
    command += ["-c:v", "libx264", "-preset", "veryfast", "-bf", "2", "-g", "25"]
    return [*command, "-pix_fmt", "yuv420p", "-c:a", "aac", "-b:a", "96k"]


def make_ts(path, seconds):
    return make_file([*encoder(seconds), "-f", "mpegts"], path)


def make_flv(path, seconds):
    return make_file([*encoder(seconds), "-f", "flv"], path)
