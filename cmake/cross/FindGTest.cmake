# Debian's package googletest has the sources; libgtest-dev has libraries for the building system alone.
set(sources /usr/src/googletest/googletest)
if(NOT EXISTS ${sources}/src/gtest-all.cc)
    message(FATAL_ERROR "GTest was not found: there are no sources in ${sources}.")
endif()
if(NOT TARGET GTest::gtest_main)
    add_library(gtest_main STATIC EXCLUDE_FROM_ALL ${sources}/src/gtest-all.cc ${sources}/src/gtest_main.cc)
    target_include_directories(gtest_main SYSTEM PUBLIC ${sources}/include PRIVATE ${sources})
    if(CMAKE_SYSTEM_NAME STREQUAL "Web")  # which has neither signals nor streams to redirect
        target_compile_definitions(gtest_main PUBLIC GTEST_HAS_STREAM_REDIRECTION=0 GTEST_HAS_DEATH_TEST=0
            PRIVATE _WASI_EMULATED_SIGNAL)
        target_link_libraries(gtest_main PRIVATE wasi-emulated-signal)
    endif()
    add_library(GTest::gtest_main ALIAS gtest_main)
endif()
set(GTest_FOUND TRUE)
