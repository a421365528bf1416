"""What ffmpeg and ffprobe, as independent readers, find in a sample."""

import dataclasses
import itertools
import json

from support.media_tools import output_of

_STREAMS = {"video": ("v:0", "h264"), "audio": ("a:0", "adts")}


@dataclasses.dataclass(frozen=True)
class PesPacket:
    pts: int
    dts: int  # equal to pts if the packet carries none
    size: int


def elementary_stream(path, kind):
    """The bytes of the first stream of a kind."""
    stream, form = _STREAMS[kind]
    command = ["ffmpeg", "-nostdin", "-v", "error", "-i", str(path)]
    command += ["-map", f"0:{stream}", "-c", "copy", "-f", form, "-"]
    return output_of(command, path)


def pes_packets(path, kind):
    """The PES packets of the first stream of a kind, unchanged: not cut into access units, and without
    timestamps that they do not carry."""
    command = ["ffprobe", "-v", "error", "-fflags", "+noparse+nofillin"]
    command += ["-select_streams", _STREAMS[kind][0], "-show_packets", "-of", "json", str(path)]
    return [
        PesPacket(packet["pts"], packet.get("dts", packet["pts"]), int(packet["size"]))
        for packet in json.loads(output_of(command, path))["packets"]
    ]


def payloads(path, kind):
    """The payload of each PES packet of the first stream of a kind."""
    stream = elementary_stream(path, kind)
    ends = list(itertools.accumulate(packet.size for packet in pes_packets(path, kind)))
    return [stream[begin:end] for begin, end in zip([0, *ends], ends)]
