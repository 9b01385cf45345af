# What a Windows program carries along besides its code.
enable_language(RC)
set(resources ${PROJECT_SOURCE_DIR}/packaging/windows)

# program_resources(TARGET): the manifest, which every program needs that is to meet paths and texts beyond ASCII.
function(program_resources target)
    set(script ${PROJECT_BINARY_DIR}/resources/manifest.rc)
    if(NOT EXISTS ${script})
        file(WRITE ${script} "1 24 \"${resources}/program.manifest\"\n")  # 24: RT_MANIFEST
    endif()
    set_property(SOURCE ${script} APPEND PROPERTY OBJECT_DEPENDS ${resources}/program.manifest)
    target_sources(${target} PRIVATE ${script})
endfunction()
