# 64-bit Windows by MinGW-w64 with POSIX threads. The libraries for the target lie in KXRA_WINDOWS_PREFIX, which
# cmake/sh/windows.sh fills; the programs run under Wine.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(mingw x86_64-w64-mingw32)
set(CMAKE_C_COMPILER ${mingw}-gcc-posix)
set(CMAKE_CXX_COMPILER ${mingw}-g++-posix)
set(CMAKE_RC_COMPILER ${mingw}-windres)

set(KXRA_WINDOWS_PREFIX ${CMAKE_CURRENT_LIST_DIR}/../../build/windows-libraries
    CACHE PATH "Where the libraries for the target are installed")
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES KXRA_WINDOWS_PREFIX)
get_filename_component(prefix ${KXRA_WINDOWS_PREFIX} ABSOLUTE)
set(CMAKE_FIND_ROOT_PATH ${prefix} /usr/${mingw})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(Boost_USE_STATIC_LIBS ON)
set(Boost_NO_BOOST_CMAKE ON)

# Windows 10 and its servers. Without the macros and the headers of windows.h that nobody asks for.
set(definitions "-D_WIN32_WINNT=0x0A00 -DWIN32_LEAN_AND_MEAN -DNOMINMAX")
set(CMAKE_C_FLAGS_INIT "${definitions}")
set(CMAKE_CXX_FLAGS_INIT "${definitions}")
# The runtime goes into each file, so that a library asks for nothing but what the system has.
foreach(kind EXE SHARED MODULE)
    set(CMAKE_${kind}_LINKER_FLAGS_INIT "-static")
endforeach()

set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/../sh/wine)
