# The one version of the plug-in and its tools is project()'s. The code reads
# it from a generated header (TESSARO_VERSION).
#
# The host expects nothing in the plug-in's Qt metadata but its interface id
# and class name, so the version is not there: the library carries it as a
# what-string ("@(#)TessaroBack x.y.z"), logs it at init and reports it to
# tessaro-till check.
set(TESSARO_GENERATED_DIR ${PROJECT_BINARY_DIR}/generated)
configure_file(${CMAKE_CURRENT_LIST_DIR}/tessaroversion.h.in ${TESSARO_GENERATED_DIR}/tessaroversion.h @ONLY)

add_library(tessaroversion INTERFACE)
target_include_directories(tessaroversion INTERFACE ${TESSARO_GENERATED_DIR})
