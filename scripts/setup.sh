#!/usr/bin/env bash
# Installs from Debian's packages what is missing of what the example needs
# (--example), of what the cross builds need (--cross), or of what the
# example and all the tests need (no argument); given package names, those
# instead. It installs as root, through sudo when there is sudo; without
# either it prints the command for root to run and fails.
#   usage: setup.sh [--example | --cross | PACKAGE...]
set -euo pipefail

# The example: the build tools and the compiler.
example_packages=(cmake ninja-build g++)
# The tests besides: clang with its sanitizer and libFuzzer runtimes
# (libclang-rt-14-dev) and its symbolizer (llvm-14), which puts function
# names and lines in sanitizer and fuzzer reports; GoogleTest; pkg-config
# for the package test; valgrind; Python for the tool's piece test.
test_packages=(clang libclang-rt-14-dev llvm-14 libgtest-dev pkg-config
  valgrind python3)
# The cross builds (scripts/cross.sh): the cross compilers, qemu-user, and
# each machine's own libc from the multiarch archive, for its iconv modules,
# which the cross compilers' libc lacks.
cross_packages=(g++-aarch64-linux-gnu g++-s390x-linux-gnu qemu-user
  libc6:arm64 libc6:s390x)
case ${1:-} in
  --example) packages=("${example_packages[@]}") ;;
  --cross) packages=("${cross_packages[@]}") ;;
  '') packages=("${example_packages[@]}" "${test_packages[@]}"
    "${cross_packages[@]}") ;;
  *) packages=("$@") ;;
esac
missing=()
for package in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q "ok installed" ||
    missing+=("$package")
done
[ ${#missing[@]} -eq 0 ] && exit 0

# A package:ARCH comes from the archive of a foreign architecture, which
# dpkg must know of before apt-get update.
foreign=()
for package in "${missing[@]}"; do
  arch=${package#*:}
  [ "$arch" = "$package" ] || dpkg --print-foreign-architectures |
    grep -qx "$arch" || foreign+=("$arch")
done
install=(apt-get install -y -q --no-install-recommends "${missing[@]}")
run_as_root=()
if [ "$(id -u)" -ne 0 ]; then
  if ! command -v sudo >/dev/null; then
    echo "setup: missing ${missing[*]}; as root, run:" >&2
    for arch in "${foreign[@]}"; do
      echo "  dpkg --add-architecture $arch" >&2
    done
    echo "  apt-get update && ${install[*]}" >&2
    exit 1
  fi
  run_as_root=(sudo)
fi
echo "setup: installing ${missing[*]}"
for arch in "${foreign[@]}"; do
  "${run_as_root[@]}" dpkg --add-architecture "$arch"
done
"${run_as_root[@]}" apt-get update -q
"${run_as_root[@]}" env DEBIAN_FRONTEND=noninteractive "${install[@]}"
