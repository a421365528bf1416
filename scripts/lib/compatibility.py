"""Compares docs/compatibility.md with the sources.

  compatibility.py [ROOT]

Every place that the list names, `file` or `file:name`, must exist, and every source that says "Kept for
compatibility", or its header, must be named. Prints what differs and fails.
"""

import re
import sys
from pathlib import Path

LIST = Path("docs/compatibility.md")
PHRASE = re.compile(r"kept\s+(?://+\s+)?for\s+(?://+\s+)?compatibility", re.IGNORECASE)
PLACE = re.compile(r"`([\w./]+\.(?:h|cc|c|py|cmake|txt))(?::([^`]+))?`")
SOURCES = (".h", ".cc", ".c")
FOLDERS = re.compile(r"set\(STREAM_(?:COMPONENT|INTERFACE)_FOLDERS ([^)]*)\)")


def last_name(place):
    """The last identifier of a qualified name such as Class::~Member."""
    return re.split(r"::|\.", place)[-1]


def component_folders(root):
    """The folders whose sources are compared: cmake/Folders.cmake lists them."""
    return " ".join(FOLDERS.findall((root / "cmake/Folders.cmake").read_text(encoding="utf-8"))).split()


def unit(path):
    """The folder and the name that a source and its header share."""
    return path.parts[0], path.stem


def file_at(root, path):
    """The file that the list names; a header is named as it is included."""
    included = root / Path(path).parts[0] / "include" / path
    return included if included.is_file() else root / path


def wrong_places(root, text):
    """Describes each place in the list that does not exist."""
    for path, name in PLACE.findall(text):
        file = file_at(root, path)
        if not file.is_file():
            yield f"{LIST}: there is no file {path}"
        elif name and last_name(name) not in file.read_text(encoding="utf-8"):
            yield f"{LIST}: {path} does not contain {name}"


def missing_files(root, text):
    """Describes each source that says the phrase and whose unit is not listed."""
    listed = {unit(Path(path)) for path, _ in PLACE.findall(text)}
    for folder in component_folders(root):
        for path in sorted((root / folder).rglob("*")):
            name = path.relative_to(root)
            if (path.suffix in SOURCES and unit(name) not in listed
                    and PHRASE.search(path.read_text(encoding="utf-8"))):
                yield f"{name}: says \"kept for compatibility\", but {LIST} does not name it"


def main(arguments):
    """Returns the exit status."""
    root = Path(arguments[0]) if arguments else Path(__file__).resolve().parents[2]
    text = (root / LIST).read_text(encoding="utf-8")
    differences = [*wrong_places(root, text), *missing_files(root, text)]
    for difference in differences:
        print(difference)
    return 1 if differences else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
