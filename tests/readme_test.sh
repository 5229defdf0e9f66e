#!/usr/bin/env bash
# Keeps the README's tool examples true: every indented "$ COMMAND" line is
# run by bash with the built vesktext first on PATH, and what it prints to
# standard output and error must be the indented lines after it, up to a
# blank line or the next "$ " line.
# usage: readme_test.sh README TOOL_DIR
set -u
readme=$1
PATH="$2:$PATH"
examples=0 failures=0
command='' expected=''

check() {
  [ -n "$command" ] || return 0
  examples=$((examples + 1))
  local actual
  actual=$(bash -c "$command" 2>&1)
  if [ "$actual" != "$expected" ]; then
    failures=$((failures + 1))
    printf 'FAIL: $ %s\n  expected:\n%s\n  printed:\n%s\n' \
      "$command" "$expected" "$actual"
  fi
  command='' expected=''
}

while IFS= read -r line; do
  case $line in
    '    $ '*) check; command=${line#'    $ '} ;;
    '    '*) [ -n "$command" ] && expected+="${expected:+$'\n'}${line#'    '}" ;;
    *) check ;;
  esac
done <"$readme"
check

echo "$examples examples, $failures failed"
[ "$examples" -gt 0 ] && [ "$failures" -eq 0 ]
