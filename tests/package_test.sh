#!/usr/bin/env bash
# Installs a build into a staging prefix inside it, then builds a program
# against the staged install through find_package (with vesk::text, and
# with vesk::core and vesk::default_host) and through pkg-config (from
# CMake, and on the compiler's command line with vesktext and with
# vesktext-core plus the default host's library) and runs each.
# The consumer is compiled with the build's own flags (a sanitizer build's
# library needs the sanitizer runtime at link time).
# usage: package_test.sh BUILD_DIR CMAKE CXX GENERATOR [CXX_FLAGS]
set -euo pipefail
build=$(cd "$1" && pwd) cmake=$2 cxx=$3 generator=$4 cxxflags=${5:-}
consumer=$(cd "$(dirname "$0")/package" && pwd)
work="$build/package_test"
stage="$work/stage"
rm -rf "$work"
"$cmake" --install "$build" --prefix "$stage" >/dev/null

source "$(dirname "$0")/consumer_check.sh"

configure_and_build() {
  "$cmake" -S "$consumer" -B "$work/$1" -G "$generator" \
    -DCMAKE_CXX_COMPILER="$cxx" -DCMAKE_CXX_FLAGS="$cxxflags" \
    -DCMAKE_PREFIX_PATH="$stage" "${@:2}" >/dev/null
  "$cmake" --build "$work/$1" >/dev/null
}

configure_and_build find_package
check find_package "$work/find_package/consumer"
configure_and_build find_package_split -DLINK_CORE_AND_HOST=ON
check find_package_split "$work/find_package_split/consumer"

# Only the staged install is visible to pkg-config.
PKG_CONFIG_LIBDIR=$(dirname "$(find "$stage" -name vesktext.pc)")
export PKG_CONFIG_LIBDIR
configure_and_build pkg_config -DUSE_PKG_CONFIG=ON
check pkg_config "$work/pkg_config/consumer"

# The whole module, then the core with the default host named by hand.
for libs in vesktext 'vesktext-core -lvesktext-default-host'; do
  read -r package extra <<<"$libs"
  # shellcheck disable=SC2086,SC2046  # flag lists split on purpose
  "$cxx" -std=c++17 $cxxflags "$consumer/consumer.cpp" \
    $(pkg-config --cflags --libs "$package") $extra -o "$work/direct"
  check "pkg_config command line: $libs" "$work/direct"
done

"$stage/bin/vesktext" --version
