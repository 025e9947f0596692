# SPDX-License-Identifier: Apache-2.0
# Builds for 32-bit ARM on another machine. MORVEK_SYSROOT is a system of the target to build against, such as
# tests/arm/sysroot.sh makes.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR armv7l)
set(CMAKE_C_COMPILER arm-linux-gnueabihf-gcc)
set(CMAKE_CXX_COMPILER arm-linux-gnueabihf-g++)
set(CMAKE_LIBRARY_ARCHITECTURE arm-linux-gnueabihf)

list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES MORVEK_SYSROOT)
set(CMAKE_FIND_ROOT_PATH ${MORVEK_SYSROOT} /usr/arm-linux-gnueabihf)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(Qt5_DIR ${MORVEK_SYSROOT}/usr/lib/arm-linux-gnueabihf/cmake/Qt5)

# Nothing else may ever run a program of the target here: see there.
get_filename_component(MORVEK_EMULATE ${CMAKE_CURRENT_LIST_DIR}/../tests/arm/emulate.sh REALPATH)
set(CMAKE_CROSSCOMPILING_EMULATOR ${MORVEK_EMULATE} ${MORVEK_SYSROOT})

# Where the libraries are that the target's libraries ask for.
foreach(FOLDER lib usr/lib)
    set(OPTION " \"-Wl,-rpath-link,${MORVEK_SYSROOT}/${FOLDER}/arm-linux-gnueabihf\"")
    string(APPEND CMAKE_EXE_LINKER_FLAGS_INIT "${OPTION}")
    string(APPEND CMAKE_SHARED_LINKER_FLAGS_INIT "${OPTION}")
endforeach()
