"""Runs clang-tidy over all sources of the project, in batches of sources with compatible options.

  tidy.py BUILD_DIRECTORY... [-- FILE...]

The build directories must be configured. Each source is checked with the options of the first directory
that compiles it, and in a batch also with the macros of the other sources. A source that none of them
compiles is an error, unless OTHER_SYSTEM or NEIGHBOUR names it, so that no new folder is missed. With
FILEs only those are checked.

clang-tidy spends most of its time on headers. Therefore sources with compatible options are joined into
one source, a batch, unless they define the same name. If a batch has no findings, neither have its
sources. If it has some, its sources are checked one by one, and only those findings count.
"""

import json
import os
import re
import shlex
import shutil
import subprocess
import sys
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
WORK = ROOT / "build" / "tidy"
NOT_OURS = {"build", "out", ".git"}
CONFIG = ".clang-tidy"

# Compiled for Windows only, with compiler options that clang-tidy does not accept.
OTHER_SYSTEM = re.compile(r"_windows\.cc$|^tests/windows/(library|msvc|paths)/")
# Not compiled by any of the presets in use, but with the options of the source named here: the report
# without its page, sources of the Windows library only, the host that uses the installed library, and
# sources that tests compile.
NEIGHBOUR = {
    "msvc/auto_class_init.cc": "msvc/exports.cc",
    "msvc/player_lines_msvc.cc": "msvc/exports.cc",
    "host/shared/report_none.cc": "host/shared/text.cc",
    "tests/package/consumer/host.cc": "host/console/main.cc",
    "tests/structure/lock_checks/call_with_outer_lock.cc": "common/thread_pool.cc",
    "tests/structure/lock_checks/call_without_mutex.cc": "common/thread_pool.cc",
    "tests/structure/lock_checks/correct_use.cc": "common/thread_pool.cc",
    "tests/structure/lock_checks/lock_twice.cc": "common/thread_pool.cc",
    "tests/structure/lock_checks/read_pointee_without_mutex.cc": "common/thread_pool.cc",
    "tests/structure/lock_checks/read_while_unlocked.cc": "common/thread_pool.cc",
    "tests/structure/lock_checks/read_without_mutex.cc": "common/thread_pool.cc",
    "tests/structure/lock_checks/wrong_order.cc": "common/thread_pool.cc",
    "tests/structure/lock_checks/wrong_order_of_last.cc": "common/thread_pool.cc",
}

# Checks replaced by unused_names, because in a batch another source may use the name.
SEEN_BY_UNUSED_NAMES = "-misc-unused-using-decls,-misc-unused-alias-decls"

# How far the static analyzer follows one function: a third of the default, which takes less than half the
# time.
ANALYZER_LIMIT = [f"--extra-arg={word}" for word in
                  ("-Xclang", "-analyzer-config", "-Xclang", "max-nodes=75000")]

MOST_LINES = 3000  # per batch; larger batches would leave a processor idle at the end
# The options that affect the preprocessor and the parser. Optimisation, warnings and sanitizers do not matter
# here.
OPTION = re.compile(r"-([DUI].+|std=.+|isystem)$")
TAKES_VALUE = ("-isystem",)
# A line that begins in the first column and defines a name. The first part excludes lines that define none.
DEFINITION = re.compile(r"(?!TEST|TYPED_TEST|INSTANTIATE|namespace|extern|template|public|private|[ #/}])"
                        r".*?(?<!::)\b(\w+)(?=\s*(?:[({=;\[]|:(?!:)|$))")
USING = re.compile(r"using [\w:]+::(\w+);")
KEYWORDS = {"auto", "bool", "const", "default", "final", "int", "override", "void"}


def own_sources():
    for directory, folders, files in os.walk(ROOT):
        if Path(directory) == ROOT:
            folders[:] = [folder for folder in folders if folder not in NOT_OURS
                          and not (ROOT / folder / "CMakeCache.txt").exists()]
        for name in files:
            if name.endswith((".cc", ".c")):
                yield str((Path(directory) / name).relative_to(ROOT))


