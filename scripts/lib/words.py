"""Looks for words that readers of this field stumble over, in comments, test names and documents.

usage: words.py ROOT

Prints each word found as FILE:LINE: "WORD": BETTER WORDS; exits with 1 if there is one. Strings
of the code do not count: what is printed or sent is a contract.
"""

import io
import os
import re
import sys
import tokenize
from pathlib import Path

# What to look for -> what to write instead.
WORDS = {
    r"what (?:came|waits)": "received bytes, pending frames",
    r"comes?|came|coming": "receive, arrive, be available",
    r"anew|afresh|once more": "again, restart, reset, retry",
    r"pass(?:es|ed)? over|left out|let go of": "skip, drop, discard, release",
    r"givers?": "producer, source",
    r"takers?": "consumer, sink",
    r"lies|lay(?! out)|lying": "be stored, be at",
    r"in front of": "before",
    r"is over|are over": "has finished",
    r"could(?: not)? be had|was had|were had|to be had": "fetch, succeed, fail",
    r"rooms?": "space, capacity",
    r"told|tells?|telling": "report, notify, log, print",
    r"on purpose|deliberate(?:ly)?": "Kept for compatibility",
}
# Between two words there may be a line break and the mark of a comment.
GAP = r"\s+(?:(?://+<?|#+|\*)\s+)?"
WORD = re.compile(
    r"\b(?:" + "|".join(f"({pattern.replace(' ', GAP)})" for pattern in WORDS) + r")\b", re.IGNORECASE)

NOT_OURS = {"build", "out", ".git", "node_modules"}
CODE = {".h", ".cc", ".c", ".js", ".mjs", ".css"}
HASHES = {".cmake", ".sh", ".txt", ".in", ".yml"}
# Comments, and what may contain the beginning of a comment: raw strings, strings, characters (but no digit
# separators) and the templates of JavaScript.
C_COMMENT = re.compile(
    r"""R"(?P<mark>\w*)\(.*?\)(?P=mark)"|"(?:\\.|[^"\\\n])*"|(?<![0-9a-fA-F])'(?:\\.|[^'\\\n])*'|"""
    r"""`(?:\\.|[^`\\])*`|(?P<comment>//[^\n]*|/\*.*?\*/)""", re.DOTALL)
TEST_NAME = re.compile(r"\b(?:TEST|TEST_F|TEST_P|TYPED_TEST_P?)\(\s*\w+,\s*(\w+)")
CAMEL = re.compile(r"(?<=[a-z0-9])(?=[A-Z])|(?<=[A-Z])(?=[A-Z][a-z])")


def prose_of_c(text):
    """(line, prose) of each comment and of each test name, whose words are set apart."""
    for match in C_COMMENT.finditer(text):
        if match["comment"]:
            yield text.count("\n", 0, match.start()) + 1, match["comment"]
    for match in TEST_NAME.finditer(text):
        yield text.count("\n", 0, match.start()) + 1, CAMEL.sub(" ", match[1])


def prose_of_python(text):
    """(line, prose) of comments, docstrings and names of test functions."""
    for token in tokenize.generate_tokens(io.StringIO(text).readline):
        if token.type == tokenize.COMMENT or token.string.startswith('"""'):
            yield token.start[0], token.string
        elif token.type == tokenize.NAME and token.string.startswith("test_"):
            yield token.start[0], token.string.replace("_", " ")


def prose_of_lines(text, not_prose):
    for number, line in enumerate(text.splitlines(), 1):
        yield number, re.sub(not_prose, "", line)


def is_with_hashes(path, text):
    """Whether its comments begin with #. Scripts and settings may have no suffix."""
    return path.suffix in HASHES or not path.suffix and (text.startswith("#!") or path.name.startswith("."))


def prose(path):
    """(line, prose) of the parts of a file; nothing if it is of an unknown kind."""
    text = path.read_text(encoding="utf-8", errors="replace")
    if path.suffix in CODE:
        yield from prose_of_c(text)
    elif path.suffix == ".py":
        yield from prose_of_python(text)
    elif path.suffix == ".md":
        yield from prose_of_lines(text, r"`[^`]*`|\"[^\"]*\"")
    elif is_with_hashes(path, text):
        yield from prose_of_lines(text, r"^[^#]*")


def joined(parts):
    """Joins the parts that are on consecutive lines, since a sentence may continue on the next line."""
    begin, text = 0, ""
    for line, part in parts:
        if text and line == begin + text.count("\n") + 1:
            text += "\n" + part
            continue
        yield begin, text
        begin, text = line, part
    yield begin, text


def own_files(root):
    for directory, folders, files in os.walk(root):
        folders[:] = [name for name in folders if name not in NOT_OURS]
        yield from (Path(directory) / name for name in files)


def findings(root):
    for path in sorted(own_files(root)):
        for first, text in joined(prose(path)):
            for match in WORD.finditer(text):
                line = first + text.count("\n", 0, match.start())
                instead = list(WORDS.values())[match.lastindex - 1]
                word = re.sub(GAP, " ", match[0])
                yield f"{path.relative_to(root)}:{line}: \"{word}\": {instead}"


def main(root):
    found = list(findings(Path(root)))
    for line in found:
        print(line)
    sys.exit(1 if found else 0)


if __name__ == "__main__":
    main(sys.argv[1])
