# Copyright (c) 2026 Vantrell. All rights reserved.
# SPDX-License-Identifier: LicenseRef-Vantrell

if(MACOS_SDK AND NOT CMAKE_HOST_SYSTEM_NAME STREQUAL "Darwin")
  add_compile_options(-iframework ${MACOS_SDK}/System/Library/Frameworks -isystem ${MACOS_SDK}/usr/include)
  add_link_options(-F${MACOS_SDK}/System/Library/Frameworks -L${MACOS_SDK}/usr/lib)
endif()

# Nullability is told where clients read it, in the protocols.
add_compile_options($<$<COMPILE_LANGUAGE:OBJCXX>:-Wno-nullability-completeness>)

# The executables link nothing but the system: other libraries are used as headers only, under the names that they have
# elsewhere.
set(header_folder ${PROJECT_BINARY_DIR}/third-party)
file(MAKE_DIRECTORY ${header_folder})

# vantrell_headers(TARGET HEADER…): the folder or file that each header begins with, wherever it is installed. Linked into
# a folder of the build's own: the installed one may be full of another system's headers.
function(vantrell_headers target)
  foreach(header ${ARGN})
    find_path(VANTRELL_FOLDER_OF_${header} ${header} PATHS /opt/homebrew/include /usr/local/include /usr/include
              NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH REQUIRED)
    string(REGEX REPLACE "/.*" "" name ${header})
    file(CREATE_LINK ${VANTRELL_FOLDER_OF_${header}}/${name} ${header_folder}/${name} SYMBOLIC)
  endforeach()
  add_library(${target} INTERFACE IMPORTED)
  target_include_directories(${target} SYSTEM INTERFACE ${header_folder})
endfunction()

vantrell_headers(fmt::fmt fmt/format.h)
target_compile_definitions(fmt::fmt INTERFACE FMT_HEADER_ONLY=1)
vantrell_headers(nlohmann_json::nlohmann_json nlohmann/json.hpp)
vantrell_headers(CLI11::CLI11 CLI/CLI.hpp)

# Whether there is what Objective-C sources and links need.
if(CMAKE_HOST_SYSTEM_NAME STREQUAL "Darwin" OR MACOS_SDK)
  set(VANTRELL_HAS_FRAMEWORKS ON)
else()
  set(VANTRELL_HAS_FRAMEWORKS OFF)
endif()

# The XML parser is the system's. Without an SDK, this machine's headers of it do to compile against.
if(VANTRELL_HAS_FRAMEWORKS)
  add_library(PkgConfig::EXPAT INTERFACE IMPORTED)
  target_link_libraries(PkgConfig::EXPAT INTERFACE expat)
else()
  vantrell_headers(PkgConfig::EXPAT expat.h expat_external.h)
endif()
