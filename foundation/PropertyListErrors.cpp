// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "foundation/PropertyListErrors.h"

#include "foundation/PropertyList.h"

namespace vantrell {

namespace {
Error cocoaError(std::int64_t code, std::string reason) {
  return {std::string(kCocoaErrorDomain), code, Dictionary{{NSDebugDescriptionErrorKey, std::move(reason)}}};
}
}  // namespace

Error corruptPropertyList(std::string reason) {
  return cocoaError(kCocoaPropertyListReadCorrupt, std::move(reason));
}

Error unwritablePropertyList(std::string reason) {
  return cocoaError(kCocoaPropertyListWriteInvalid, std::move(reason));
}

}  // namespace vantrell
