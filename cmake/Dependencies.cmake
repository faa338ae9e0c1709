# Copyright (c) 2026 Vantrell. All rights reserved.
# SPDX-License-Identifier: LicenseRef-Vantrell

find_package(Threads REQUIRED)
if(VANTRELL_HOST STREQUAL "macos")
  include(MacDependencies)
  return()
endif()

find_package(PkgConfig REQUIRED)
find_package(fmt 9 REQUIRED)
find_package(CLI11 2.1 REQUIRED)
find_package(nlohmann_json 3.11 REQUIRED)
pkg_check_modules(EXPAT REQUIRED IMPORTED_TARGET expat)
pkg_check_modules(SYSTEMD REQUIRED IMPORTED_TARGET libsystemd)
pkg_check_modules(NETTLE REQUIRED IMPORTED_TARGET nettle)
pkg_check_modules(ELF REQUIRED IMPORTED_TARGET libelf)
pkg_check_modules(ACL REQUIRED IMPORTED_TARGET libacl)
pkg_check_modules(CRYPTO REQUIRED IMPORTED_TARGET libcrypto)
