"""Runs the programs that end without a stop."""

import os
import subprocess

LIMIT_SECONDS = 60
_PROXIES = ("http_proxy", "https_proxy", "all_proxy", "no_proxy")


def _environment():
    """Without proxies, which cannot reach the loopback interface of this machine, and without leak detection:
    a transfer that the exit ends does not release its memory."""
    kept = {name: value for name, value in os.environ.items() if name.lower() not in _PROXIES}
    return {**kept, "ASAN_OPTIONS": "detect_leaks=0"}


def _run(command):
    return subprocess.run(
        command, stdin=subprocess.DEVNULL, capture_output=True, env=_environment(),
        timeout=LIMIT_SECONDS, check=False, text=True, errors="surrogateescape")


def _command(owner, when, address):
    return [os.environ["EXIT_PROGRAM"], owner, str(when), address]


def run(owner, when, address, prefix=()):
    return _run([*prefix, *_command(owner, when, address)])


def run_loader(when, address):
    return _run([os.environ["EXIT_LOADER"], os.environ["EXIT_PLUGIN"], str(when), address])


def start(owner, when, address, prefix=()):
    return subprocess.Popen(
        [*prefix, *_command(owner, when, address)], stdin=subprocess.PIPE,
        stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, env=_environment())
