# shellcheck shell=bash
# googletest and googlemock, from the source in Debian's package.

recipe_version() { package_versions googletest; }

recipe_build() { build_with_cmake /usr/src/googletest "$1" -DCMAKE_CXX_STANDARD=20; }
