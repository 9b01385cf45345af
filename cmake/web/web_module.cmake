# web_module(TARGET): a program that is no program but a module, which a script calls; as small as it gets.
find_program(WASM_OPT wasm-opt REQUIRED)
function(web_module target)
    target_sources(${target} PRIVATE ${PROJECT_SOURCE_DIR}/src/platform/web/no_system.cpp)
    target_link_options(${target} PRIVATE -mexec-model=reactor -Wl,--stack-first,-z,stack-size=262144)
    add_custom_command(TARGET ${target} POST_BUILD
        COMMAND ${WASM_OPT} -Oz --enable-exception-handling --enable-bulk-memory --enable-sign-ext
            --enable-mutable-globals --enable-nontrapping-float-to-int $<TARGET_FILE:${target}> -o $<TARGET_FILE:${target}>
        VERBATIM)
endfunction()
