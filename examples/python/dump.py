"""Writes the first frames of a stream as `stream_host --dump` does: video.es, audio.es and frames.csv.

usage: dump.py LIBRARY ADDRESS DIRECTORY FRAMES   DIRECTORY must exist; ends after 20 s without a frame
"""
import ctypes as c
import itertools
import os
import queue
import sys
import time
import zlib


class Frame(c.Structure):
    _fields_ = [("pts", c.c_uint64), ("dts", c.c_uint64), ("play_time", c.c_uint64),
                ("size", c.c_int32), ("data", c.c_void_p), ("reserved", c.c_uint64)]


FRAME = c.CFUNCTYPE(None, c.c_void_p, c.POINTER(Frame))


class Callbacks(c.Structure):  # a c_void_p field is a callback that stays null
    _fields_ = [("size", c.c_size_t), ("user", c.c_void_p), ("duration", c.c_void_p),
                ("buffered_time", c.c_void_p), ("audio_clock", c.c_void_p), ("audio_frame", FRAME),
                ("video_frame", FRAME), ("message", c.c_void_p), ("play_result", c.c_void_p)]


def frame_callback(kind, frames, start):
    indexes = itertools.count()

    def callback(_user, frame):  # on a thread of the library; the payload is valid until this returns
        it, payload = frame.contents, c.string_at(frame.contents.data, frame.contents.size)
        frames.put((kind, payload, f"{kind},{next(indexes)},{it.pts},{it.dts},{it.play_time},{it.size},"
                    f"{zlib.crc32(payload):08x},{(time.monotonic() - start) * 1000:.3f}\n"))
    return FRAME(callback)


def main(path, address, directory, count):
    library, downloader, frames = c.CDLL(path), c.c_void_p(), queue.Queue()
    audio, video = (frame_callback(kind, frames, time.monotonic()) for kind in ("audio", "video"))
    callbacks = Callbacks(c.sizeof(Callbacks), audio_frame=audio, video_frame=video)
    with (open(f"{directory}/audio.es", "wb") as audio_es, open(f"{directory}/video.es", "wb") as video_es,
          open(f"{directory}/frames.csv", "w") as rows):
        files = {"audio": audio_es, "video": video_es}
        rows.write("kind,index,pts,dts,play,size,crc32,arrival_ms\n")
        result = library.sd_create(c.byref(callbacks), c.byref(downloader)) or library.sd_begin_download(
            downloader, address, c.c_size_t(len(address)))
        try:
            for _ in range(count if result == 0 else 0):
                kind, payload, row = frames.get(timeout=20)
                files[kind].write(payload)
                rows.write(row)
        finally:
            library.sd_destroy(downloader)
    library.sd_result_text.restype = c.c_char_p
    return result and library.sd_result_text(result).decode()


if len(sys.argv) != 5:
    sys.exit(__doc__)
sys.exit(main(sys.argv[1], os.fsencode(sys.argv[2]), sys.argv[3], int(sys.argv[4])))
