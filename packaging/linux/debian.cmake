# A Debian package for each component, by `cpack` in the folder of the build. scripts/package-linux makes them.
set(documents ${CMAKE_CURRENT_BINARY_DIR}/debian)
string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)
set(contact "VENTO developers <vento@vento.invalid>")
set(libraries_of_console CLI11 nlohmann-json libgcrypt libgpg-error systemd)
set(libraries_of_simulator CLI11 nlohmann-json systemd)
set(libraries_of_window nlohmann-json Qt systemd)
foreach(package IN ITEMS console:vento-console window:vento simulator:vento-simulator
        codec:libvento-codec1 codec-dev:libvento-codec-dev)
    string(REPLACE ":" ";" pair ${package})
    list(GET pair 0 component)
    list(GET pair 1 name)
    file(WRITE ${documents}/${name}/changelog
        "${name} (${PROJECT_VERSION}) unstable; urgency=medium\n\n  * Release ${PROJECT_VERSION}.\n\n -- ${contact}  ${date}\n")
    execute_process(COMMAND gzip -9nf ${documents}/${name}/changelog)
    file(WRITE ${documents}/${name}/copyright
        "VENTO\nCopyright (C) 2026 the VENTO developers\nNobody has chosen a licence for VENTO yet: all rights are reserved.\n")
    if(component STREQUAL "window" AND NOT TARGET vento)
        continue()
    endif()
    install(FILES ${documents}/${name}/changelog.gz ${documents}/${name}/copyright
        DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${name} COMPONENT ${component})
    install(CODE "
        execute_process(COMMAND ${PROJECT_SOURCE_DIR}/packaging/dependencies linux ${PROJECT_VERSION}
            \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_DATADIR}/doc/${name}/dependencies.spdx\"
            libstdc++ libgcc libc ${libraries_of_${component}} COMMAND_ERROR_IS_FATAL ANY)"
        COMPONENT ${component})
    list(APPEND components ${component})
    string(TOUPPER ${component} upper)
    set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${name})
    set(CPACK_DEBIAN_${upper}_FILE_NAME DEB-DEFAULT)
endforeach()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME vento)
set(CPACK_PACKAGE_CONTACT ${contact})
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_COMPONENTS_ALL ${components})
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_WINDOW_PACKAGE_DEPENDS "vento-console (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_CONSOLE_DESCRIPTION "Put code tables into a remote control, on the console
 VENTO puts the code lists of a programme file into a programmable TV remote
 control through a USB transmitter, and reads a remote back. This is ventoctl,
 which needs no display, and the rule that lets users open the transmitter.")
set(CPACK_DEBIAN_WINDOW_DESCRIPTION "Put code tables into a remote control, in a window
 VENTO puts the code lists of a programme file into a programmable TV remote
 control through a USB transmitter, and reads a remote back. This is the window.")
set(CPACK_DEBIAN_SIMULATOR_DESCRIPTION "Transmitter and remote control in software, for VENTO
 A simulated transmitter with a remote control in front of it that the kernel
 takes for a real HID or USB device, for training and tests without hardware.")
set(CPACK_DEBIAN_CODEC_DESCRIPTION "Codec for self-contained Huffman-compressed data
 One container holds the data, its code tree and a checksum; encoding and
 decoding take bytes, texts or files. This is the shared library.")
set(CPACK_DEBIAN_CODEC_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_CODEC-DEV_DESCRIPTION "Codec for self-contained Huffman-compressed data: development files
 One container holds the data, its code tree and a checksum; encoding and
 decoding take bytes, texts or files. These are the headers for C++ and C, the
 static library, and what CMake and pkg-config need to find it.")
set(CPACK_DEBIAN_CODEC-DEV_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_CODEC-DEV_PACKAGE_DEPENDS "libvento-codec1 (= ${PROJECT_VERSION})")
# CPack calls ldconfig for a shared library, come what may, where Debian would have the trigger alone.
file(WRITE ${documents}/overrides "libvento-codec1: maintscript-calls-ldconfig *\n")
install(FILES ${documents}/overrides
    DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides COMPONENT codec RENAME libvento-codec1)
file(WRITE ${documents}/shlibs "libvento_codec 1 libvento-codec1 (>= ${PROJECT_VERSION})\n")
file(WRITE ${documents}/triggers "activate-noawait ldconfig\n")
set(CPACK_DEBIAN_CODEC_PACKAGE_CONTROL_EXTRA ${documents}/shlibs ${documents}/triggers)
set(CPACK_DEBIAN_CONSOLE_PACKAGE_CONTROL_EXTRA "${CMAKE_CURRENT_SOURCE_DIR}/postinst")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
include(CPack)
