# Builds WebAssembly for a browser's page with Debian's clang, wasi-libc, and a C++ library with exceptions, which is built
# here once. The headers of packages that are nothing but headers come in by the Find modules in cmake/cross.
set(CMAKE_SYSTEM_NAME Web)
set(CMAKE_SYSTEM_PROCESSOR wasm32)
list(APPEND CMAKE_MODULE_PATH ${CMAKE_CURRENT_LIST_DIR} ${CMAKE_CURRENT_LIST_DIR}/../cross)

get_filename_component(runtimes ${CMAKE_CURRENT_LIST_DIR}/../../build/web-runtimes ABSOLUTE)
if(NOT EXISTS ${runtimes}/version)
    message(STATUS "Building the C++ library for WebAssembly, once: this takes a minute or two")
    execute_process(COMMAND ${CMAKE_CURRENT_LIST_DIR}/runtimes ${runtimes}
        OUTPUT_VARIABLE said ERROR_VARIABLE said RESULT_VARIABLE failed)
    if(failed)
        message(FATAL_ERROR "The C++ library for WebAssembly can't be built here:\n${said}")
    endif()
endif()

set(CMAKE_CXX_COMPILER clang++-19)
set(CMAKE_CXX_COMPILER_TARGET wasm32-wasi)
set(CMAKE_AR /usr/bin/llvm-ar-19)
set(CMAKE_RANLIB /usr/bin/llvm-ranlib-19)
set(CMAKE_FIND_ROOT_PATH ${runtimes})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

set(CMAKE_CXX_FLAGS_INIT "-fwasm-exceptions -nostdinc++ -isystem ${runtimes}/include/c++/v1")
set(CMAKE_EXE_LINKER_FLAGS_INIT "-fuse-ld=lld -nostdlib++ -L${runtimes}/lib -Wl,--strip-all,--gc-sections")
set(CMAKE_CXX_STANDARD_LIBRARIES "-lc++ -lc++abi -lunwind")

# Programs with a main(), the tests, run under node, in a version that can wait in the middle of a call.
set(node ${runtimes}/../npm/node_modules/.bin/node --experimental-wasm-jspi --no-warnings)
set(CMAKE_CROSSCOMPILING_EMULATOR ${node} ${CMAKE_CURRENT_LIST_DIR}/../../tests/web/run_program.mjs)
