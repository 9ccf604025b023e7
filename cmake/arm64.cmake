# Toolchain of the arm64 preset: Debian's cross compiler, the libraries that scripts/test-arm64 has fetched, and
# user-mode emulation for what is run, tests and their discovery included.

set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_LIBRARY_ARCHITECTURE aarch64-linux-gnu)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)

set(CMAKE_SYSROOT "${CMAKE_CURRENT_LIST_DIR}/../build/arm64-sysroot")
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# It finds the loader and libraries below the sysroot; everything else is the desk's.
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-aarch64-static -L "${CMAKE_SYSROOT}")
