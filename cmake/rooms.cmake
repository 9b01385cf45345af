# A room is one folder below src/ and one static library. It sees the headers of the rooms it names under USES and
# of what those use, and of no other: each room's headers are reached through an include folder of its own, in which
# the room appears under its name. An include against the direction of the arrows does not compile.

add_library(vento_options INTERFACE)
target_compile_options(vento_options INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Werror)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    # It warns of overlapping copies inside std::string that there are none of (GCC bug 105651).
    target_compile_options(vento_options INTERFACE -Wno-restrict)
endif()
if(VENTO_SANITIZE)
    target_compile_options(vento_options INTERFACE
        -fsanitize=${VENTO_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(vento_options INTERFACE -fsanitize=${VENTO_SANITIZE})
endif()

# vento_room(NAME [FOLDER folder] [SOURCES file...] [USES room...] [LINKS target...])
# NAME is the room's, its folder src/NAME unless FOLDER says otherwise. Without SOURCES the room is headers alone.
function(vento_room name)
    cmake_parse_arguments(ARG "" "FOLDER" "SOURCES;USES;LINKS" ${ARGN})
    if(NOT ARG_FOLDER)
        set(ARG_FOLDER ${name})
    endif()
    get_filename_component(parent ${ARG_FOLDER} DIRECTORY)
    set(include ${PROJECT_BINARY_DIR}/rooms/${name})
    file(MAKE_DIRECTORY ${include}/${parent})
    file(CREATE_LINK ${PROJECT_SOURCE_DIR}/src/${ARG_FOLDER} ${include}/${ARG_FOLDER} SYMBOLIC)

    list(TRANSFORM ARG_USES PREPEND vento_)
    if(ARG_SOURCES)
        list(TRANSFORM ARG_SOURCES PREPEND ${PROJECT_SOURCE_DIR}/src/${ARG_FOLDER}/)
        add_library(vento_${name} STATIC ${ARG_SOURCES})
        target_include_directories(vento_${name} PUBLIC $<BUILD_INTERFACE:${include}>)
        target_link_libraries(vento_${name} PUBLIC ${ARG_USES} ${ARG_LINKS} PRIVATE $<BUILD_INTERFACE:vento_options>)
    else()
        add_library(vento_${name} INTERFACE)
        target_include_directories(vento_${name} INTERFACE ${include})
        target_link_libraries(vento_${name} INTERFACE ${ARG_USES} ${ARG_LINKS})
    endif()
endfunction()

if(WIN32)
    include(${CMAKE_CURRENT_LIST_DIR}/windows/program_resources.cmake)
elseif(CMAKE_SYSTEM_NAME STREQUAL "Web")
    include(${CMAKE_CURRENT_LIST_DIR}/web/web_module.cmake)
endif()

# vento_program(NAME SOURCES file... [USES room...] [LINKS target...] [TITLE text]), the files relative to the current
# folder. TITLE says what the program is to the people that get it.
function(vento_program name)
    cmake_parse_arguments(ARG "" "TITLE" "SOURCES;USES;LINKS" ${ARGN})
    list(TRANSFORM ARG_USES PREPEND vento_)
    add_executable(${name} ${ARG_SOURCES})
    target_link_libraries(${name} PRIVATE ${ARG_USES} ${ARG_LINKS} vento_options)
    if(WIN32)
        program_resources(${name} "${ARG_TITLE}")
    endif()
endfunction()
