# The Debian packages: `scripts/tessaro.sh package` makes both; `cpack -G DEB`
# in a build folder configured with CMAKE_INSTALL_PREFIX=/usr makes that
# build's one.
#
# tessaroback, from a plug-in-only build (TESSARO_PLUGIN_ONLY, against the
# host SDK of the tills): the plug-in in the host's plug-in folder
# (TESSARO_HOST_PLUGIN_DIR), its QML form compiled in, with no run path: the
# host has its SDK's libraries loaded when it loads a plug-in. This is what goes
# on a till (`scripts/tessaro.sh plugin-package --sdk DIR`).
#
# tessaroback-tools, from the whole project, for a developer's machine: the
# host stand-in library in a folder of the package's own (<libdir>/tessaroback,
# so it never takes a system library's name), a copy of the plug-in built
# against it (TESSARO_TOOLS_PLUGIN_DIR, where the till looks by default), the
# till simulator tessaro-till with its bundled scenarios, the service emulator
# tessaro-emulator and a manual page for each program. Programs and plug-in find
# the library through their run path, relative to themselves. It needs nothing
# of a real host and shares no file with tessaroback.
#
# Each package carries the README and the docs/ folder it links, so that the
# installed README's links resolve; <package>-dbgsym holds the debug symbols
# that CPack strips from the binaries.

set(TESSARO_MAINTAINER "TessaroBack developers <tessaroback-dev@example.com>"
    CACHE STRING "The Debian package's maintainer, as \"Name <address>\"")
set(TESSARO_PACKAGE_REVISION 1 CACHE STRING "The Debian revision of the package's version")
set(TESSARO_PACKAGE_VERSION ${PROJECT_VERSION}-${TESSARO_PACKAGE_REVISION})

if(TESSARO_PLUGIN_ONLY)
    set(CPACK_PACKAGE_NAME tessaroback)
else()
    set(CPACK_PACKAGE_NAME tessaroback-tools)
endif()
set(TESSARO_PRIVATE_LIBDIR ${CMAKE_INSTALL_LIBDIR}/tessaroback)
set(docdir ${CMAKE_INSTALL_DATADIR}/doc/${CPACK_PACKAGE_NAME})

if(TARGET host)
    install(TARGETS host LIBRARY DESTINATION ${TESSARO_PRIVATE_LIBDIR})
endif()
if(TARGET tessaro-till)
    set_target_properties(tessaro-till tessaro-till-cart PROPERTIES INSTALL_RPATH "$ORIGIN/../${TESSARO_PRIVATE_LIBDIR}")