def wanted_options(command):
    """Yields the options of a compile command that affect the meaning of the source."""
    words = iter(shlex.split(command)[1:])
    for word in words:
        if OPTION.match(word):
            yield word
            if word in TAKES_VALUE:
                yield next(words, "")


def sources_of(entry):
    """Returns the sources of a compile command: several if CMake has joined them into one."""
    if "/Unity/" not in entry["file"]:
        return [entry["file"]]
    return re.findall(r'^#include "(.+)"$', Path(entry["file"]).read_text(encoding="utf-8"), re.MULTILINE)


def compile_options(directories):
    """Returns the options of each source, by its path."""
    options = {}
    for directory in directories:
        entries = json.loads((directory / "compile_commands.json").read_text(encoding="utf-8"))
        for entry in entries:
            for source in sources_of(entry):
                options.setdefault(source, tuple(wanted_options(entry["command"])))
    found, escaped = {}, []
    for source in sorted(own_sources()):
        if OTHER_SYSTEM.search(source):
            continue
        path = str(ROOT / NEIGHBOUR.get(source, source))
        if path in options:
            found[source] = options[path]
        else:
            escaped.append(source)
    if escaped:
        sys.exit("not compiled by any of the presets, and therefore not checked:\n  " + "\n  ".join(escaped))
    return found


def config_folder(source):
    """Returns the folder of the configuration that applies to the source, '.' for the project's."""
    folder = (ROOT / source).parent
    while not (folder / CONFIG).exists():
        folder = folder.parent
    return str(folder.relative_to(ROOT))


class Names:
    """The names in some sources: `own` can be used in their own source only, `common` in every source,
    `used` maps the names of `using` lines to these lines, and `mentioned` has every word."""

    def __init__(self, text=""):
        self.own, self.common, self.used = set(), set(), {}
        self.mentioned = set(re.findall(r"\w+", text))
        is_own = False
        for line in text.splitlines():
            if line in ("namespace {", "}  // namespace"):
                is_own = line == "namespace {"
            elif match := USING.match(line):
                self.used[match[1]] = line
            elif (match := DEFINITION.match(line)) and match[1] not in KEYWORDS:
                (self.own if is_own or line.startswith("static ") else self.common).add(match[1])

    def add(self, other):
        self.own |= other.own
        self.common |= other.common
        self.used |= other.used
        self.mentioned |= other.mentioned

    def clash_with(self, other):
        """Whether joining the sources could change the meaning of a name in one of them."""
        both_used = self.used.keys() & other.used.keys()
        return not (self.own.isdisjoint(other.mentioned) and other.own.isdisjoint(self.mentioned)
                    and self.common.isdisjoint(other.common)
                    and all(self.used[name] == other.used[name] for name in both_used))


class Options:
    """The options of some sources: macros with their values, and everything else."""

    def __init__(self, words):
        definitions = [word[2:].partition("=") for word in words if word.startswith("-D")]
        self.macros = {name: value for name, _, value in definitions}
        self.others = tuple(word for word in words if not word.startswith("-D"))

    def agree_with(self, other):
        """Whether a source with the other options may join: this one has all of its options, no macro
        has two values, and assert() is the same."""
        return (set(self.others) >= set(other.others)
                and ("NDEBUG" in self.macros) == ("NDEBUG" in other.macros)
                and all(self.macros.get(name, value) == value for name, value in other.macros.items()))

    def words(self):
        macros = [f"-D{name}={value}" if value else f"-D{name}" for name, value in self.macros.items()]
        return (*macros, *self.others)


class Batch:
    def __init__(self, folder, options):
        self.folder = folder
        self.options = options
        self.sources = []
        self.lines = 0
        self.names = Names()

    def take(self, source, folder, options):
        """Adds the source, unless its size, its names or its options do not fit."""
        if folder != self.folder or not self.options.agree_with(options):
            return False
        text = (ROOT / source).read_text(encoding="utf-8")
        lines, names = text.count("\n"), Names(text)
        if self.sources and (self.lines + lines > MOST_LINES or self.names.clash_with(names)):
            return False
        self.sources.append(source)
        self.lines += lines
        self.names.add(names)
        self.options.macros |= options.macros
        return True


