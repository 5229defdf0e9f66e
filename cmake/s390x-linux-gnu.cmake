# Cross build for IBM Z, a big-endian machine (plain char unsigned too),
# run under qemu-user:
#   cmake -S . -B build/s390x --toolchain cmake/s390x-linux-gnu.cmake
set(CMAKE_SYSTEM_PROCESSOR s390x)
include(${CMAKE_CURRENT_LIST_DIR}/cross-linux-gnu.cmake)
