# shellcheck shell=bash
# Fetches sources of Debian packages without changing the machine's apt configuration. Needs log.sh and
# packages.sh.

# The machine's Debian repositories, as deb-src lines.
source_lines() {
  # shellcheck disable=SC2016  # apt fills these in
  apt-get indextargets --format '$(REPO_URI) $(RELEASE) $(COMPONENT)' \
    'Created-By: Packages' 'Origin: Debian' 'Component: main' | grep -v backports | sort -u |
    sed 's|^|deb-src [signed-by=/usr/share/keyrings/debian-archive-keyring.gpg] |'
}

# private_apt DIR WORD... - runs apt-get with all of its lists and caches in DIR.
private_apt() {
  local dir=$1
  shift
  apt-get -q -o Dir::Etc::sourcelist="$dir/sources.list" -o Dir::Etc::sourceparts=/dev/null \
    -o Dir::State::lists="$dir/lists" -o Dir::Cache="$dir/cache" -o APT::Sandbox::User=root "$@"
}

# fetch_debian_source PACKAGE DIR - unpacks the latest source, with Debian's patches, into DIR/source.
fetch_debian_source() {
  local package=$1 dir=$2
  mkdir -p "$dir/lists/partial" "$dir/cache/archives/partial" "$dir/unpack"
  source_lines >"$dir/sources.list"
  if [[ ! -s $dir/sources.list ]]; then  # apt has no lists yet, for example in a new container
    as_root apt-get update -q || die "apt-get update failed"
    source_lines >"$dir/sources.list"
  fi
  [[ -s $dir/sources.list ]] || die "apt knows no Debian repository to take the source of $package from"
  private_apt "$dir" update || die "the lists of Debian's sources could not be fetched"
  (cd "$dir/unpack" && private_apt "$dir" source "$package") ||
    die "the source of $package could not be fetched"
  mv "$dir"/unpack/"$package"-*/ "$dir/source"
}
