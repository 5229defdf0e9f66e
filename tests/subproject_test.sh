#!/usr/bin/env bash
# Builds tests/subproject, which takes in this source tree through
# add_subdirectory and then through FetchContent, runs both of its programs
# each time, and checks that installing it installs nothing of ours. Then
# builds examples/custom_host, whose vesk::core is compiled against its own
# host headers, the same two ways (warnings as errors, and the sanitizers
# of CXX_FLAGS, if any), runs it and looks for REQUEST in what it prints;
# and, at the top level with that host, builds vesk::core and nothing else.
# usage: subproject_test.sh WORK_DIR CMAKE CXX GENERATOR CXX_FLAGS REQUEST
set -euo pipefail
work=$1 cmake=$2 cxx=$3 generator=$4 cxxflags=$5 request=$6
tests=$(cd "$(dirname "$0")" && pwd)
rm -rf "$work"
mkdir -p "$work"

source "$tests/consumer_check.sh"
# build SOURCE DIR [CMAKE_ARG...]: configures and builds, quietly unless
# it fails.
build() {
  "$cmake" -S "$1" -B "$2" -G "$generator" -DCMAKE_CXX_COMPILER="$cxx" \
    -DCMAKE_CXX_FLAGS="$cxxflags" "${@:3}" >"$2.log" 2>&1 &&
    "$cmake" --build "$2" >>"$2.log" 2>&1 || { cat "$2.log" && exit 1; }
}
for way in add_subdirectory fetch_content; do
  dir="$work/$way" fetch=OFF
  [ "$way" = add_subdirectory ] || fetch=ON
  build "$tests/subproject" "$dir" -DVESK_SOURCE_DIR="$tests/.." \
    -DUSE_FETCH_CONTENT=$fetch
  for program in consumer_text consumer_split; do
    check "$way $program" "$dir/$program"
  done
  "$cmake" --install "$dir" --prefix "$dir/stage" >/dev/null
  [ ! -e "$dir/stage" ] || { echo "$way: installed $(find "$dir/stage")"; exit 1; }

  build "$tests/../examples/custom_host" "$dir-custom_host" \
    -DUSE_FETCH_CONTENT=$fetch -DCMAKE_COMPILE_WARNING_AS_ERROR=ON
  output=$("$dir-custom_host/custom_host") &&
    grep -qxF "$request" <<<"$output" ||
    { echo "$way custom_host failed; it printed:" "$output" && exit 1; }
  echo "$way custom_host: ok"
done

build "$tests/.." "$work/top" -DVESK_HOST_INCLUDE_DIR="$tests/../examples/custom_host"
built=$(cd "$work/top" && find . -name '*.a')
[ "$built" = ./libvesktext-core.a ] || { echo "top level built: $built" && exit 1; }
