# shellcheck shell=bash
# Messages of the scripts: progress lines, and one clear line on failure.

note() { printf '== %s\n' "$*"; }

die() {
  printf '%s: %s\n' "$(basename "$0")" "$*" >&2
  exit 1
}
