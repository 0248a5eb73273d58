# Cross-compiles for Windows x86-64 with MinGW-w64 and the universal C runtime, and runs programs under Wine.
#
# The libraries come from CORVO_WINDOWS_PREFIX, which scripts/windows/build-libraries fills.

set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR AMD64)
set(CMAKE_C_COMPILER x86_64-w64-mingw32ucrt-gcc)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32ucrt-g++)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32ucrt-windres)

if(NOT CORVO_WINDOWS_PREFIX)
  set(CORVO_WINDOWS_PREFIX "${CMAKE_CURRENT_LIST_DIR}/../build/windows/prefix")
endif()
get_filename_component(CORVO_WINDOWS_PREFIX "${CORVO_WINDOWS_PREFIX}" ABSOLUTE)
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES CORVO_WINDOWS_PREFIX)

# Programs are the build machine's own; everything else is never taken from it.
set(CMAKE_FIND_ROOT_PATH "${CORVO_WINDOWS_PREFIX}" /usr/x86_64-w64-mingw32ucrt)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

set(CMAKE_CROSSCOMPILING_EMULATOR "${CMAKE_CURRENT_LIST_DIR}/../scripts/windows/wine")
