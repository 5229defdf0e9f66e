#!/usr/bin/env bash
# Builds tests/subproject, which takes in this source tree through
# add_subdirectory and then through FetchContent, runs both of its programs
# each time, and checks that installing it installs nothing of ours.
# usage: subproject_test.sh WORK_DIR CMAKE CXX GENERATOR [CXX_FLAGS]
set -euo pipefail
work=$1 cmake=$2 cxx=$3 generator=$4 cxxflags=${5:-}
tests=$(cd "$(dirname "$0")" && pwd)
rm -rf "$work"
mkdir -p "$work"

source "$tests/consumer_check.sh"
for way in add_subdirectory fetch_content; do
  dir="$work/$way"
  fetch=OFF
  [ "$way" = fetch_content ] && fetch=ON
  "$cmake" -S "$tests/subproject" -B "$dir" -G "$generator" \
    -DCMAKE_CXX_COMPILER="$cxx" -DCMAKE_CXX_FLAGS="$cxxflags" \
    -DVESK_SOURCE_DIR="$tests/.." -DUSE_FETCH_CONTENT=$fetch >"$dir.log" 2>&1 &&
    "$cmake" --build "$dir" >>"$dir.log" 2>&1 || {
    cat "$dir.log"
    exit 1
  }
  for program in consumer_text consumer_split; do
    check "$way $program" "$dir/$program"
  done
  "$cmake" --install "$dir" --prefix "$dir/stage" >/dev/null
  [ ! -e "$dir/stage" ] || {
    echo "$way: installing the consumer installed" "$(find "$dir/stage")"
    exit 1
  }
done
