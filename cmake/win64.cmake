# SPDX-License-Identifier: GPL-3.0-or-later
# Cross build for 64-bit Windows with Debian's mingw-w64 (POSIX threads model, for std::thread). The
# libraries come from script/build-win64-deps; QORVIEW_WIN64_DEPS says where it put them.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)

set(QORVIEW_WIN64_DEPS "${CMAKE_CURRENT_LIST_DIR}/../build/win64-deps" CACHE PATH
    "Where script/build-win64-deps put the libraries")
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES QORVIEW_WIN64_DEPS)


# The desktop's libraries, where script/build-win64-qt has made them; their tools are the host's.
if(NOT QORVIEW_WIN64_QT)
  execute_process(COMMAND "${CMAKE_CURRENT_LIST_DIR}/../script/build-win64-qt" --where
                  OUTPUT_VARIABLE cache OUTPUT_STRIP_TRAILING_WHITESPACE)
  set(QORVIEW_WIN64_QT "${cache}" CACHE PATH "Where script/build-win64-qt puts the libraries")
endif()
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES QORVIEW_WIN64_QT)
set(QT_HOST_PATH /usr CACHE PATH "Where the host's Qt is")
file(GLOB host_qt LIST_DIRECTORIES ON /usr/lib/*/cmake/Qt6HostInfo)
cmake_path(GET host_qt PARENT_PATH host_qt)
set(QT_HOST_PATH_CMAKE_DIR "${host_qt}" CACHE PATH "Where the host's Qt is described to CMake")

set(CMAKE_FIND_ROOT_PATH "${QORVIEW_WIN64_DEPS}" "${QORVIEW_WIN64_QT}" /usr/x86_64-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# pkg-config must see this target's libraries only, and all of them as static ones.
set(ENV{PKG_CONFIG_LIBDIR} "${QORVIEW_WIN64_DEPS}/lib/pkgconfig")
set(ENV{PKG_CONFIG_PATH} "")

# The runtime goes into the executables, so that they run from a folder of their own.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static")

# Tests run under Wine where it is installed.
find_program(QORVIEW_WINE wine64 PATHS /usr/lib/wine NO_CMAKE_FIND_ROOT_PATH)
if(QORVIEW_WINE)
  set(CMAKE_CROSSCOMPILING_EMULATOR "${QORVIEW_WINE}")
endif()
