# What the cross toolchain files share: Debian's cross compiler for
# CMAKE_SYSTEM_PROCESSOR-linux-gnu, its libraries under /usr/<triplet>, and
# qemu-user to run what is built, in tests too.
set(CMAKE_SYSTEM_NAME Linux)
set(vesk_triplet ${CMAKE_SYSTEM_PROCESSOR}-linux-gnu)
set(CMAKE_CXX_COMPILER ${vesk_triplet}-g++)
set(CMAKE_FIND_ROOT_PATH /usr/${vesk_triplet})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
# The program runs on the cross libc (-L). Its iconv modules come from the
# multiarch libc package, whose own libc.so.6 sits on the loader's default
# path: LD_LIBRARY_PATH keeps the loader to the cross libc, since the two
# libcs differ in build and mixing them aborts ("stack smashing detected"
# on s390x).
set(CMAKE_CROSSCOMPILING_EMULATOR
  qemu-${CMAKE_SYSTEM_PROCESSOR} -L /usr/${vesk_triplet}
  -E LD_LIBRARY_PATH=/usr/${vesk_triplet}/lib)
