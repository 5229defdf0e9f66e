# Sourced by the scripts. quietly COMMAND...: runs the command with its
# output kept aside, and prints that output only when the command fails,
# so a build error always reaches the console.
quietly() {
  local log status=0
  log=$(mktemp)
  "$@" >"$log" 2>&1 || status=$?
  [ "$status" -eq 0 ] || cat "$log" >&2
  rm -f "$log"
  return "$status"
}
