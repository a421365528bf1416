#!/usr/bin/env python3
"""Makes the seeds of fuzz_flv with ffmpeg: fuzz/make_flv_seeds.py. The seeds are committed; run this
script only to change them.

Each seed is a few tags of a real file, unchanged or damaged in one way.
"""

import pathlib
import subprocess

FOLDER = pathlib.Path(__file__).parent / "corpus" / "flv"
HEADER_SIZE = 9
BODY = 15  # after the size of the previous tag and the tag's own header
SIZE = 5

VIDEO = "-f lavfi -i testsrc2=size=64x48:rate=25:duration=0.3"
AUDIO = "-f lavfi -i sine=frequency=440:duration=0.3"
H264 = "-c:v libx264 -preset veryfast -bf 2 -pix_fmt yuv420p -x264-params threads=1"
AAC = "-c:a aac -b:a 32k"
MP3 = "-c:a libmp3lame -b:a 32k -ar 44100"


def make_file(arguments):
    command = f"ffmpeg -v error {arguments} -flags +bitexact -fflags +bitexact -f flv -"
    return subprocess.run(command.split(), check=True, stdout=subprocess.PIPE).stdout


def split(file):
    """Returns the header and the tags. Each tag is preceded by the size of the previous tag."""
    tags = []
    at = HEADER_SIZE
    while at + BODY <= len(file):
        end = at + BODY + int.from_bytes(file[at + SIZE : at + SIZE + 3], "big")
        tags.append(file[at:end])
        at = end
    return file[:HEADER_SIZE], tags


def spoilt(tags, index, offset, value):
    """Replaces some bytes of one tag."""
    result = [bytearray(tag) for tag in tags]
    result[index][offset : offset + len(value)] = value
    return b"".join(result)


def shortened(tags, index, size):
    """Truncates the body of one tag and sets its size to match."""
    tag = tags[index]
    short = tag[:SIZE] + size.to_bytes(3, "big") + tag[SIZE + 3 : BODY + size]
    return b"".join(tags[:index] + [short] + tags[index + 1 :])


def is_kind(tag, kind, packet_type):
    return tag[4] == kind and tag[BODY + 1] == packet_type


def index_of(tags, kind, packet_type):
    return next(i for i, tag in enumerate(tags) if is_kind(tag, kind, packet_type))


def spoilt_tags(tags):
    """Tags with wrong values."""
    avc = index_of(tags, 9, 0)
    video = index_of(tags, 9, 1)
    aac = index_of(tags, 8, 1)
    aac_header = index_of(tags, 8, 0)
    return {
        "tag_without_a_body": spoilt(tags, video, SIZE, b"\0\0\0"),
        "tag_too_short": spoilt(tags, video, SIZE, b"\0\0\x08"),
        "tag_too_long": spoilt(tags, video, SIZE, b"\xff\xff\xff"),
        "nal_too_long": spoilt(tags, video, BODY + 5, b"\0\0\xff\xff"),
        "nal_longer_than_any_tag": spoilt(tags, video, BODY + 5, b"\xff\xff\xff\xfc"),
        "nal_of_no_bytes": spoilt(tags, video, BODY + 5, b"\0\0\0\0"),
        "sps_too_long": spoilt(tags, avc, BODY + 11, b"\xff\xff"),
        "sps_of_no_bytes": spoilt(tags, avc, BODY + 11, b"\0\0"),
        "audio_too_long": spoilt(tags, aac, SIZE, b"\x7f\xff\xff"),
        "audio_of_two_bytes": spoilt(tags, aac, SIZE, b"\0\0\x02"),
        "other_audio_codec": spoilt(tags, aac, BODY, b"\x2f"),
        "other_aac_packet_type": spoilt(tags, aac, BODY + 1, b"\x02"),
        "aac_header_without_a_configuration": shortened(tags, aac_header, 2),
        "aac_header_of_half_a_configuration": shortened(tags, aac_header, 3),
        "avc_header_cut_in_its_sps": shortened(tags, avc, 20),
        "late_timestamp": spoilt(tags, video, SIZE + 3, b"\xff\xff\xff\xff"),
        "unknown_tag_type": spoilt(tags, video, 4, b"\x0c"),
    }


def main():
    FOLDER.mkdir(parents=True, exist_ok=True)
    both = f"{VIDEO} {AUDIO} -map 0:v -map 1:a"
    header, tags = split(make_file(f"{both} {H264} {AAC}"))
    few = tags[:9]
    files = {name: header + body for name, body in spoilt_tags(few).items()}
    files["h264_aac"] = header + b"".join(tags)
    files["few_tags"] = header + b"".join(few)
    files["h264_mp3"] = make_file(f"{both} {H264} {MP3}")[:4000]
    files["several_slices"] = make_file(f"{VIDEO} {H264}:slices=3")
    files["audio_only"] = make_file(f"{AUDIO} {AAC}")[:1500]
    files["long_header"] = header[:5] + b"\0\0\0\x19" + bytes(16) + b"".join(few)
    files["lower_case"] = b"flv" + header[3:] + b"".join(few)
    files["header_alone"] = header
    files["cut_in_a_tag"] = files["few_tags"][:-20]
    files["html_page"] = b"<html><head><title>404 Not Found</title></head></html>\n"
    for name, content in files.items():
        (FOLDER / name).write_bytes(content)


if __name__ == "__main__":
    main()
