# Copyright (c) 2026 Vantrell. All rights reserved.
# SPDX-License-Identifier: LicenseRef-Vantrell

# vantrell_helper(NAME INFORMATION_LIST LAUNCHD_LIST [sources instead of core/main.cpp])
# A helper executable with both property lists embedded.
function(vantrell_helper name information launchd)
  set(sources ${ARGN})
  if(NOT sources)
    set(sources ${PROJECT_SOURCE_DIR}/core/main.cpp)
  endif()
  add_executable(${name} ${sources} ${PROJECT_SOURCE_DIR}/resources/embedded_lists.S)
  set_property(SOURCE ${PROJECT_SOURCE_DIR}/resources/embedded_lists.S APPEND PROPERTY OBJECT_DEPENDS
               "${information};${launchd}")
  target_compile_definitions(${name} PRIVATE VANTRELL_INFO_PLIST="${information}"
                                             VANTRELL_LAUNCHD_PLIST="${launchd}")
  target_link_libraries(${name} PRIVATE vantrell_core vantrell_host)
  vantrell_link_what_there_is(${name})
endfunction()

# Without the frameworks a program for macOS is linked all the same, with what they and the sources that need them would
# supply left open: its file can then be examined.
function(vantrell_link_what_there_is name)
  if(VANTRELL_HOST STREQUAL "macos" AND NOT VANTRELL_HAS_FRAMEWORKS)
    target_link_options(${name} PRIVATE -Wl,-undefined,dynamic_lookup)
  endif()
endfunction()

# The lists hold the vendor's prefix, which is a setting of the build.
foreach(list Info launchd)
  if(EXISTS ${PROJECT_SOURCE_DIR}/resources/${list}.plist.in)
    configure_file(${PROJECT_SOURCE_DIR}/resources/${list}.plist.in ${PROJECT_BINARY_DIR}/resources/${list}.plist @ONLY)
  endif()
endforeach()

if(EXISTS ${PROJECT_SOURCE_DIR}/core/main.cpp)
  vantrell_helper(Vantrell-PrivilegedTool ${PROJECT_BINARY_DIR}/resources/Info.plist
                  ${PROJECT_BINARY_DIR}/resources/launchd.plist)
endif()
if(EXISTS ${PROJECT_SOURCE_DIR}/client/vantrellctl.cpp)
  add_executable(vantrellctl ${PROJECT_SOURCE_DIR}/client/vantrellctl.cpp)
  target_link_libraries(vantrellctl PRIVATE vantrell_client vantrell_host CLI11::CLI11)
  vantrell_link_what_there_is(vantrellctl)
endif()
