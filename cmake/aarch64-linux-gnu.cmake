# 64-bit Arm with Debian's cross compiler; tools/setup --arm64 fetches the libraries. Programs run under qemu.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)
set(CMAKE_LIBRARY_ARCHITECTURE aarch64-linux-gnu)

set(libraries ${CMAKE_CURRENT_LIST_DIR}/../third_party/arm64/usr)
set(CMAKE_FIND_ROOT_PATH ${libraries})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
# Libraries that libraries need are looked for here.
set(CMAKE_EXE_LINKER_FLAGS_INIT -Wl,-rpath-link,${libraries}/lib/aarch64-linux-gnu)
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-aarch64 -L /usr/aarch64-linux-gnu
                                  -E LD_LIBRARY_PATH=${libraries}/lib/aarch64-linux-gnu)
