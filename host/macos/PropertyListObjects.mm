// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/macos/PropertyListObjects.h"

namespace vantrell::host {

CoreFoundationRef<CFPropertyListRef> objectFromPropertyList(const Result<Data>& list) {
  if (!list) return {};
  const CoreFoundationRef data(CFDataCreate(kCFAllocatorDefault, list->data(), static_cast<CFIndex>(list->size())));
  if (!data) return {};
  return CoreFoundationRef(
      CFPropertyListCreateWithData(kCFAllocatorDefault, data.get(), kCFPropertyListImmutable, nullptr, nullptr));
}

}  // namespace vantrell::host
