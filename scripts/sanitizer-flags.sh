# Sourced by the sanitizer and fuzzing scripts: the one sanitizer
# configuration, and run-time options that make every report fatal.
VESK_SANITIZER_FLAGS="-O1 -g -fno-omit-frame-pointer \
-fsanitize=address,undefined -fno-sanitize-recover=all -D_GLIBCXX_ASSERTIONS"
export ASAN_OPTIONS=detect_leaks=1:strict_string_checks=1:check_initialization_order=1:detect_stack_use_after_return=1
export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
# Clang 14's symbolizer (package llvm-14) names the functions and lines in
# the reports; without it they hold bare addresses.
export ASAN_SYMBOLIZER_PATH=/usr/lib/llvm-14/bin/llvm-symbolizer
export UBSAN_SYMBOLIZER_PATH=$ASAN_SYMBOLIZER_PATH

# Configures and builds a clang build with those flags in DIR, quietly
# unless it fails; further arguments go to cmake.
source "$(dirname "${BASH_SOURCE[0]}")/quietly.sh"
configure_sanitized() {
  local dir=$1
  shift
  quietly env CXX=clang++ cmake -S . -B "$dir" -G Ninja \
    -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_FLAGS="$VESK_SANITIZER_FLAGS" \
    -DVESK_BUILD_BENCH=OFF "$@"
  quietly cmake --build "$dir"
}
