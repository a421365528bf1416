"""Runs each command of ffmpeg and ffprobe once. Its output is kept in STREAM_SAMPLES and copied for every
test that gives the same command. Safe for tests that run at the same time."""

import atexit
import contextlib
import fcntl
import functools
import hashlib
import json
import os
import pathlib
import shutil
import subprocess
import tempfile

_LIMIT_SECONDS = 120
_OUTPUT = "standard output"


@functools.cache
def kept_directory():
    """The directory of the kept output. Without STREAM_SAMPLES, a temporary one that is removed when the
    process ends."""
    named = os.environ.get("STREAM_SAMPLES")
    if named is None:
        directory = tempfile.TemporaryDirectory(prefix="stream-samples-")
        atexit.register(directory.cleanup)
        return pathlib.Path(directory.name)
    pathlib.Path(named).mkdir(parents=True, exist_ok=True)
    return pathlib.Path(named)


@functools.cache
def _program(name):
    """A text that changes when another version of the program is installed."""
    path = shutil.which(name)
    if path is None:
        raise FileNotFoundError(f"{name} is not installed")
    status = os.stat(path)
    return f"{path} {status.st_size} {status.st_mtime_ns}"


def _digest(content):
    return hashlib.sha256(content).hexdigest()


def _key(command, inputs):
    parts = [_program(command[0]), *command, *(f"{name}={_digest(inputs[name])}" for name in inputs)]
    return _digest(json.dumps(parts).encode())


@contextlib.contextmanager
def _locked(path):
    """Holds the lock of one output, for which others that need the same output wait."""
    with path.open("w") as file:
        fcntl.flock(file, fcntl.LOCK_EX)
        yield


def _run(command, inputs, directory):
    for name, content in inputs.items():
        (directory / name).write_bytes(content)
    with (directory / _OUTPUT).open("wb") as output:
        subprocess.run(command, check=True, stdin=subprocess.DEVNULL, stdout=output, cwd=directory,
                       timeout=_LIMIT_SECONDS)
    for name in inputs:
        (directory / name).unlink()
    for file in directory.iterdir():
        file.chmod(0o444)  # tests get copies


def _output_directory(command, inputs):
    """The directory with the output of the command. It appears under its name when it is complete."""
    command = [str(argument) for argument in command]
    key = _key(command, inputs)
    output = kept_directory() / key
    if not output.exists():
        with _locked(kept_directory() / f"{key}.lock"):
            if not output.exists():
                with tempfile.TemporaryDirectory(prefix="making-", dir=kept_directory()) as temporary:
                    work = pathlib.Path(temporary) / "made"
                    work.mkdir()
                    _run(command, inputs, work)
                    work.rename(output)
    return output


def make_files(command, directory, inputs=None):
    """Runs a command in a directory that holds the files of `inputs` (contents by name), and copies all other
    files in it to `directory`."""
    for file in _output_directory(command, inputs or {}).iterdir():
        if file.name != _OUTPUT:
            shutil.copyfile(file, directory / file.name)


def make_file(command, path):
    """The same for a command that lacks only the name of its one output file, which is its last argument."""
    name = f"made{path.suffix}"
    shutil.copyfile(_output_directory([*command, name], {}) / name, path)
    return path


def output_of(command, path):
    """The standard output of a command that has the name of the file `path` among its arguments."""
    input_name = "input" + pathlib.Path(path).suffix
    command = [input_name if argument == str(path) else argument for argument in command]
    return (_output_directory(command, {input_name: pathlib.Path(path).read_bytes()}) / _OUTPUT).read_bytes()
