# Fails when the built DLL exports anything but its five functions and the class KestraMfr, or needs any other file than
# Qt, the C runtime and Windows itself: the compiler's own run-time libraries are to be in it.
cmake_minimum_required(VERSION 3.25)
execute_process(COMMAND ${OBJDUMP} -p ${LIBRARY} OUTPUT_VARIABLE headers COMMAND_ERROR_IS_FATAL ANY)

# A line of the table of names: a number in brackets and the name.
string(REGEX MATCHALL "\n\t\\[ *[0-9]+\\] [^+\n][^\n]*" exports "${headers}")
list(TRANSFORM exports REPLACE ".*\\] " "")
list(SORT exports)
set(expected CloseDialog ImageData OpenQtDialog RegisterChanged RgbImageData)
# Constructor and destructor, each under both names that the compiler gives them, and the assignment.
list(APPEND expected _ZN9KestraMfrC1Ev _ZN9KestraMfrC2Ev _ZN9KestraMfrD1Ev _ZN9KestraMfrD2Ev _ZN9KestraMfraSERKS_)
if(NOT exports STREQUAL expected)
    message(FATAL_ERROR "the plug-in exports\n  ${exports}\ninstead of\n  ${expected}")
endif()

string(REGEX MATCHALL "DLL Name: [^\n]+" imports "${headers}")
list(TRANSFORM imports REPLACE "DLL Name: " "")
set(allowed Qt5Core.dll Qt5Gui.dll Qt5Widgets.dll msvcrt.dll KERNEL32.dll)
set(foreign ${imports})
list(REMOVE_ITEM foreign ${allowed})
if(foreign OR NOT Qt5Widgets.dll IN_LIST imports)
    message(FATAL_ERROR "the plug-in needs\n  ${imports}\nwhere only these are allowed\n  ${allowed}")
endif()
