# Builds for 32-bit ARM with the packages that script/arm-sysroot unpacks, and runs programs in an
# emulator.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR arm)
set(CMAKE_CXX_COMPILER arm-linux-gnueabihf-g++)
get_filename_component(CMAKE_SYSROOT ${CMAKE_CURRENT_LIST_DIR}/../build/arm-sysroot/root ABSOLUTE)
# Silences GCC's note, wherever a vector grows, that GCC 6 passed an argument differently.
set(CMAKE_CXX_FLAGS_INIT -Wno-psabi)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

find_program(QEMU_ARM qemu-arm-static REQUIRED)
# The loader checks for a folder with a call that the emulator does not redirect, and then skips
# Android's folder if the first library that it needs is not there.
set(CMAKE_CROSSCOMPILING_EMULATOR ${QEMU_ARM} -L ${CMAKE_SYSROOT}
    -E LD_LIBRARY_PATH=${CMAKE_SYSROOT}/usr/lib/arm-linux-gnueabihf/android)
