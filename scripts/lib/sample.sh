# shellcheck shell=bash
# A sample made by ffmpeg, and a web server on the loopback interface. Needs log.sh.

# make_stream OPTION... FILE - twelve seconds of H.264 with B-frames and AAC, in the container that the options
# select.
make_stream() {
  local seconds=12
  ffmpeg -nostdin -v error -y \
    -f lavfi -i "testsrc2=size=640x360:rate=25:duration=$seconds" \
    -f lavfi -i "sine=frequency=440:sample_rate=44100:duration=$seconds" \
    -c:v libx264 -preset veryfast -bf 2 -g 50 -pix_fmt yuv420p -c:a aac -b:a 128k \
    "$@" </dev/null
}

# make_ts_sample FILE
make_ts_sample() { make_stream -f mpegts "$1"; }

# make_flv_sample FILE
make_flv_sample() { make_stream -f flv "$1"; }

# make_mp4_sample FILE - with the index first, so that it plays while it downloads.
make_mp4_sample() { make_stream -f mp4 -movflags +faststart "$1"; }

# make_hls_sample DIR - DIR/sample.m3u8 and six segments.
make_hls_sample() {
  make_stream -f hls -hls_time 2 -hls_playlist_type vod \
    -hls_segment_filename "$1/segment%d.ts" "$1/sample.m3u8"
}

# write_nginx_config DIR PORT - all files that nginx reads or writes are in DIR. The rate is limited, so that a
# sample takes a few seconds and progress is visible.
write_nginx_config() {
  local user_line=""
  [[ $(id -u) -eq 0 ]] && user_line="user root;"  # other users cannot read DIR
  cat >"$1/nginx.conf" <<CONFIG
$user_line
worker_processes 1;
pid nginx.pid;
error_log error.log;
events {}
http {
  access_log off;
  client_body_temp_path temp_body;
  proxy_temp_path temp_proxy;
  fastcgi_temp_path temp_fastcgi;
  uwsgi_temp_path temp_uwsgi;
  scgi_temp_path temp_scgi;
  server {
    listen 127.0.0.1:$2;
    root www;
    limit_rate 300k;
  }
}
CONFIG
}

port_answers() { (exec 3<>"/dev/tcp/127.0.0.1/$1") 2>/dev/null; }

# start_nginx DIR - serves DIR/www and sets NGINX_PORT. nginx goes to the background once it listens, and fails if
# another program has taken the port; then another port is tried.
start_nginx() {
  local dir=$1 try
  for ((try = 0; try < 20; ++try)); do
    NGINX_PORT=$((20000 + RANDOM % 12000))
    port_answers "$NGINX_PORT" && continue
    write_nginx_config "$dir" "$NGINX_PORT"
    nginx -p "$dir" -e error.log -c nginx.conf 2>"$dir/start.log" </dev/null && return
  done
  die "nginx does not start: $(tail -n 1 "$dir/start.log")"
}

stop_nginx() {
  local pid_file=$1/nginx.pid
  [[ -s $pid_file ]] && kill "$(<"$pid_file")" 2>/dev/null
  return 0
}
