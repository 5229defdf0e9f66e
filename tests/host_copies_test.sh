#!/usr/bin/env bash
# examples/custom_host links the built vesk::core with host classes of its
# own, so those must match the ones vesk::core was compiled with: its
# vm_string.h and object_model.h must read as ours, line comments, spacing
# and preprocessor lines (the include guards) aside.
# usage: host_copies_test.sh SOURCE_DIR
set -euo pipefail
source=$1
tokens() {
  sed -e 's://.*$::' -e '/^#/d' "$1" | tr -s ' \n' '  '
}
status=0
for header in vm_string.h object_model.h; do
  ours=$(tokens "$source/host/$header")
  copy=$(tokens "$source/examples/custom_host/host/$header")
  [ -n "$ours" ] && [ "$ours" = "$copy" ] || {
    echo "examples/custom_host/host/$header differs from host/$header"
    status=1
  }
done
exit "$status"
