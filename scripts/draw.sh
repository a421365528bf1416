#!/usr/bin/env bash
# Draws docs/drawings/*.dot with graphviz. Each drawing ends with the checksum of its source, by which
# scripts/check.sh notices a drawing that is older than its source.
#
#   scripts/draw.sh           draws those whose source has changed
#   scripts/draw.sh --check   fails if there is one
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../docs/drawings"

status=0
for source in *.dot; do
  drawing=${source%.dot}.svg
  mark="<!-- drawn from $(sha256sum <"$source" | cut -d ' ' -f 1) -->"
  if [[ $(tail -n 1 "$drawing" 2>/dev/null) == "$mark" ]]; then continue; fi
  if [[ ${1-} == --check ]]; then
    echo "docs/drawings/$drawing is older than $source: run scripts/draw.sh (Debian package graphviz)"
    status=1
  else
    dot -Tsvg "$source" >"$drawing"
    echo "$mark" >>"$drawing"
  fi
done
exit "$status"
