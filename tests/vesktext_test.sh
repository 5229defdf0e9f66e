#!/usr/bin/env bash
# Runs the vesktext tool on a table of command lines and compares what it
# prints and its exit status with what each row expects.
# usage: vesktext_test.sh TOOL VERSION
set -u
tool=$1 version=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
rows=0 failures=0

# Runs the tool on "$@" with $input, printf %b escapes expanded, on
# standard input; or, on a row's failure, says what it expected and shows
# what the tool printed.
input=''
run() {
  printf '%b' "$input" | "$tool" "$@" >"$work/out" 2>"$work/err"
  status=$? rows=$((rows + 1))
}
fail() {
  failures=$((failures + 1))
  echo "FAIL: vesktext$(printf ' %q' "${@:2}"): $1"
  echo "  status $status; stdout:"; od -c "$work/out" | sed 's/^/  /;20q'
  echo "  stderr:"; sed 's/^/  /;5q' "$work/err"
}

# ok EXPECTED ARGS...: status 0, nothing on stderr, and standard output is
# EXPECTED with printf %b escapes, each line ending in a newline.
ok() {
  run "${@:2}"
  [ "$status" -eq 0 ] && [ ! -s "$work/err" ] &&
    cmp -s "$work/out" <(printf '%b\n' "$1") ||
    fail "expected status 0 and output '$1'" "${@:2}"
}

# usage MESSAGE ARGS...: status 2, nothing on standard output, and standard
# error is "vesktext: MESSAGE" and then the usage.
usage() {
  run "${@:2}"
  [ "$status" -eq 2 ] && [ ! -s "$work/out" ] &&
    [ "$(head -n 1 "$work/err")" = "vesktext: $1" ] &&
    sed -n 2p "$work/err" | grep -q '^usage: vesktext ' ||
    fail "expected usage error '$1'" "${@:2}"
}

# fails OUTPUT ERROR ARGS...: status 1, OUTPUT (%b escapes) as the first
# line of standard output, and ERROR as a whole line of standard error.
fails() {
  run "${@:3}"
  [ "$status" -eq 1 ] && [ "$(head -n 1 "$work/out")" = "$(printf '%b' "$1")" ] &&
    grep -qxF -- "$2" "$work/err" || fail "expected '$2'" "${@:3}"
}

# The code pages, from the one list of them that --help prints.
pages=$("$tool" --help | sed -n '/^code pages:/,/^$/s/^  \([^ ]*\).*/\1/p')

ok 'caf%C3%A9' form 'café'
ok 'caf%C3%A9' form --convert --content-version 5 'café'
ok '%82%A0' form --codepage shift_jis --convert 'あ'
ok '%FF' form --convert $'\xff'
ok '1\n\n2' form 1 '' 2
ok '%2D%2Dx' form -- --x

input=$'a b\n\nc\r\nlast' ok 'a+b\n\nc%0D\nlast' form
input=$'x\xe9\n' ok 'x%E9' form
input='' run form
[ "$status" -eq 0 ] && [ ! -s "$work/out" ] || fail "expected no output" form

ok 'caf%E9 & x?' high 'café & xあ'
ok 'caf%C3%A9' high --content-version=5 'café'
ok 'a b%\xe9' escape $'a b%\xe9'
ok '' escape ''
ok 'a%80 ~\n%82%A0' --codepage gbk upper128 $'a\x80 ~' $'\x82\xa0'

ok 'http://e.com/s?game=7&a=3&b=2' query 'http://e.com/s?game=7' a=1 b=2 a=3 '$hidden=1'
ok 'a=1&q=x%3Dy&=e' query --no-question-mark '' a=1 q=x=y =e
ok 'p?n%E9v=%E9' query --convert p 'név=é'
ok 'p?n%C3%A9v=%C3%A9' query p 'név=é'
ok 'base' query base

ok 'ff ffffffffffffffff -2147483648' format '%x %x %d' x:255 x:-1 d:-2147483648
ok 'AA tf 05 -5 123' format '%c%c %b%b %2 %2 %2' c:65 c:321 b:-1 b:0 2:5 2:-5 2:123
ok 'a\0b[]abc' format 'a%cb[%s]%3' c:0 s: 3:abcd
ok '0.1 1e+21 NaN -Infinity' format '%f %f %f %f' f:0.1 f:1e21 f:nan f:-inf
ok '0x0 0xdeadbeef' format '%p %p' p:0 p:DEADBEEF
ok '% d end' format '%% %qd end%'
ok '' format ''

