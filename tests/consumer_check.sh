# Sourced by the package and subproject tests: check NAME PROGRAM runs a
# consumer built against this tree and compares what it prints with the
# two encodings that tests/package/consumer.cpp makes.
expected='Ann+Lee+%26+co http://example.com/a%20b'
check() {
  local output status=0
  output=$("$2") || status=$?
  [ "$status" -eq 0 ] && [ "$output" = "$expected" ] || {
    echo "$1: status $status, printed '$output', expected '$expected'"
    exit 1
  }
  echo "$1: ok"
}
