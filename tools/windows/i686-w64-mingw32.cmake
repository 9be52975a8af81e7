# CMake toolchain: 32-bit Windows programs, with the libraries made by tools/windows/prepare.sh.

set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR i686)

# Only the posix thread variant of the compiler has std::mutex.
set(CMAKE_C_COMPILER i686-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER i686-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER i686-w64-mingw32-windres)

if(DEFINED ENV{ORVISTRAND_WINDOWS_CACHE})
    set(cacheFolder "$ENV{ORVISTRAND_WINDOWS_CACHE}")
else()
    set(cacheFolder "${CMAKE_CURRENT_LIST_DIR}/../../build/windows-cache")
endif()
cmake_path(ABSOLUTE_PATH cacheFolder NORMALIZE)
set(ORVISTRAND_WINDOWS_CACHE "${cacheFolder}" CACHE PATH "What tools/windows/prepare.sh made")
set(CMAKE_TRY_COMPILE_PLATFORM_VARIABLES ORVISTRAND_WINDOWS_CACHE)

set(CMAKE_FIND_ROOT_PATH
    "${ORVISTRAND_WINDOWS_CACHE}/qt"
    "${ORVISTRAND_WINDOWS_CACHE}/abseil"
    "${ORVISTRAND_WINDOWS_CACHE}/googletest")
set(CMAKE_PREFIX_PATH ${CMAKE_FIND_ROOT_PATH})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# Our tests and CMake's run under Wine.
set(CMAKE_CROSSCOMPILING_EMULATOR "${CMAKE_CURRENT_LIST_DIR}/wine")
