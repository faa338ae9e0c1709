// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "host/linux/LinuxFileSystem.h"

namespace {

void require(bool condition) {
  if (!condition) std::abort();
}

}  // namespace

/// What is read as a list can be written, and is the same list when it is read again.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  vantrell::host::LinuxFileSystem fileSystem;
  const auto list = fileSystem.accessControlListFromExternalForm({data, size});
  if (!list) return 0;
  const auto form = (*list)->externalForm();
  const auto again = fileSystem.accessControlListFromExternalForm(form);
  require(again.has_value());
  require((*again)->isEmpty() == (*list)->isEmpty());
  require((*again)->externalForm() == form);
  return 0;
}