usage 'no command given'
usage "unknown option '--bogus'" --bogus form
usage "unknown command 'nope'" nope
usage "option '--codepage' needs a value" --codepage
usage "unknown code page 'klingon' (${pages//$'\n'/, }; see --help)" \
  --codepage klingon form x
usage "form: option '--content-version' takes a version of 0 or more, not '-1'" \
  form --content-version -1 x
usage "form: unknown option '--strict'" form --strict x
usage "form: option '--content-version' needs a value" form --content-version
usage "form: option '--content-version' takes a version of 0 or more, not '6a'" \
  form --content-version 6a x
usage "escape: option '--strict' takes no value" escape --strict=yes x
usage 'query: no BASE given' query
usage "query: 'flag' is not NAME=VALUE" query base a=1 flag
usage 'format: no FORMAT given' format
usage "format: argument 1 'x:1' does not fit directive 1 (%d), which takes d:INT" format %d x:1
usage "format: argument 1 '42' does not fit directive 1 (%d), which takes d:INT" format %d 42
usage "format: argument 2 's:x' has no directive" format %d d:1 s:x
usage "format: argument 1 'd:7' has no directive" format %5d d:7
usage "format: argument 1 'd:2147483648' is not a 32-bit decimal int" format %d d:2147483648
usage "format: argument 1 'c:1.5' is not a 32-bit decimal int" format %c c:1.5
usage "format: argument 1 '3:ab' is under three bytes" format %3 3:ab
usage "format: argument 1 'f:1e400' is not a number" format %f f:1e400
usage "format: argument 1 'p:-1' is not a hex address" format %p p:-1

ok 'x\ny z' strip $'\t\n x' '  y z'
fails y "vesktext: strip: 'ftp://x' does not start with 'http:'" \
  strip --scheme http: ftp://x 'http:/y'
ok '42\n-17\n0\n7766279631452241919' parse 42abc -17 '' 99999999999999999999
ok '0\n18446744073709551615' parse --unsigned -- -5 18446744073709551615

# Code pages by any of the names that --help gives them, in any case.
while read -r page names; do
  want=$("$tool" --codepage "$page" form --convert 'é あ 中 한')
  for name in $names ${page^^} ${names^^}; do
    ok "$want" --codepage "$name" form --convert 'é あ 中 한'
  done
done < <("$tool" --help | sed -n '/^code pages:/,/^$/{s/  (the default)//;s/^  //p}')

ok 'aA%4g%zz b%\n\xe9+ ~' decode --plus 'a%41%4g%zz+b%' '%E9%2b+%7e'
ok 'a+b\0c' decode 'a+b%00c'
input='ok%41\nx%4g\n' fails okA "vesktext: line 2 of standard input, \
column 2: '%' does not begin an escape ('%' and two hex digits)" decode --strict
a300k=$(head -c 300000 /dev/zero | tr '\0' a)
input="$a300k%%"; run decode --strict; input=''
grep -q "^vesktext: line 1 of standard input, column 300001: " "$work/err" ||
  fail "expected column 300001" decode --strict

# Of a number longer than a piece (262144 bytes), only the last 64 digits
# count.
digits=$(seq 60000 | tr -d '\n')
input="$digits\n-${digits}x\n"
ok "$("$tool" parse "${digits: -64}" "-${digits: -64}")" parse
input=''

# A terminal is told where the lines come from.
script -qec "$tool form 2>$work/err" /dev/null </dev/null >/dev/null
rows=$((rows + 1))
[ "$(cat "$work/err")" = "vesktext: reading lines from standard input; end \
them with Ctrl-D" ] || fail "expected the terminal to be told" form

ok "vesktext $version" --version
run --help
[ "$status" -eq 0 ] && grep -q '^  format ' "$work/out" &&
  grep -q '^  shift_jis  *sjis cp932$' "$work/out" || fail "expected the help" --help
# Each command's --help and -h: its usage first, status 0, in lines that
# fit 80 columns.
for command in form high escape upper128 url query format strip parse decode; do
  for flag in --help -h; do
    run "$command" "$flag"
    [ "$status" -eq 0 ] && [ ! -s "$work/err" ] && ! grep -q '^.\{80\}' "$work/out" &&
      head -n 1 "$work/out" | grep -qF "usage: vesktext [--codepage NAME] $command" ||
      fail "expected the help of $command" "$command" "$flag"
  done
done

echo "$rows rows, $failures failed"
[ "$failures" -eq 0 ]
