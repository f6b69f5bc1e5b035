# What makes the build fast without changing what it builds: ccache and a
# fast linker when they are installed, and precompiled Qt headers.
#
# Included once before the first target, so that the launcher and the link
# options reach every target; tessaro_precompile_qt_headers() runs once after
# the last one.

option(TESSARO_CCACHE "Compile through ccache when it is installed" ON)
option(TESSARO_PCH "Precompile the Qt headers that most sources include" ON)

if(TESSARO_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
    find_program(TESSARO_CCACHE_PROGRAM ccache)
    if(TESSARO_CCACHE_PROGRAM)
        set(CMAKE_CXX_COMPILER_LAUNCHER ${TESSARO_CCACHE_PROGRAM})
    endif()
endif()

# mold, else lld: both link the test programs several times faster than ld.bfd.
set(TESSARO_LINKER "" CACHE STRING "Linker for -fuse-ld= (empty: mold, else lld, when installed)")
if(NOT TESSARO_LINKER)
    find_program(TESSARO_MOLD_PROGRAM NAMES ld.mold)
    find_program(TESSARO_LLD_PROGRAM NAMES ld.lld)
    if(TESSARO_MOLD_PROGRAM)
        set(TESSARO_LINKER mold)
    elseif(TESSARO_LLD_PROGRAM)
        set(TESSARO_LINKER lld)
    endif()
endif()
if(TESSARO_LINKER)
    add_link_options(-fuse-ld=${TESSARO_LINKER})
endif()

# The headers of QtCore and the standard library that most sources include.
# None of them depends on which Qt modules a target links, so one compiled
# copy serves every target. (QtTest's headers would not do: they depend on
# QT_TESTCASE_SOURCEDIR, which Qt sets per folder.)
set(TESSARO_PCH_HEADERS
    <algorithm> <functional> <memory> <utility>
    <QByteArray> <QCoreApplication> <QCryptographicHash> <QDateTime> <QDebug> <QDir> <QFile> <QFileInfo>
    <QHash> <QJsonArray> <QJsonDocument> <QJsonObject> <QJsonValue> <QList> <QLoggingCategory> <QMap>
    <QMetaType> <QMutex> <QObject> <QPointer> <QRegularExpression> <QSet> <QSharedPointer> <QString>
    <QStringList> <QTemporaryDir> <QTextStream> <QUrl> <QVariant>)

# All targets under the source folder, this folder's subfolders included.
function(tessaro_collect_targets out directory)
    get_property(targets DIRECTORY ${directory} PROPERTY BUILDSYSTEM_TARGETS)
    get_property(subdirectories DIRECTORY ${directory} PROPERTY SUBDIRECTORIES)
    foreach(subdirectory IN LISTS subdirectories)
        tessaro_collect_targets(more ${subdirectory})
        list(APPEND targets ${more})
    endforeach()
    set(${out} ${targets} PARENT_SCOPE)
endfunction()

# Gives every C++ target of the project the shared precompiled header. Targets
# that Qt generates (QML caches, resources, type registrations) keep theirs.
#
# GCC uses a precompiled header only when the compile flags match those it was
# made with; the -Winvalid-pch that CMake adds names the flag that keeps it
# from being used, as a warning even under -Werror.
function(tessaro_precompile_qt_headers)
    if(NOT TESSARO_PCH)
        return()
    endif()
    # CMake makes a target's precompiled header only for a target with a source.
    set(empty ${PROJECT_BINARY_DIR}/tessaropch.cpp)
    file(CONFIGURE OUTPUT ${empty} CONTENT "// The precompiled header's own target compiles nothing else.\n")
    add_library(tessaropch OBJECT ${empty})
    set_target_properties(tessaropch PROPERTIES AUTOMOC OFF)
    target_link_libraries(tessaropch PRIVATE Qt6::Core)
    target_precompile_headers(tessaropch PRIVATE ${TESSARO_PCH_HEADERS})

    tessaro_collect_targets(targets ${PROJECT_SOURCE_DIR})
    foreach(target IN LISTS targets)
        get_target_property(type ${target} TYPE)
        if(type MATCHES "^(EXECUTABLE|STATIC_LIBRARY|SHARED_LIBRARY|MODULE_LIBRARY|OBJECT_LIBRARY)$"
           AND NOT target MATCHES "^tessaropch$|_(qmlcache|resources_[0-9]+|qmltyperegistration|init)$")
            target_compile_options(${target} PRIVATE $<$<CXX_COMPILER_ID:GNU>:-Wno-error=invalid-pch>)
            target_precompile_headers(${target} REUSE_FROM tessaropch)
        endif()
    endforeach()
endfunction()
