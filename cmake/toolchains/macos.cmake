# Copyright (c) 2026 Vantrell. All rights reserved.
# SPDX-License-Identifier: LicenseRef-Vantrell

# Builds for macOS: on a Mac with Xcode's tools, elsewhere with the compiler that scripts/lib/macos-toolchain.sh brings.
#
#   VANTRELL_MACOS_ARCHITECTURE   arm64 or x86_64
#   MACOS_SDK                     elsewhere: folder of an SDK (System/Library/Frameworks, usr/include, usr/lib). Without
#                                 one, only what needs no more than the C library is compiled, and nothing is linked.
#                                 May also stand in the environment.

list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES VANTRELL_MACOS_ARCHITECTURE MACOS_SDK)

# The oldest system: the first one of Apple's own processors, or the one that the interfaces in use reach back to.
if(VANTRELL_MACOS_ARCHITECTURE STREQUAL "arm64")
  set(VANTRELL_MACOS_OLDEST 11.0)
  set(macos_target aarch64-macos)
else()
  set(VANTRELL_MACOS_OLDEST 10.13)
  set(macos_target x86_64-macos)
endif()

if(CMAKE_HOST_SYSTEM_NAME STREQUAL "Darwin")
  set(CMAKE_OSX_ARCHITECTURES ${VANTRELL_MACOS_ARCHITECTURE} CACHE STRING "")
  set(CMAKE_OSX_DEPLOYMENT_TARGET ${VANTRELL_MACOS_OLDEST} CACHE STRING "")
  return()
endif()

set(CMAKE_SYSTEM_NAME Darwin)
set(CMAKE_SYSTEM_PROCESSOR ${VANTRELL_MACOS_ARCHITECTURE})

if(DEFINED ENV{XDG_CACHE_HOME})
  set(tools $ENV{XDG_CACHE_HOME})
else()
  set(tools $ENV{HOME}/.cache)
endif()
set(tools ${tools}/vantrell/macos-toolchain/bin)
if(NOT EXISTS ${tools}/zig-c++)
  message(FATAL_ERROR "no compiler for macOS in ${tools}: scripts/build-macos brings it")
endif()
foreach(language C CXX OBJCXX ASM)
  set(CMAKE_${language}_COMPILER_TARGET ${macos_target}.${VANTRELL_MACOS_OLDEST})
endforeach()
set(CMAKE_C_COMPILER ${tools}/zig-cc)
set(CMAKE_ASM_COMPILER ${tools}/zig-cc)
set(CMAKE_CXX_COMPILER ${tools}/zig-c++)
set(CMAKE_OBJCXX_COMPILER ${tools}/zig-c++)
set(CMAKE_AR ${tools}/zig-ar CACHE FILEPATH "")
set(CMAKE_RANLIB ${tools}/zig-ranlib CACHE FILEPATH "")
set(CMAKE_INSTALL_NAME_TOOL llvm-install-name-tool-19 CACHE STRING "")  # CMake wants one; nothing here uses it
# No tool of this system's can ask a Mac's linker or read an SDK's settings.
set(CMAKE_OSX_SYSROOT "" CACHE STRING "")
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)

if(NOT MACOS_SDK AND DEFINED ENV{MACOS_SDK})
  set(MACOS_SDK $ENV{MACOS_SDK})
endif()
set(MACOS_SDK "${MACOS_SDK}" CACHE PATH "An SDK for macOS")
if(MACOS_SDK AND NOT EXISTS ${MACOS_SDK}/System/Library/Frameworks/Foundation.framework)
  message(FATAL_ERROR "no SDK in ${MACOS_SDK}")
endif()
