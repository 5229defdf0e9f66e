# Cross build for 64-bit ARM (plain char unsigned, NEON, no SSE2), run
# under qemu-user:
#   cmake -S . -B build/aarch64 --toolchain cmake/aarch64-linux-gnu.cmake
set(CMAKE_SYSTEM_PROCESSOR aarch64)
include(${CMAKE_CURRENT_LIST_DIR}/cross-linux-gnu.cmake)
