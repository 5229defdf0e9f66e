#!/usr/bin/env bash
# Sets up, builds and runs the example program (a URL built, appended to,
# sliced and compared), then runs vesktext on a real case: the form a game
# sends to its score server. The build is quiet unless it fails; it builds
# every library too, so `cmake --install build/example` works afterwards.
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/quietly.sh

scripts/setup.sh --example
echo "== building the example and vesktext"
quietly cmake -S . -B build/example -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DVESK_BUILD_TESTS=OFF -DVESK_BUILD_BENCH=OFF
quietly cmake --build build/example
build/example/examples/walkthrough

vesktext() { build/example/tools/vesktext "$@"; }
# Shows a command line, then runs it.
show() {
  echo "\$ $1"
  eval "$1"
}

echo
echo "== vesktext: a game posts a high score"
show "vesktext query 'https://scores.example.com/post?game=7' \
'player=Zoë Ng' score=1200 '\$session=9f'"
echo "(\$session is not sent: names beginning with '\$' are left out)"
show "vesktext --codepage shift_jis query --convert \
https://scores.example.com/post 'player=さくら' score=800"
show "vesktext format 'time=%2:%2 best=%b' 2:4 2:7 b:1"
show "vesktext url 'https://scores.example.com/board?title=Top 10 «all»'"
show "printf 'Zoë Ng\nさくら\n' | vesktext --codepage shift_jis high"
echo "(Shift_JIS has no ë, so it became '?')"