def all_batches(commands):
    """Returns batches of all sources, the largest first. Sources with many options start batches, since
    sources with fewer options may join them."""
    batches = []
    for source in sorted(commands, key=lambda source: -len(commands[source])):
        folder, options = config_folder(source), Options(commands[source])
        if not any(batch.take(source, folder, options) for batch in batches):
            batches.append(Batch(folder, options))
            batches[-1].take(source, folder, options)
    return sorted(batches, key=lambda batch: -batch.lines)


def command_entry(path, options):
    compiler = "clang" if path.suffix == ".c" else "clang++"
    return {"directory": str(WORK), "file": str(path),
            "arguments": [compiler, *options, "-c", str(path)]}


def write_batch(path, batch):
    """Writes one text without includes: the static analyzer skips functions outside the main file."""
    path.parent.mkdir(parents=True, exist_ok=True)
    if batch.folder != ".":
        shutil.copy(ROOT / batch.folder / CONFIG, path.parent)
    texts = [(ROOT / name).read_text(encoding="utf-8") for name in batch.sources]
    path.write_text("\n".join(texts), encoding="utf-8")
    return path


def neighbours(batch):
    """Returns the options with which the sources find the headers beside them."""
    folders = sorted({str((ROOT / name).parent) for name in batch.sources})
    return [option for folder in folders for option in ("-iquote", folder)]


def write_batches(made, commands):
    """Writes the batches and the compile commands. Returns {path of the batch: its sources}."""
    shutil.rmtree(WORK, ignore_errors=True)
    WORK.mkdir(parents=True)
    entries = [command_entry(ROOT / source, command) for source, command in commands.items()]
    batches = {}
    for number, batch in enumerate(made):
        if len(batch.sources) == 1:
            path = ROOT / batch.sources[0]
        else:
            path = write_batch(WORK / batch.folder / f"batch_{number}{Path(batch.sources[0]).suffix}", batch)
            entries.append(command_entry(path, (*batch.options.words(), *neighbours(batch))))
        batches[path] = batch.sources
    (WORK / "compile_commands.json").write_text(json.dumps(entries, indent=1), encoding="utf-8")
    return batches


def unused_names(sources):
    """Yields names from `using` or an alias that the source does not mention again."""
    for source in sources:
        text = (ROOT / source).read_text(encoding="utf-8")
        for match in re.finditer(r"^(?:using [\w:]+::|namespace )(\w+)(?:;| = )", text, re.MULTILINE):
            if len(re.findall(rf"\b{match[1]}\b", text)) == 1:
                yield f"{source}: unused: {match[0]}"


def tidy(path):
    """Returns the findings of clang-tidy for the file; empty if there are none."""
    run = subprocess.run(["clang-tidy", "--quiet", f"--checks={SEEN_BY_UNUSED_NAMES}",
                          *ANALYZER_LIMIT, "-p", str(WORK), str(path)],
                         check=False, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
    return run.stdout + run.stderr if run.returncode else ""


def first_error(output):
    return next((line for line in output.splitlines() if "error:" in line), output)


def findings(pool, batches):
    """Returns the findings in single sources. Checks each source of a batch with findings again."""
    found, doubtful = [], []
    for sources, output in zip(batches.values(), pool.map(tidy, batches)):
        if output and len(sources) > 1:
            print(f"checking {len(sources)} sources one by one: {first_error(output)}", flush=True)
            doubtful += sources
        elif output:
            found.append(output)
    alone = pool.map(tidy, [ROOT / source for source in doubtful])
    return found + [output for output in alone if output]


def main(arguments):
    only = arguments[arguments.index("--") + 1:] if "--" in arguments else []
    directories = arguments[:arguments.index("--")] if only else arguments
    commands = compile_options([ROOT / directory for directory in directories])
    if only:
        commands = {source: commands[source] for source in only}
    batches = write_batches(all_batches(commands), commands)
    print(f"{len(commands)} sources in {len(batches)} batches", flush=True)
    with ThreadPoolExecutor(os.cpu_count()) as pool:
        found = [*unused_names(commands), *findings(pool, batches)]
    print(*found, sep="\n")
    sys.exit(1 if found else 0)


if __name__ == "__main__":
    main(sys.argv[1:])
