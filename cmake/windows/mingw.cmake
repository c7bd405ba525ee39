# Cross compiling for 64-bit Windows. The compilers with the POSIX threads have std::thread and its kin. Their run-time
# libraries are linked into each file: who installs the plug-in copies one file.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR AMD64)
set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)
foreach(kind IN ITEMS EXE SHARED MODULE)
    set(CMAKE_${kind}_LINKER_FLAGS_INIT -static)
endforeach()

# Libraries come from the prefix alone, and headers from nowhere else; programs are the machine's own. Eigen is
# nothing but headers and GoogleTest comes as sources, so both are named where they lie.
set(CMAKE_FIND_ROOT_PATH /usr/x86_64-w64-mingw32)
if(CMAKE_PREFIX_PATH)
    list(APPEND CMAKE_FIND_ROOT_PATH ${CMAKE_PREFIX_PATH})
endif()
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(Eigen3_DIR /usr/share/eigen3/cmake)

# What is built is run by Wine, which needs no display for anything but the windows platform.
find_program(wine NAMES wine wine64)
if(wine)
    set(CMAKE_CROSSCOMPILING_EMULATOR ${wine})
endif()
