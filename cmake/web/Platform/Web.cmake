# A browser's page: no operating system, static libraries, programs that a script loads.
set(CMAKE_EXECUTABLE_SUFFIX .wasm)
set_property(GLOBAL PROPERTY TARGET_SUPPORTS_SHARED_LIBS FALSE)
