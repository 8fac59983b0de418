# 32-bit Windows with MinGW-w64, the thread model that <thread> and thread_local need. scripts/install.sh
# installs what this file names; scripts/wine.sh provides the Wine that runs what it builds.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR i686)
set(CMAKE_CXX_COMPILER i686-w64-mingw32-g++-posix)
set(CMAKE_C_COMPILER i686-w64-mingw32-gcc-posix)
set(CMAKE_RC_COMPILER i686-w64-mingw32-windres)

# Nothing of the build machine but its programs: its headers and libraries are another system's. The libraries that
# the project uses from it as sources or headers have a find module in cmake/windows.
set(CMAKE_FIND_ROOT_PATH /usr/i686-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
list(APPEND CMAKE_MODULE_PATH ${CMAKE_CURRENT_LIST_DIR}/windows)

# The type library compiler, with where it finds oaidl.idl and stdole2.tlb.
set(OVNO2_WIDL i686-w64-mingw32-widl)
file(GLOB ovno2_stdole2 /usr/lib/*/wine/*/stdole2.tlb)
if(NOT ovno2_stdole2)
  message(FATAL_ERROR "The Windows tools are not installed: run scripts/install.sh windows")
endif()
list(GET ovno2_stdole2 0 ovno2_stdole2)
cmake_path(GET ovno2_stdole2 PARENT_PATH ovno2_stdole2)
set(OVNO2_WIDL_FLAGS -I/usr/include/wine/wine/windows -L${ovno2_stdole2})

# Tests and other built programs run under Wine, in a prefix of this build.
set(OVNO2_WINE ${CMAKE_CURRENT_LIST_DIR}/../scripts/wine.sh)
set(CMAKE_CROSSCOMPILING_EMULATOR ${OVNO2_WINE} run ${CMAKE_BINARY_DIR}/wine)
