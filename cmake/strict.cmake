# SPDX-License-Identifier: Apache-2.0
# What every target of this repository is compiled with. A target asks for it by linking to it privately.
add_library(morvek-strict INTERFACE)
target_compile_features(morvek-strict INTERFACE cxx_std_17)
target_compile_options(morvek-strict INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wnon-virtual-dtor -Woverloaded-virtual -Werror)
target_compile_definitions(morvek-strict INTERFACE
    QT_NO_CAST_TO_ASCII QT_NO_URL_CAST_FROM_STRING QT_DEPRECATED_WARNINGS)
# Files and their locks take 64-bit offsets, and inode numbers are that wide, on 32-bit targets too.
if(CMAKE_SIZEOF_VOID_P EQUAL 4)
    target_compile_definitions(morvek-strict INTERFACE _FILE_OFFSET_BITS=64)
endif()