endif()
if(TARGET tessaro-emulator)
    install(TARGETS tessaro-emulator RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()
if(TESSARO_PLUGIN_ONLY)
    # No run path, not even the one qt_standard_project_setup() gives every target.
    set_target_properties(tessaroback PROPERTIES INSTALL_RPATH "")
    install(TARGETS tessaroback LIBRARY DESTINATION ${TESSARO_HOST_PLUGIN_DIR})
else()
    # From the tools' plug-in folder to the stand-in, for the plug-in's run path.
    file(RELATIVE_PATH plugin_to_lib
        "/prefix/${TESSARO_TOOLS_PLUGIN_DIR}" "/prefix/${TESSARO_PRIVATE_LIBDIR}")
    set_target_properties(tessaroback PROPERTIES INSTALL_RPATH "$ORIGIN/${plugin_to_lib}")
    install(TARGETS tessaroback LIBRARY DESTINATION ${TESSARO_TOOLS_PLUGIN_DIR})
    install(DIRECTORY ${PROJECT_SOURCE_DIR}/till/scenarios/
        DESTINATION ${CMAKE_INSTALL_DATADIR}/tessaro-till/scenarios)
endif()

# The documents Debian asks for: the copyright in its machine-readable form and
# the package's change log, compressed without a time stamp so that the
# package's content stays the same from one build to the next.
set(packaging ${PROJECT_BINARY_DIR}/packaging)
configure_file(${PROJECT_SOURCE_DIR}/packaging/copyright.in ${packaging}/copyright @ONLY)
configure_file(${PROJECT_SOURCE_DIR}/packaging/changelog.in ${packaging}/changelog.Debian @ONLY)
add_custom_command(OUTPUT ${packaging}/changelog.Debian.gz
    COMMAND gzip -9nkf changelog.Debian
    DEPENDS ${packaging}/changelog.Debian
    WORKING_DIRECTORY ${packaging}
    VERBATIM)
add_custom_target(packagedocs ALL DEPENDS ${packaging}/changelog.Debian.gz)
install(FILES ${packaging}/copyright ${packaging}/changelog.Debian.gz ${PROJECT_SOURCE_DIR}/README.md
    DESTINATION ${docdir})
# The whole docs/ folder beside the README, as in the repository, so that every
# relative link resolves (scripts/packagecheck.sh checks them in each package).
install(DIRECTORY ${PROJECT_SOURCE_DIR}/docs DESTINATION ${docdir})

# A manual page for each program, made from its --help by help2man. Sanitizer
# builds make none: their programs are not the ones packaged.
find_program(TESSARO_HELP2MAN help2man)
if(TESSARO_HELP2MAN AND NOT (TESSARO_SANITIZE OR TESSARO_FUZZ))
    set(pages)
    set(programs tessaro-till tessaro-emulator tessaro-till-cart)
    set(summaries "till that loads the TessaroBack plug-in as the POS host does"
                  "emulator of the Tessaro cart and pricing service"
                  "cart sessions of the till simulation (tessaro-till simulate --cart)")
    foreach(program summary IN ZIP_LISTS programs summaries)
        if(TARGET ${program})
            set(page ${PROJECT_BINARY_DIR}/man/${program}.1)
            add_custom_command(OUTPUT ${page}.gz
                COMMAND ${CMAKE_COMMAND} -E make_directory ${PROJECT_BINARY_DIR}/man
                COMMAND ${TESSARO_HELP2MAN} --no-info --section=1 --source=TessaroBack
                    --version-string=${PROJECT_VERSION} --name=${summary} --output=${page} $<TARGET_FILE:${program}>
                COMMAND gzip -9nf ${page}
                DEPENDS ${program}
                VERBATIM)
            list(APPEND pages ${page}.gz)
        endif()
    endforeach()
    add_custom_target(manpages ALL DEPENDS ${pages})
    install(FILES ${pages} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
endif()

set(CPACK_PACKAGE_VENDOR "TessaroBack")
set(CPACK_PACKAGE_CONTACT "${TESSARO_MAINTAINER}")
# Debian wants the long description in lines of at most 80 characters.
if(TESSARO_PLUGIN_ONLY)
    set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
    set(CPACK_PACKAGE_DESCRIPTION [[
The TessaroBack plug-in lets a point-of-sale till return goods against the
Tessaro cart and pricing service: it obtains the original sale invoice,
requires return reasons, refuses forbidden payment mixes and sends the service
an advice note before a return document closes.

This package holds the plug-in alone, for the host application's plug-in
folder; the host application provides the libraries of its SDK.]])
else()
    set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "TessaroBack till simulator, service emulator and host stand-in")
    set(CPACK_PACKAGE_DESCRIPTION [[
Tools to develop and rehearse the TessaroBack returns plug-in without a real
point-of-sale host: the till simulator tessaro-till, which plays scenarios
through the plug-in (its demo command plays the bundled ones), the service
emulator tessaro-emulator, the host stand-in library both run on, and a copy
of the plug-in built against that stand-in.]])
endif()
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE ${TESSARO_PACKAGE_REVISION})
set(CPACK_DEBIAN_PACKAGE_SECTION misc)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
# Binaries stripped into the package, their symbols into tessaroback-dbgsym.
set(CPACK_DEBIAN_DEBUGINFO_PACKAGE ON)
# The libraries the binaries load, found by dpkg-shlibdeps, except the host
# SDK's, which come with the host and not from a Debian package. Then what no
# binary names: the QML modules that the invoice form imports (QtQuick,
# Controls, Layouts) with those they import in turn, and for the tools the
# SQLite driver of the stand-in's storage.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(qml_depends "qml6-module-qtquick, qml6-module-qtquick-controls, qml6-module-qtquick-layouts, qml6-module-qtquick-templates, qml6-module-qtquick-window, qml6-module-qtqml-workerscript")
if(TESSARO_PLUGIN_ONLY)
    set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${TESSARO_HOST_SDK_LIBRARY_DIRS})
    set(CPACK_DEBIAN_PACKAGE_DEPENDS "${qml_depends}")
else()
    set(CPACK_DEBIAN_PACKAGE_DEPENDS "libqt6sql6-sqlite, ${qml_depends}")
endif()
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "fonts-dejavu-core")
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
include(CPack)
