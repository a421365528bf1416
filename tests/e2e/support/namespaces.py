"""Commands in private namespaces, whose mounts no other process sees."""

import os
import subprocess

_MOUNT_AND_RUN = 'mount --bind "$1" "$2" && shift 2 && exec "$@"'


def unshare(*namespaces):
    """The command that creates private namespaces ("--mount", "--net"). Users other than root also need a
    user namespace."""
    as_root = [] if os.geteuid() == 0 else ["--map-root-user"]
    return ["unshare", *as_root, *namespaces]


def is_permitted(*namespaces):
    command = [*unshare(*namespaces), "true"]
    tried = subprocess.run(command, capture_output=True, check=False, timeout=60)
    return tried.returncode == 0


def with_mount(source, target):
    """The beginning of a command line. The program in it sees `source` in place of `target`."""
    return [*unshare("--mount"), "sh", "-c", _MOUNT_AND_RUN, "sh", str(source), str(target)]
