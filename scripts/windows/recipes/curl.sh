# shellcheck shell=bash
# libcurl from Debian's source: static, with Schannel for TLS and only the protocols that the component accepts.

# The version of the machine's own libcurl is the version in its repositories.
recipe_version() { package_versions libcurl4-openssl-dev; }

# Each protocol is disabled individually, since HTTP_ONLY would disable file:// too. Unicode is needed for file://
# addresses with characters outside the code page.
readonly OPTIONS=(
  -DBUILD_SHARED_LIBS=OFF -DBUILD_CURL_EXE=OFF -DBUILD_TESTING=OFF -DENABLE_MANUAL=OFF
  -DCURL_USE_SCHANNEL=ON -DCURL_USE_OPENSSL=OFF -DCURL_USE_LIBSSH2=OFF -DCURL_USE_LIBPSL=OFF
  -DCURL_ZLIB=OFF -DUSE_LIBIDN2=OFF -DENABLE_UNICODE=ON -DENABLE_UNIX_SOCKETS=OFF
  -DCURL_DISABLE_DICT=ON -DCURL_DISABLE_FTP=ON -DCURL_DISABLE_GOPHER=ON -DCURL_DISABLE_IMAP=ON
  -DCURL_DISABLE_LDAP=ON -DCURL_DISABLE_LDAPS=ON -DCURL_DISABLE_MQTT=ON -DCURL_DISABLE_POP3=ON
  -DCURL_DISABLE_RTSP=ON -DCURL_DISABLE_SMB=ON -DCURL_DISABLE_SMTP=ON -DCURL_DISABLE_TELNET=ON
  -DCURL_DISABLE_TFTP=ON
)

recipe_build() {
  fetch_debian_source curl "$1"
  build_with_cmake "$1/source" "$1" "${OPTIONS[@]}"
  install -D -m 644 "$1/source/COPYING" "$1/prefix/share/licenses/curl/COPYING"
}
