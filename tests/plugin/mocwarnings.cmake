# Runs moc on HEADER as AutoMoc runs it for the plug-in's library (the include
# paths, definitions and predefined macros of AUTOGEN_INFO) and fails on any
# warning moc prints: the build shows moc's warnings but does not stop on them.
file(READ "${AUTOGEN_INFO}" info)
string(JSON moc GET "${info}" QT_MOC_EXECUTABLE)
string(JSON predefs GET "${info}" MOC_PREDEFS_FILE)
set(arguments --include "${predefs}")
foreach(list MOC_INCLUDES MOC_DEFINITIONS)
    string(JSON count LENGTH "${info}" ${list})
    math(EXPR last "${count} - 1")
    foreach(index RANGE ${last})
        string(JSON value GET "${info}" ${list} ${index})
        if(list STREQUAL "MOC_INCLUDES")
            list(APPEND arguments "-I${value}")
        else()
            list(APPEND arguments "-D${value}")
        endif()
    endforeach()
endforeach()
execute_process(COMMAND "${moc}" ${arguments} "${HEADER}"
                OUTPUT_QUIET ERROR_VARIABLE warnings RESULT_VARIABLE result)
if(NOT result EQUAL 0 OR NOT warnings STREQUAL "")
    message(FATAL_ERROR "moc on ${HEADER} (exit ${result}):\n${warnings}")
endif()
