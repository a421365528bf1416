# shellcheck shell=bash
# What the scripts say, and how they give up: one clear line.

note() { printf '== %s\n' "$*"; }

die() {
  printf '%s: %s\n' "$(basename "$0")" "$*" >&2
  exit 1
}
