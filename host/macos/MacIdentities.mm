// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/macos/MacIdentities.h"

#import <CoreServices/CoreServices.h>

#include "host/macos/CoreFoundationRef.h"

namespace vantrell::host {

std::vector<std::uint32_t> MacIdentities::userIDsOfIdentityService() {
  std::vector<std::uint32_t> userIDs;
  @autoreleasepool {
    const CoreFoundationRef<CSIdentityQueryRef> query(
        CSIdentityQueryCreate(kCFAllocatorDefault, kCSIdentityClassUser, CSGetDefaultIdentityAuthority()));
    if (!query) return userIDs;
    // A failure leaves what was found before it.
    CSIdentityQueryExecute(query.get(), kCSIdentityQueryIncludeHiddenIdentities, nullptr);
    const CoreFoundationRef<CFArrayRef> identities(CSIdentityQueryCopyResults(query.get()));
    const CFIndex count = identities ? CFArrayGetCount(identities.get()) : 0;
    userIDs.reserve(static_cast<std::size_t>(count));
    for (CFIndex index = 0; index < count; ++index) {
      auto* identity = static_cast<CSIdentityRef>(const_cast<void*>(CFArrayGetValueAtIndex(identities.get(), index)));
      userIDs.push_back(CSIdentityGetPosixID(identity));
    }
  }
  return userIDs;
}

}  // namespace vantrell::host
