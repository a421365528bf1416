"""The sources that a build by Visual C++ would compile, and their options. CMake determines them: it
configures the project as the preset msvc does, with clang as the compiler."""

import json
import os
import pathlib
import re
import shlex
import shutil
import subprocess

_ROOT = pathlib.Path(os.environ["SOURCE_DIR"])
_HERE = pathlib.Path(__file__).resolve().parent
_PRESET = "msvc"

# Clang in the mode of Visual C++ 2022, but with the headers of GCC's libraries, which require GCC.
_OPTIONS = [
    "/Zs", "/X",
    "/clang:-fno-ms-compatibility",  # like /permissive-: names in templates are looked up at once
    "/clang:-fms-compatibility-version=19.38", "/clang:-fgnuc-version=12.2.0",
    # mingw's headers: no old POSIX names, no ssize_t, no clocks, no integers of 128 bits.
    "/DNO_OLDNAMES", "/D__STRICT_ANSI__", "/D_SSIZE_T_DEFINED", "/DWIN_PTHREADS_TIME_H",
    "/D_INT128_DEFINED", "/U__SIZEOF_INT128__",
    "/D__declspec=__declspec",  # they expect it as a macro
]
# Added to those of the build itself: extensions of GCC and of Visual C++ are both refused.
_WARNINGS = ["-Werror", "-Wpedantic", "-Wgnu", "-Wmicrosoft"]


def _preset_variables(name):
    """The cache variables of a preset and of those that it inherits from."""
    with open(_ROOT / "CMakePresets.json", encoding="utf-8") as file:
        presets = {preset["name"]: preset for preset in json.load(file)["configurePresets"]}
    variables = {}
    while name is not None:
        preset = presets[name]
        values = preset.get("cacheVariables", {})
        variables = {
            **{key: value.replace("${sourceDir}", str(_ROOT)) for key, value in values.items()}, **variables}
        name = preset.get("inherits")
    return variables


def _with_libcurl_8(directory, folders):
    """The folders of libraries, with libcurl's package replaced by one of version 8, the version of
    vcpkg's."""
    package = pathlib.Path("lib/cmake/CURL")
    real = next(folder / package for folder in folders if (folder / package).is_dir())
    new = directory / "libcurl" / package
    new.mkdir(parents=True)
    version = (real / "CURLConfigVersion.cmake").read_text()
    (new / "CURLConfigVersion.cmake").write_text(re.sub(r"\b7\.\d+\.\d+\b", "8.0.0", version))
    (new / "CURLConfig.cmake").write_text(f'include("{real}/CURLConfig.cmake")\n')
    return [folder for folder in folders if folder / package != real] + [directory / "libcurl"]


def _options_of(command):
    """The compiler's options, without the output and the source."""
    words = shlex.split(command)[1:]
    words = words[:words.index("--")]
    return [word for word in words
            if word not in ("-c", "/c") and not word.startswith(("/Fo", "/Fd", "-Fo", "-Fd"))]


class VisualCBuild:
    def __init__(self, directory):
        """Configures a build in the directory, which is emptied first."""
        shutil.rmtree(directory, ignore_errors=True)
        directory.mkdir(parents=True)
        # Under this name clang accepts the options of Visual C++.
        self._compiler = directory / "clang-cl"
        self._compiler.symlink_to(os.environ["CLANG"])
        self._directory = directory / "build"
        variables = {
            **_preset_variables(_PRESET),
            "CMAKE_CXX_COMPILER": str(self._compiler),
            "STREAM_BUILD_REPORT": "OFF",  # its page is fetched from npm
        }
        libraries = _with_libcurl_8(
            directory, [pathlib.Path(folder) for folder in os.environ["LIBRARIES"].split(":")])
        run = subprocess.run(
            [os.environ["CMAKE"], "-S", _ROOT, "-B", self._directory, "-G", "Ninja",
             "--toolchain", _HERE / "toolchain.cmake",
             *(f"-D{name}={value}" for name, value in variables.items())],
            env={**os.environ, "CLANG_CL": str(self._compiler),
                 "LIBRARIES": ":".join(map(str, libraries))},
            stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False)
        if run.returncode != 0:
            raise RuntimeError(run.stdout)

    def sources(self):
        """The compiled sources: the path of each, relative to the project, and its options."""
        with open(self._directory / "compile_commands.json", encoding="utf-8") as file:
            commands = json.load(file)
        return {str(pathlib.Path(command["file"]).relative_to(_ROOT)): _options_of(command["command"])
                for command in commands}

    def complaints(self, source, options):
        """What the compiler prints about the source; empty if it accepts the source."""
        folders = [_HERE / "headers", *os.environ["SYSTEM_HEADERS"].split(":")]
        run = subprocess.run(
            [self._compiler, *_OPTIONS, *(f"-imsvc{folder}" for folder in folders),
             *options, *_WARNINGS, "--", _ROOT / source],
            cwd=self._directory, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False)
        return run.stdout or (f"exit code {run.returncode}" if run.returncode != 0 else "")
