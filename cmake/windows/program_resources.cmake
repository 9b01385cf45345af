# What a Windows program carries along besides its code.
enable_language(RC)
set(windows_resources ${PROJECT_BINARY_DIR}/resources)
set(windows_packaging ${PROJECT_SOURCE_DIR}/packaging/windows)
configure_file(${windows_packaging}/manifest.rc.in ${windows_resources}/manifest.rc @ONLY)
set_source_files_properties(${windows_resources}/manifest.rc PROPERTIES
    OBJECT_DEPENDS ${windows_packaging}/program.manifest)

# windows_icon(NAME): resources/NAME.ico in the build folder, from the drawing of that name.
find_program(RSVG_CONVERT rsvg-convert REQUIRED)
find_program(ICOTOOL icotool REQUIRED)
function(windows_icon name)
    set(drawing ${PROJECT_SOURCE_DIR}/src/desktop/art/${name}.svg)
    set(sizes 16 20 24 32 40 48 64 256)
    set(pictures ${sizes})
    list(TRANSFORM pictures REPLACE ".+" "${windows_resources}/${name}-\\0.png")
    set(draw)
    foreach(size picture IN ZIP_LISTS sizes pictures)
        list(APPEND draw COMMAND ${RSVG_CONVERT} -w ${size} -h ${size} -o ${picture} ${drawing})
    endforeach()
    list(POP_BACK pictures largest)  # which the system wants as a compressed picture, the others as plain ones
    add_custom_command(OUTPUT ${windows_resources}/${name}.ico
        ${draw}
        COMMAND ${ICOTOOL} -c -o ${windows_resources}/${name}.ico ${pictures} -r ${largest}
        DEPENDS ${drawing} VERBATIM)
endfunction()
windows_icon(vento)
windows_icon(programme)
# The window's logo, four times as large as on a plain screen: it is made smaller for each.
add_custom_command(OUTPUT ${windows_resources}/logo.png
    COMMAND ${RSVG_CONVERT} -z 4 -o ${windows_resources}/logo.png ${PROJECT_SOURCE_DIR}/src/desktop/art/logo.svg
    DEPENDS ${PROJECT_SOURCE_DIR}/src/desktop/art/logo.svg VERBATIM)
set(windows_pictures ${windows_resources}/vento.ico ${windows_resources}/programme.ico ${windows_resources}/logo.png)
add_custom_target(windows_pictures DEPENDS ${windows_pictures})

# program_resources(TARGET TITLE): the manifest, which every program needs that is to meet paths and texts beyond ASCII;
# where there is a TITLE, the icons, the logo and the version that the system shows too.
function(program_resources target title)
    target_sources(${target} PRIVATE ${windows_resources}/manifest.rc)
    if(NOT title)
        return()
    endif()
    set(script ${windows_resources}/${target}.rc)
    configure_file(${windows_packaging}/program.rc.in ${script} @ONLY)
    target_sources(${target} PRIVATE ${script})
    set_source_files_properties(${script} TARGET_DIRECTORY ${target} PROPERTIES
        OBJECT_DEPENDS "${windows_pictures}")
    add_dependencies(${target} windows_pictures)
endfunction()
