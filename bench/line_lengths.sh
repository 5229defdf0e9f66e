#!/usr/bin/env bash
# Times each vesktext command that reads lines, under each code page, on
# one line of 6 MiB ("café " over and over) and on the same bytes cut into
# short lines (each space a newline), the two runs alternated, and prints a
# Markdown table of the median times and their ratio, long over short.
#   bench/line_lengths.sh TOOL [RUNS]
set -euo pipefail
tool=$1 runs=${2:-3}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
printf 'café %.0s' $(seq 1048576) >"$work/long"
echo >>"$work/long"
tr ' ' '\n' <"$work/long" >"$work/short"
pages=$("$tool" --help | sed -n '/^code pages:/,/^$/s/^  \([^ ]*\).*/\1/p')

# seconds INPUT ARGS...: the wall time of one run of the tool.
seconds() {
  local input=$1 start end
  shift
  start=$(date +%s%N)
  "$tool" "$@" <"$work/$input" >/dev/null 2>&1 || true
  end=$(date +%s%N)
  echo $(((end - start) / 1000000))
}
median() { sort -n | awk '{ t[NR] = $1 } END { print t[int((NR + 1) / 2)] }'; }

echo "| command | code page | 6 MiB line | short lines | ratio |"
echo "|---|---|---|---|---|"
worst=0
while read -r command; do
  for page in $pages; do
    long=() short=()
    for ((i = 0; i < runs; i++)); do
      long+=("$(seconds long --codepage "$page" $command)")
      short+=("$(seconds short --codepage "$page" $command)")
    done
    l=$(printf '%s\n' "${long[@]}" | median)
    s=$(printf '%s\n' "${short[@]}" | median)
    ratio=$(awk -v l="$l" -v s="$s" 'BEGIN { printf "%.2f", l / s }')
    worst=$(awk -v a="$worst" -v b="$ratio" 'BEGIN { print (b > a ? b : a) }')
    echo "| $command | $page | $l ms | $s ms | $ratio |"
  done
done <<'EOF'
form
form --percent-space
form --convert --content-version 5
form --convert
high
escape
escape --strict
upper128
url
strip
strip --scheme http:
parse
decode
decode --plus
EOF
echo
echo "Largest ratio: $worst."
