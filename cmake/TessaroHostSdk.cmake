# The host SDK the plug-in builds against, as the one target TessaroHost::SDK.
#
# The whole project builds the stand-in under host/ and links it. A plug-in-only
# build (TESSARO_PLUGIN_ONLY) takes the host's own SDK from TESSARO_HOST_SDK,
# either of:
#   - an install prefix holding the CMake package TessaroHostSDK (what the
#     stand-in installs: `cmake --install build --component sdk --prefix DIR`);
#   - a plain folder: headers in TESSARO_HOST_SDK_INCLUDE_DIR (default
#     <sdk>/include) and the libraries in TESSARO_HOST_SDK_LIBRARIES (default
#     every lib*.so in <sdk>/lib).

set(TESSARO_HOST_SDK "" CACHE PATH "Host SDK of a plug-in-only build: an install prefix or a folder with include/ and lib/")

if(NOT TESSARO_PLUGIN_ONLY)
    # Where the stand-in's headers go when it installs itself as an SDK.
    set(TESSARO_SDK_INCLUDEDIR ${CMAKE_INSTALL_INCLUDEDIR}/tessarohostsdk)
    add_subdirectory(host)
    add_library(TessaroHost::SDK ALIAS host)
    return()
endif()

if(NOT TESSARO_HOST_SDK)
    message(FATAL_ERROR "TESSARO_PLUGIN_ONLY needs the host SDK: -DTESSARO_HOST_SDK=/path/to/sdk")
endif()
cmake_path(ABSOLUTE_PATH TESSARO_HOST_SDK NORMALIZE)
# Another SDK for the same build tree: forget what was found in the last one.
if(NOT TESSARO_HOST_SDK STREQUAL "${TESSARO_HOST_SDK_FOUND_IN}")
    unset(TessaroHostSDK_DIR CACHE)
    unset(TESSARO_HOST_SDK_INCLUDE_DIR CACHE)
    unset(TESSARO_HOST_SDK_LIBRARIES CACHE)
    set(TESSARO_HOST_SDK_FOUND_IN "${TESSARO_HOST_SDK}" CACHE INTERNAL "The host SDK the cached paths come from")
endif()

find_package(TessaroHostSDK CONFIG QUIET PATHS ${TESSARO_HOST_SDK} NO_DEFAULT_PATH)
if(TessaroHostSDK_FOUND)
    add_library(TessaroHost::SDK ALIAS TessaroHostSDK::host)
    # The library's folder, where the package's dependency scan finds it.
    get_target_property(configurations TessaroHostSDK::host IMPORTED_CONFIGURATIONS)
    list(GET configurations 0 configuration)
    get_target_property(location TessaroHostSDK::host IMPORTED_LOCATION_${configuration})
    cmake_path(GET location PARENT_PATH TESSARO_HOST_SDK_LIBRARY_DIRS)
    message(STATUS "Host SDK: the CMake package in ${TessaroHostSDK_DIR}")
    return()
endif()

set(TESSARO_HOST_SDK_INCLUDE_DIR "${TESSARO_HOST_SDK}/include" CACHE PATH "Include folder of the host SDK")
if(NOT DEFINED TESSARO_HOST_SDK_LIBRARIES)
    file(GLOB sdk_libraries "${TESSARO_HOST_SDK}/lib/lib*.so")
    set(TESSARO_HOST_SDK_LIBRARIES "${sdk_libraries}" CACHE STRING "Libraries of the host SDK the plug-in links")
endif()
if(NOT IS_DIRECTORY "${TESSARO_HOST_SDK_INCLUDE_DIR}" OR NOT TESSARO_HOST_SDK_LIBRARIES)
    message(FATAL_ERROR "No host SDK in ${TESSARO_HOST_SDK}: neither the CMake package TessaroHostSDK "
        "nor headers in ${TESSARO_HOST_SDK_INCLUDE_DIR} and libraries in TESSARO_HOST_SDK_LIBRARIES")
endif()
set(TESSARO_HOST_SDK_LIBRARY_DIRS)
foreach(library IN LISTS TESSARO_HOST_SDK_LIBRARIES)
    cmake_path(GET library PARENT_PATH folder)
    list(APPEND TESSARO_HOST_SDK_LIBRARY_DIRS ${folder})
endforeach()
list(REMOVE_DUPLICATES TESSARO_HOST_SDK_LIBRARY_DIRS)
add_library(TessaroHost::SDK INTERFACE IMPORTED)
target_include_directories(TessaroHost::SDK INTERFACE ${TESSARO_HOST_SDK_INCLUDE_DIR})
target_link_libraries(TessaroHost::SDK INTERFACE ${TESSARO_HOST_SDK_LIBRARIES} Qt6::Core Qt6::Network Qt6::Qml)
message(STATUS "Host SDK: headers in ${TESSARO_HOST_SDK_INCLUDE_DIR}, libraries ${TESSARO_HOST_SDK_LIBRARIES}")
