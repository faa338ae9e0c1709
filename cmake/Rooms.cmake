# Copyright (c) 2026 Vantrell. All rights reserved.
# SPDX-License-Identifier: LicenseRef-Vantrell

# Each room is one static library of the sources in its folder.
#
# vantrell_room(NAME [ROOMS other rooms it may include] [LIBRARIES PUBLIC|PRIVATE …] [EXCLUDE files that are programs])
function(vantrell_room name)
  cmake_parse_arguments(ROOM "" "" "ROOMS;LIBRARIES;EXCLUDE" ${ARGN})
  file(GLOB sources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/${name}/*.cpp)
  foreach(program ${ROOM_EXCLUDE})
    list(REMOVE_ITEM sources ${PROJECT_SOURCE_DIR}/${name}/${program})
  endforeach()
  if(NOT sources)
    add_library(vantrell_${name} INTERFACE)
    target_include_directories(vantrell_${name} INTERFACE ${PROJECT_SOURCE_DIR})
    foreach(room ${ROOM_ROOMS})
      target_link_libraries(vantrell_${name} INTERFACE vantrell_${room})
    endforeach()
    return()
  endif()
  add_library(vantrell_${name} STATIC ${sources})
  target_include_directories(vantrell_${name} PUBLIC ${PROJECT_SOURCE_DIR})
  target_compile_definitions(vantrell_${name}
                             PRIVATE VANTRELL_VENDOR_DOMAIN_PREFIX="${VANTRELL_VENDOR_DOMAIN_PREFIX}")
  foreach(room ${ROOM_ROOMS})
    target_link_libraries(vantrell_${name} PUBLIC vantrell_${room})
  endforeach()
  target_link_libraries(vantrell_${name} PUBLIC Threads::Threads ${ROOM_LIBRARIES})
endfunction()

# The folder below host/ of the system that this build is for, and host/posix/, which every system's folder uses.
function(vantrell_host system)
  file(GLOB sources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/host/posix/*.cpp ${PROJECT_SOURCE_DIR}/host/${system}/*.cpp
       ${PROJECT_SOURCE_DIR}/host/${system}/*.mm)
  add_library(vantrell_host STATIC ${sources})
  target_link_libraries(vantrell_host PUBLIC vantrell_foundation)
  target_compile_definitions(vantrell_host
                             PRIVATE VANTRELL_VENDOR_DOMAIN_PREFIX="${VANTRELL_VENDOR_DOMAIN_PREFIX}")
  if(system STREQUAL "linux")
    target_link_libraries(vantrell_host PRIVATE PkgConfig::SYSTEMD PkgConfig::NETTLE PkgConfig::ELF
                                                PkgConfig::ACL)
    # A library of its own: nothing in it needs the rest of the host.
    file(GLOB codesign CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/host/linux/codesign/*.cpp)
    if(codesign)
      add_library(vantrell_codesign STATIC ${codesign})
      target_link_libraries(vantrell_codesign PUBLIC vantrell_macho PkgConfig::CRYPTO Threads::Threads)
      target_link_libraries(vantrell_host PRIVATE vantrell_codesign)
    endif()
  endif()
endfunction()
