"""Samples made by ffmpeg."""

import subprocess


def make_ts(path, seconds):
    """Writes H.264 with B-frames and AAC in MPEG-TS; the same parameters give the same stream."""
    command = ["ffmpeg", "-nostdin", "-v", "error", "-y"]
    command += ["-f", "lavfi", "-i", f"testsrc2=size=320x240:rate=25:duration={seconds}"]
    command += ["-f", "lavfi", "-i", f"sine=frequency=440:sample_rate=44100:duration={seconds}"]
    command += ["-c:v", "libx264", "-preset", "veryfast", "-bf", "2", "-g", "25"]
    command += ["-pix_fmt", "yuv420p", "-c:a", "aac", "-b:a", "96k", "-f", "mpegts", str(path)]
    subprocess.run(command, check=True, timeout=60)
    return path
