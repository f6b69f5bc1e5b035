# The one version of the plug-in and its tools is project()'s. The code reads
# it from a generated header (TESSARO_VERSION); the plug-in's Qt metadata file
# is generated too.
#
# The host reads the plug-in's metadata and expects only its interface id and
# class name there, so the version goes into the metadata ("MetaData":
# {"Version": ...}) only when TESSARO_VERSION_IN_PLUGIN_METADATA is on, for a
# host known to accept it. Either way the library carries the version as a
# string, logs it at init and reports it to tessaro-till check.
option(TESSARO_VERSION_IN_PLUGIN_METADATA
       "Put the version into the plug-in's Qt metadata beside its interface id and class name" OFF)

set(TESSARO_GENERATED_DIR ${PROJECT_BINARY_DIR}/generated)
if(TESSARO_VERSION_IN_PLUGIN_METADATA)
    set(TESSARO_VERSION_IN_METADATA 1)
    set(TESSARO_PLUGIN_METADATA "{\"Version\": \"${PROJECT_VERSION}\"}")
else()
    set(TESSARO_VERSION_IN_METADATA 0)
    set(TESSARO_PLUGIN_METADATA "{}")
endif()
configure_file(${CMAKE_CURRENT_LIST_DIR}/tessaroversion.h.in ${TESSARO_GENERATED_DIR}/tessaroversion.h @ONLY)
configure_file(${CMAKE_CURRENT_LIST_DIR}/tessarobackmetadata.json.in ${TESSARO_GENERATED_DIR}/tessarobackmetadata.json @ONLY)

add_library(tessaroversion INTERFACE)
target_include_directories(tessaroversion INTERFACE ${TESSARO_GENERATED_DIR})
