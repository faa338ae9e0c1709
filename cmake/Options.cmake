# Copyright (c) 2026 Vantrell. All rights reserved.
# SPDX-License-Identifier: LicenseRef-Vantrell

foreach(language CXX OBJCXX)
  set(CMAKE_${language}_STANDARD 23)
  set(CMAKE_${language}_STANDARD_REQUIRED ON)
  set(CMAKE_${language}_EXTENSIONS OFF)
endforeach()
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)

if(CMAKE_SYSTEM_NAME STREQUAL "Darwin")
  set(VANTRELL_DEFAULT_HOST macos)
else()
  set(VANTRELL_DEFAULT_HOST linux)
endif()
set(VANTRELL_HOST ${VANTRELL_DEFAULT_HOST} CACHE STRING "Folder below host/ that supplies the operating system")
if(VANTRELL_HOST STREQUAL "macos")
  enable_language(OBJCXX)
endif()
set(VANTRELL_SANITIZERS "" CACHE STRING "Sanitizers for the whole build, as -fsanitize= takes them")
set(VANTRELL_VENDOR_DOMAIN_PREFIX "com.vantrell" CACHE STRING "The vendor's reverse-DNS prefix")
option(VANTRELL_BUILD_BENCHMARKS "Build the benchmarks" ON)
option(VANTRELL_BUILD_FUZZERS "Build the fuzz targets (clang only)" OFF)

# The kernel does most of the work here: -O3 gains nothing, and the more it inlines the more g++ 12 warns of falsely.
foreach(language CXX OBJCXX)
  string(REPLACE "-O3" "-O2" CMAKE_${language}_FLAGS_RELEASE "${CMAKE_${language}_FLAGS_RELEASE}")
endforeach()

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

# Half of the time that a test takes to compile goes into the headers of the test framework and the standard library.
# Off by default: a source that lacks an include compiles with them.
option(VANTRELL_PRECOMPILED_HEADERS "Read the headers of libraries once a target" OFF)

# vantrell_precompile(TARGET HEADER…): the headers as in "<string>".
function(vantrell_precompile target)
  # g++ forgets for templates from such a header which warnings are off; unoptimised code, as tests are, has none of them.
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND NOT target MATCHES "^test_")
    return()
  endif()
  if(VANTRELL_PRECOMPILED_HEADERS)
    # What ccache needs to recognise the result.
    target_compile_options(${target} PRIVATE $<$<CXX_COMPILER_ID:GNU>:-fpch-preprocess>
                                             "$<$<CXX_COMPILER_ID:Clang>:SHELL:-Xclang -fno-pch-timestamp>")
    list(TRANSFORM ARGN REPLACE ".+" "$<$<COMPILE_LANGUAGE:CXX>:\\0>" OUTPUT_VARIABLE headers)
    target_precompile_headers(${target} PRIVATE ${headers})
  endif()
endfunction()
set(VANTRELL_COMMON_HEADERS <algorithm> <array> <expected> <functional> <map> <memory> <mutex> <optional> <span> <string>
                            <string_view> <utility> <variant> <vector>)
if(VANTRELL_HOST STREQUAL "macos")
  list(APPEND VANTRELL_COMMON_HEADERS <fmt/format.h>)  # there with all that elsewhere is in its library
endif()

find_program(CCACHE_PROGRAM ccache)
if(CCACHE_PROGRAM)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${CCACHE_PROGRAM})
  set(CMAKE_OBJCXX_COMPILER_LAUNCHER ${CCACHE_PROGRAM})
endif()
