#!/usr/bin/env bash
# Sets up, builds and plays. Without an argument it makes a sample, serves it and plays it. Plays in a window if
# there is a display, otherwise in the console.
set -euo pipefail

ROOT=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
readonly ROOT
readonly BUILD=$ROOT/build/play
readonly REPORT=$BUILD/report.html
HOST=stream_host
readonly NO_DISPLAY=3  # stream_player's exit status if there is no display
PATH=$PATH:/usr/sbin:/sbin  # Debian's directory of nginx, which is not in every user's PATH

# shellcheck source=scripts/lib/log.sh
source "$ROOT/scripts/lib/log.sh"
# shellcheck source=scripts/lib/packages.sh
source "$ROOT/scripts/lib/packages.sh"
# shellcheck source=scripts/lib/sample.sh
source "$ROOT/scripts/lib/sample.sh"

usage() {
  cat <<'USAGE'
scripts/play.sh                           makes, serves and plays a sample
scripts/play.sh --sample KIND [options]   the same with a sample of this kind and options of the player
scripts/play.sh ADDRESS [options]         plays an http, https or file:// address
scripts/play.sh --console ...             any of these in the console, even if there is a display

The kinds of samples are hls (HTTP Live Streaming in several segments, the default), ts (one MPEG
transport stream), flv and mp4.

Plays in a window if there is a display, otherwise in the console. scripts/play.sh ADDRESS --help
lists the options: those of stream_player in a window, those of stream_host in the console.
USAGE
}

has_display() { [[ -n ${DISPLAY-} || -n ${WAYLAND_DISPLAY-} ]]; }

# prepare PACKAGE... - installs missing packages, including these, and builds the host.
prepare() {
  local player=OFF packages=()
  if [[ $HOST == stream_player ]]; then
    player=ON packages=("${PLAYER_PACKAGES[@]}")
  fi
  ensure_packages "${BUILD_PACKAGES[@]}" "${packages[@]}" "$@"
  note "building $HOST in build/play"
  # Only the targets needed to play: the libraries of tests and benchmarks may be missing.
  (cd "$ROOT" && cmake --preset release -B "$BUILD" -DSTREAM_BUILD_PLAYER="$player" \
    -DSTREAM_BUILD_TESTS=OFF -DSTREAM_BUILD_BENCH=OFF --log-level=WARNING) ||
    die "the configuration failed"
  cmake --build "$BUILD" --target "$HOST" || die "the build failed"
}

# play ADDRESS [options] - writes the report to the default path unless the options name one.
play() {
  local status=0 report=(--report "$REPORT")
  [[ " $*" != *" --report"* ]] || report=()
  rm -f "$REPORT"
  note "playing: $HOST $*"
  if [[ $HOST == stream_player ]]; then
    note "keys: space pauses, left and right move ten seconds, f is full screen, q ends"
  fi
  "$BUILD/bin/$HOST" "$@" "${report[@]}" || status=$?
  if [[ $HOST == stream_player && $status -eq $NO_DISPLAY ]]; then
    note "so it plays in the console"
    HOST=stream_host
    prepare
    play "$@"
    return
  fi
  [[ ! -s $REPORT ]] || note "a report of this run, for any browser: $REPORT"
  return "$status"
}

remove_sample() {
  stop_nginx "$SAMPLE_DIR"
  rm -rf "$SAMPLE_DIR"
}

# make_sample KIND DIR - sets SAMPLE_FILE to the name of the file to play.
make_sample() {
  case $1 in
    hls)
      note "making a sample: 12 seconds of H.264 and AAC as HTTP Live Streaming"
      SAMPLE_FILE=sample.m3u8
      make_hls_sample "$2"
      ;;
    ts)
      note "making a sample: 12 seconds of H.264 and AAC in MPEG-TS"
      SAMPLE_FILE=sample.ts
      make_ts_sample "$2/$SAMPLE_FILE"
      ;;
    flv)
      note "making a sample: 12 seconds of H.264 and AAC in FLV"
      SAMPLE_FILE=sample.flv
      make_flv_sample "$2/$SAMPLE_FILE"
      ;;
    mp4)
      note "making a sample: 12 seconds of H.264 and AAC in MP4"
      SAMPLE_FILE=sample.mp4
      make_mp4_sample "$2/$SAMPLE_FILE"
      ;;
  esac
}

# play_sample KIND [options]
play_sample() {
  local kind=$1
  shift
  SAMPLE_DIR=$(mktemp -d)
  trap remove_sample EXIT
  mkdir "$SAMPLE_DIR/www"
  make_sample "$kind" "$SAMPLE_DIR/www" || die "ffmpeg could not make the sample"
  start_nginx "$SAMPLE_DIR"
  note "nginx serves it on port $NGINX_PORT"
  # A proxy cannot reach this machine's loopback.
  unset http_proxy https_proxy all_proxy HTTP_PROXY HTTPS_PROXY ALL_PROXY
  play "http://127.0.0.1:$NGINX_PORT/$SAMPLE_FILE" "$@"
}

main() {
  local sample=""
  if [[ ${1-} == --console ]]; then
    shift
  elif has_display; then
    HOST=stream_player
  fi
  case ${1-} in
    -h | --help) usage && return ;;
    "") sample=hls ;;
    --sample) sample=${2:-none} && shift "$(($# < 2 ? $# : 2))" ;;
  esac
  case $sample in
    hls | ts | flv | mp4)
      prepare "${SAMPLE_PACKAGES[@]}"
      play_sample "$sample" "$@"
      ;;
    "")
      prepare
      play "$@"
      ;;
    *) die "no such sample: $sample (there are: hls, ts, flv, mp4)" ;;
  esac
}

main "$@"
