"""Finds names in a source that Visual C++ lacks, but that clang with GCC's headers cannot refuse."""

import re

# Headers with a dot in their name that Visual C++, Windows or vcpkg's libraries have.
_HEADERS = {
    "CLI/CLI.hpp", "curl/curl.h", "io.h", "mp4v2/mp4v2.h", "nlohmann/json.hpp", "share.h", "stdbool.h",
    "stddef.h", "stdint.h", "timeapi.h", "windows.h", "zlib.h",
}
# Names that mingw's headers declare in spite of the options, or that Visual C++ has only under another name.
_FUNCTIONS = {
    "fdopen", "fileno", "fgetpos64", "fopen64", "fseeko", "fseeko64", "fsetpos64", "ftello", "ftello64",
    "getw", "lseek64", "mempcpy", "mingw_gettimeofday", "mkstemp", "pthread_sigmask", "putw", "sincos",
    "sincosf", "sincosl", "snwprintf", "strlwr_l", "strtok_r", "tempnam", "useconds_t", "vsnwprintf",
    "wmempcpy",
}
# Names with two underscores belong to a compiler. Those in these files work with every compiler, or the
# preprocessor tests for them before they are used.
_COMPILER_NAMES = {
    "common/include/common/format_text.h": {"__GNUC__", "__attribute__"},
    "common/include/common/separate_blocks.h": {"__SANITIZE_ADDRESS__", "__has_feature"},
    "platform/include/platform/mutex.h": {"__attribute__", "__clang__"},
}
_EVERYWHERE = {"__VA_ARGS__", "__autoclassinit2", "__cplusplus", "__declspec"}

_COMMENT_OR_TEXT = re.compile(r'"(?:\\.|[^"\\\n])*"|//[^\n]*|/\*.*?\*/', re.DOTALL)
_INCLUDE = re.compile(r"^[ \t]*#[ \t]*include[ \t]*<([^>]+)>", re.MULTILINE)


def foreign_names(path, text):
    """The foreign names in the source or header with this path, which is relative to the project; sorted."""
    code = _COMMENT_OR_TEXT.sub(" ", text)
    headers = {f"<{name}>" for name in _INCLUDE.findall(code)
               if re.search(r"[./]", name) and name not in _HEADERS}
    words = set(re.findall(r"\b[A-Za-z_]\w*", code))
    reserved = {word for word in words if "__" in word}
    reserved -= _EVERYWHERE | _COMPILER_NAMES.get(path, set())
    return sorted(headers | (words & _FUNCTIONS) | reserved)
