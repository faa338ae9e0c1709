# Copyright (c) 2026 Vantrell. All rights reserved.
# SPDX-License-Identifier: LicenseRef-Vantrell

set(CMAKE_CXX_STANDARD 23)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)

if(CMAKE_SYSTEM_NAME STREQUAL "Darwin")
  set(VANTRELL_DEFAULT_HOST macos)
else()
  set(VANTRELL_DEFAULT_HOST linux)
endif()
set(VANTRELL_HOST ${VANTRELL_DEFAULT_HOST} CACHE STRING "Folder below host/ that supplies the operating system")
set(VANTRELL_SANITIZERS "" CACHE STRING "Sanitizers for the whole build, as -fsanitize= takes them")
set(VANTRELL_VENDOR_DOMAIN_PREFIX "com.vantrell" CACHE STRING "The vendor's reverse-DNS prefix")
option(VANTRELL_BUILD_BENCHMARKS "Build the benchmarks" ON)
option(VANTRELL_BUILD_FUZZERS "Build the fuzz targets (clang only)" OFF)

# The kernel does most of the work here: -O3 gains nothing, and the more it inlines the more g++ 12 warns of falsely.
string(REPLACE "-O3" "-O2" CMAKE_CXX_FLAGS_RELEASE "${CMAKE_CXX_FLAGS_RELEASE}")

add_compile_options(-Wall -Wextra -Werror -Wnon-virtual-dtor -Wconversion -Wno-sign-conversion -Wno-missing-field-initializers
                    -fstack-protector-strong)
# g++ 12 sees overlapping copies in plain string concatenation when it optimises (GCC bug 105651).
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  add_compile_options($<$<COMPILE_LANGUAGE:CXX>:-Wno-restrict>)
endif()
if(NOT VANTRELL_SANITIZERS)
  add_compile_definitions($<$<CONFIG:Release>:_FORTIFY_SOURCE=2>)
endif()
if(NOT CMAKE_SYSTEM_NAME STREQUAL "Darwin")
  add_link_options(-Wl,-z,relro,-z,now)
endif()
if(VANTRELL_SANITIZERS)
  add_compile_options(-fsanitize=${VANTRELL_SANITIZERS} -fno-omit-frame-pointer -fno-sanitize-recover=all -g1)
  add_link_options(-fsanitize=${VANTRELL_SANITIZERS})
  # Its look at a virtual-table pointer opens a pipe, and takes a failure to for a bad pointer: tests that run out of
  # descriptors on purpose would fail.
  if(VANTRELL_SANITIZERS MATCHES undefined)
    add_compile_options(-fno-sanitize=vptr)
  endif()
endif()

find_program(CCACHE_PROGRAM ccache)
if(CCACHE_PROGRAM)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${CCACHE_PROGRAM})
endif()
