# Cross-builds for 64-bit Windows with Debian's mingw-w64. A program is one file: whatever of the compiler's libraries it
# needs is linked into it. Found on the building system are programs alone; the Find modules in cmake/cross bring
# in the few packages that are nothing but sources.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)

set(CMAKE_FIND_ROOT_PATH /usr/x86_64-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
list(APPEND CMAKE_MODULE_PATH ${CMAKE_CURRENT_LIST_DIR}/../cross)

# Windows 10 is the oldest; windows.h without its macros min and max.
set(CMAKE_CXX_FLAGS_INIT
    "-ffunction-sections -fdata-sections -D_WIN32_WINNT=0x0A00 -DWINVER=0x0A00 -DNOMINMAX")
# Control-flow guard is not among the hardening: this compiler has none. Without a time stamp, the same sources give the
# same bytes.
string(CONCAT CMAKE_EXE_LINKER_FLAGS_INIT
    "-static -s -Wl,--gc-sections -Wl,--nxcompat,--dynamicbase,--high-entropy-va,--tsaware,--no-insert-timestamp "
    "-Wl,--major-os-version=10,--minor-os-version=0,--major-subsystem-version=10,--minor-subsystem-version=0")

set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/../../tests/wine/run)
