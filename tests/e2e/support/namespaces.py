"""Commands in private namespaces: what they mount there nobody else sees."""

import os
import subprocess

_MOUNT_AND_RUN = 'mount --bind "$1" "$2" && shift 2 && exec "$@"'


def unshare(*namespaces):
    """The command that begins private namespaces ("--mount", "--net"); others than root need a user
    namespace for that as well."""
    as_root = [] if os.geteuid() == 0 else ["--map-root-user"]
    return ["unshare", *as_root, *namespaces]


def is_permitted(*namespaces):
    command = [*unshare(*namespaces), "true"]
    tried = subprocess.run(command, capture_output=True, check=False, timeout=60)
    return tried.returncode == 0


def with_mount(source, target):
    """The beginning of a command line whose program finds `source` where `target` was."""
    return [*unshare("--mount"), "sh", "-c", _MOUNT_AND_RUN, "sh", str(source), str(target)]
