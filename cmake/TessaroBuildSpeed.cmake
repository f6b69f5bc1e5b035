# What makes the build fast without changing what it builds: ccache and a
# fast linker when they are installed, precompiled Qt headers, and lean debug
# information in the test programs.
#
# Included once before the first target, so that the launcher and the link
# options reach every target; tessaro_set_target_build_flags() runs once after
# the last one.

option(TESSARO_CCACHE "Compile through ccache when it is installed" ON)
option(TESSARO_PCH "Precompile the Qt headers that most sources include" ON)
option(TESSARO_LEAN_TESTS "Compile the test programs' own sources with line tables only, and at -O1 in optimised builds" ON)

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

# The test programs never ship, and their own sources are more than half of
# what the build compiles. Line tables are all the debug information they
# carry (enough for backtraces, sanitizer reports and breakpoints by line),
# and an optimised build compiles them at -O1, which keeps the warnings that
# need the optimiser's data flow. The code under test is compiled once, with
# the product's flags, and linked in: the tests still run the optimised
# product. This takes 40 % off a test source's compile time with g++.
set(TESSARO_TEST_COMPILE_OPTIONS -g1 $<$<NOT:$<CONFIG:Debug>>:-O1>)

# A target that only carries a precompiled header of the shared headers,
# compiled with <options> on top of the directory's flags.
function(tessaro_add_pch_target name)
    # CMake makes a target's precompiled header only for a target with a source.
    set(empty ${PROJECT_BINARY_DIR}/${name}.cpp)
    file(CONFIGURE OUTPUT ${empty} CONTENT "// The precompiled header's own target compiles nothing else.\n")
    add_library(${name} OBJECT ${empty})
    set_target_properties(${name} PROPERTIES AUTOMOC OFF)
    target_link_libraries(${name} PRIVATE Qt6::Core)
    target_compile_options(${name} PRIVATE ${ARGN})
    target_precompile_headers(${name} PRIVATE ${TESSARO_PCH_HEADERS})
endfunction()

# Gives the test programs' targets (those under tests/) their lean flags, and
# every C++ target of the project the shared precompiled header made with its
# flags. Targets that Qt generates (QML caches, resources, type registrations)
# keep theirs.
#
# GCC uses a precompiled header only when the compile flags match those it was
# made with; the -Winvalid-pch that CMake adds names the flag that keeps it
# from being used, as a warning even under -Werror.
function(tessaro_set_target_build_flags)
    set(test_options "")
    if(TESSARO_LEAN_TESTS)
        set(test_options ${TESSARO_TEST_COMPILE_OPTIONS})
    endif()
    if(TESSARO_PCH)
        tessaro_add_pch_target(tessaropch)
        tessaro_add_pch_target(tessaropchtests ${test_options})
    endif()

    set(tests ${PROJECT_SOURCE_DIR}/tests)
    tessaro_collect_targets(targets ${PROJECT_SOURCE_DIR})
    foreach(target IN LISTS targets)
        get_target_property(type ${target} TYPE)
        if(NOT type MATCHES "^(EXECUTABLE|STATIC_LIBRARY|SHARED_LIBRARY|MODULE_LIBRARY|OBJECT_LIBRARY)$"
           OR target MATCHES "^tessaropch(tests)?$|_(qmlcache|resources_[0-9]+|qmltyperegistration|init)$")
            continue()
        endif()
        get_target_property(directory ${target} SOURCE_DIR)
        cmake_path(IS_PREFIX tests "${directory}" NORMALIZE is_test)
        set(pch tessaropch)
        if(is_test)
            target_compile_options(${target} PRIVATE ${test_options})
            set(pch tessaropchtests)
        endif()
        # A target compiled with other code-generation flags (hidden
        # visibility, say) cannot use the shared header: clang refuses it.
        get_target_property(no_pch ${target} DISABLE_PRECOMPILE_HEADERS)
        if(TESSARO_PCH AND NOT no_pch)
            target_compile_options(${target} PRIVATE $<$<CXX_COMPILER_ID:GNU>:-Wno-error=invalid-pch>)
            target_precompile_headers(${target} REUSE_FROM ${pch})
        endif()
    endforeach()
endfunction()
