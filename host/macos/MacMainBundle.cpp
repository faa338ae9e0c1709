// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/macos/MacMainBundle.h"

#include <cstdint>

#include <mach-o/dyld.h>
#include <mach-o/getsect.h>
#include <mach-o/loader.h>

#include "foundation/PosixCodes.h"
#include "host/macos/ResolvedPath.h"

// Put at the beginning of every executable by the linker. Declared in mach-o/ldsyms.h, which is not among the headers
// of all toolchains.
extern "C" const mach_header_64 _mh_execute_header;

namespace vantrell::host {
namespace {

/// The path that the kernel was given, perhaps a relative one, perhaps one through links.
std::string pathAsStarted() {
  std::uint32_t size = 0;
  std::string path;
  while (_NSGetExecutablePath(path.data(), &size) != 0) path.resize(size);
  return path.c_str();  // what follows the terminating zero is unused room
}

Result<Data> section(const char* name) {
  unsigned long size = 0;
  const std::uint8_t* bytes = getsectiondata(&_mh_execute_header, SEG_TEXT, name, &size);
  if (bytes == nullptr || size == 0) return posixFailure(posix::kNoEntry);
  return Data(bytes, bytes + size);
}

}  // namespace

Result<std::string> MacMainBundle::executablePath() {
  return resolvedPath(pathAsStarted());
}

Result<Data> MacMainBundle::informationPropertyList() {
  return section("__info_plist");
}

Result<Data> MacMainBundle::launchdPropertyList() {
  return section("__launchd_plist");
}

}  // namespace vantrell::host
