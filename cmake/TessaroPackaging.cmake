# The Debian package: `cpack -G DEB` in the build folder.
#
# It holds the plug-in (in the host's plug-in folder, TESSARO_HOST_PLUGIN_DIR),
# the host stand-in library that the plug-in and the programs need, the till
# simulator tessaro-till with its bundled scenarios, and the service emulator
# tessaro-emulator. Installed programs find the library next to them through
# their run path, and the plug-in finds it the same way from its folder.

if(TARGET host)
    install(TARGETS host LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
endif()

foreach(program tessaro-till tessaro-emulator)
    if(TARGET ${program})
        set_target_properties(${program} PROPERTIES INSTALL_RPATH "$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")
    endif()
endforeach()
if(TARGET tessaro-emulator)
    install(TARGETS tessaro-emulator RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()

if(TARGET tessaroback)
    # From the plug-in folder back to the library folder, for the plug-in's run path.
    file(RELATIVE_PATH plugin_to_lib
        "/prefix/${TESSARO_HOST_PLUGIN_DIR}" "/prefix/${CMAKE_INSTALL_LIBDIR}")
    set_target_properties(tessaroback PROPERTIES INSTALL_RPATH "$ORIGIN/${plugin_to_lib}")
endif()

install(DIRECTORY ${PROJECT_SOURCE_DIR}/till/scenarios/
    DESTINATION ${CMAKE_INSTALL_DATADIR}/tessaro-till/scenarios)
install(FILES ${PROJECT_SOURCE_DIR}/README.md ${PROJECT_SOURCE_DIR}/docs/scenarios.md
    DESTINATION ${CMAKE_INSTALL_DOCDIR})

set(CPACK_PACKAGE_NAME tessaroback)
set(CPACK_PACKAGE_VENDOR "TessaroBack")
set(CPACK_PACKAGE_CONTACT "TessaroBack developers <tessaroback@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_PACKAGE_DESCRIPTION
    "The TessaroBack plug-in for the POS host, with the host stand-in library, the till simulator tessaro-till and the Tessaro service emulator.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION misc)
# The Qt, SQLite driver and libcurl packages the binaries load.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS "libqt6sql6-sqlite")
include(CPack)
