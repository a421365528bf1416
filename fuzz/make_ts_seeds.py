#!/usr/bin/env python3
"""Makes the seeds of fuzz_ts_demux with ffmpeg: fuzz/make_ts_seeds.py. The seeds are committed; run this
script only to change them.

Each seed is a few packets of a real stream, unchanged or damaged in one way.
"""

import pathlib
import subprocess

PACKET = 188
FOLDER = pathlib.Path(__file__).parent / "corpus" / "ts_demux"

H264 = "-c:v libx264 -preset veryfast -bf 2 -pix_fmt yuv420p -x264-params threads=1"
H265 = "-c:v libx265 -preset ultrafast -x265-params log-level=none:pools=1"
MPEG2 = "-c:v mpeg2video -bf 2"
MPEG4 = "-c:v mpeg4"
VIDEO = "-f lavfi -i testsrc2=size=64x48:rate=25:duration=0.4"
AUDIO = "-f lavfi -i sine=frequency=440:duration=0.4"
ONE_PROGRAM = f"{VIDEO} {AUDIO} -map 0:v -map 1:a -c:a aac -b:a 32k"
TWO_PROGRAMS = (
    f"{VIDEO} {AUDIO} {VIDEO} {AUDIO} -map 0:v -map 1:a -map 2:v -map 3:a -c:a aac -b:a 32k"
    " -program title=one:st=0:st=1 -program title=two:st=2:st=3"
)


def make_stream(arguments):
    command = f"ffmpeg -v error {arguments} -flags +bitexact -fflags +bitexact -f mpegts -"
    stream = subprocess.run(command.split(), check=True, stdout=subprocess.PIPE).stdout
    return [bytearray(stream[at : at + PACKET]) for at in range(0, len(stream), PACKET)]


def pid(packet):
    return (packet[1] & 0x1F) << 8 | packet[2]


def crc32(section):
    crc = 0xFFFFFFFF
    for byte in section:
        crc ^= byte << 24
        for _ in range(8):
            crc = (crc << 1 ^ (0x04C11DB7 if crc & 0x80000000 else 0)) & 0xFFFFFFFF
    return crc


def sign(packet):
    """Writes the right checksum at the end of the section, if the section's length is within the packet."""
    end = 5 + 3 + ((packet[6] & 0x0F) << 8 | packet[7]) - 4
    if end + 4 <= PACKET:
        packet[end : end + 4] = crc32(packet[5:end]).to_bytes(4, "big")


def copy(packets):
    return [bytearray(packet) for packet in packets]


def essence(packets, count):
    """Returns the PAT, the PMTs and the packets after them, without the service description."""
    return [packet for packet in packets if pid(packet) != 17][:count]


def spoilt(packets, index, offset, value, signed=True):
    result = copy(packets)
    result[index][offset] = value
    if signed:
        sign(result[index])
    return result


def without_later_starts(packets):
    """Clears the start indicator of all packets but the first of each PID."""
    result = copy(packets)
    begun = set()
    for packet in result:
        if pid(packet) in begun:
            packet[1] &= 0xBF
        begun.add(pid(packet))
    return result


def spoilt_tables(stream):
    """PATs and PMTs with wrong values. Packet 0 is the PAT, packet 1 the PMT."""
    return {
        "pat_short_section": spoilt(stream, 0, 7, 12),
        "pat_long_section": spoilt(stream, 0, 7, 188),
        "pat_huge_section": spoilt(stream, 0, 6, 0xBF, signed=False),
        "pat_bad_checksum": spoilt(stream, 0, 20, stream[0][20] ^ 1, signed=False),
        "pat_without_payload": spoilt(stream, 0, 3, 0x20, signed=False),
        "pat_long_adaptation_field": spoilt(spoilt(stream, 0, 3, 0x30), 0, 4, 183, signed=False),
        "pmt_long_program_info": spoilt(stream, 1, 16, 0xFF),
        "pmt_huge_program_info": spoilt(stream, 1, 15, 0xFF),
        "pmt_empty_section": spoilt(stream, 1, 7, 0, signed=False),
        "pmt_long_section": spoilt(stream, 1, 7, 184, signed=False),
        "pmt_long_stream_info": spoilt(stream, 1, 21, 0xFF),
        "pmt_bad_checksum": spoilt(stream, 1, 20, stream[1][20] ^ 1, signed=False),
        "pmt_unknown_video_type": spoilt(stream, 1, 17, 0x99),
        "pmt_video_on_pat_pid": spoilt(spoilt(stream, 1, 18, 0xE0), 1, 19, 0),
    }


def spoilt_packets(stream):
    """PES packets with wrong values. Packet 2 begins one."""
    start = 4 if stream[2][3] & 0x20 == 0 else 5 + stream[2][4]
    gap = copy(stream)
    del gap[4]
    return {
        "pes_long_header": spoilt(stream, 2, start + 8, 0xFF, signed=False),
        "pes_long_adaptation_field": spoilt(stream, 2, 4, 0xFF, signed=False),
        "pes_starts_at_packet_end": spoilt(stream, 2, 4, 181, signed=False),
        "pes_without_end": without_later_starts(stream),
        "packet_without_sync_byte": spoilt(stream, 3, 0, 0, signed=False),
        "continuity_gap": gap,
    }


def main():
    FOLDER.mkdir(parents=True, exist_ok=True)
    h264 = essence(make_stream(f"{ONE_PROGRAM} {H264}"), 16)
    seeds = {
        "h264_aac": h264,
        "h265_aac": essence(make_stream(f"{ONE_PROGRAM} {H265}"), 16),
        "mpeg2_aac": essence(make_stream(f"{ONE_PROGRAM} {MPEG2}"), 16),
        "mpeg4_aac": essence(make_stream(f"{ONE_PROGRAM} {MPEG4}"), 8),
        "video_only": essence(make_stream(f"{VIDEO} {H264}"), 8),
        "two_programs": essence(make_stream(f"{TWO_PROGRAMS} {H264}"), 20),
        **spoilt_tables(h264[:8]),
        **spoilt_packets(h264),
    }
    files = {name: b"".join(packets) for name, packets in seeds.items()}
    files["pes_without_end_long_run"] = files["pes_without_end"] + b"\0"
    files["truncated_packet"] = files["h264_aac"][: 5 * PACKET + 100]
    files["html_page"] = b"<html><head><title>404 Not Found</title></head></html>\n" * 8
    for name, content in files.items():
        (FOLDER / name).write_bytes(content)


if __name__ == "__main__":
    main()
