"""Looks for words that readers of this field stumble over, in comments, test names and documents.

usage: words.py ROOT

Prints each place with the words to use instead; exits with 1 if there is one. Strings of the code do not
count: what is printed or sent is a contract.
"""

import io
import os
import re
import sys
import tokenize
from pathlib import Path

# What to look for -> what to write instead.
WORDS = {
    r"comes?|came|coming": "receive, arrive, be available",
    r"anew|afresh|once more": "again, restart, reset, retry",
    r"pass(?:es|ed)? over|left out|let go of": "skip, drop, discard, release",
    r"giver": "producer, source",
    r"is over|are over": "has finished",
    r"could(?: not)? be had|was had|were had|to be had": "fetch, succeed, fail",
    r"room": "space, capacity",
    r"told|tells?|telling": "report, notify, log, print",
    r"on purpose|deliberate(?:ly)?": "Kept for compatibility",
}
WORD = re.compile(r"\b(?:" + "|".join(f"({pattern})" for pattern in WORDS) + r")\b", re.IGNORECASE)

NOT_OURS = {"build", "out", ".git", "node_modules"}
CODE = {".h", ".cc", ".c"}
HASHES = {".cmake", ".sh", ".txt", ".in", ".yml"}
C_COMMENT = re.compile(r'"(?:\\.|[^"\\\n])*"|\'(?:\\.|[^\'\\\n])*\'|(//[^\n]*|/\*.*?\*/)', re.DOTALL)
TEST_NAME = re.compile(r"\b(?:TEST|TEST_F|TEST_P|TYPED_TEST_P?)\(\s*\w+,\s*(\w+)")
CAMEL = re.compile(r"(?<=[a-z0-9])(?=[A-Z])|(?<=[A-Z])(?=[A-Z][a-z])")


def prose_of_c(text):
    """(offset, prose) of each comment and of each test name, whose words are set apart."""
    for match in C_COMMENT.finditer(text):
        if match[1]:
            yield match.start(1), match[1]
    for match in TEST_NAME.finditer(text):
        yield match.start(1), CAMEL.sub(" ", match[1])


def prose_of_python(text):
    """(line, prose) of comments, docstrings and names of test functions."""
    for token in tokenize.generate_tokens(io.StringIO(text).readline):
        if token.type == tokenize.COMMENT or token.string.startswith('"""'):
            yield token.start[0], token.string
        elif token.type == tokenize.NAME and token.string.startswith("test_"):
            yield token.start[0], token.string.replace("_", " ")


def prose(path):
    """(line, prose) of a file; nothing if it is of an unknown kind."""
    text = path.read_text(encoding="utf-8", errors="replace")
    if path.suffix in CODE:
        for offset, words in prose_of_c(text):
            yield text.count("\n", 0, offset) + 1, words
    elif path.suffix == ".py":
        yield from prose_of_python(text)
    elif path.suffix in HASHES:
        for number, line in enumerate(text.splitlines(), 1):
            yield number, re.sub(r"^[^#]*", "", line)
    elif path.suffix == ".md":
        for number, line in enumerate(text.splitlines(), 1):
            yield number, re.sub(r"`[^`]*`|\"[^\"]*\"", "", line)


def own_files(root):
    for directory, folders, files in os.walk(root):
        folders[:] = [name for name in folders if name not in NOT_OURS]
        yield from (Path(directory) / name for name in files)


def places(root):
    for path in sorted(own_files(root)):
        for first, words in prose(path):
            for match in WORD.finditer(words):
                line = first + words.count("\n", 0, match.start())
                instead = list(WORDS.values())[match.lastindex - 1]
                yield f"{path.relative_to(root)}:{line}: \"{match[0]}\": {instead}"


def main(root):
    found = list(places(Path(root)))
    print(*found, sep="\n")
    sys.exit(1 if found else 0)


if __name__ == "__main__":
    main(sys.argv[1])
