// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/macos/MacApplications.h"

#import <CoreServices/CoreServices.h>
#import <Foundation/Foundation.h>

#include "host/macos/CoreFoundationRef.h"
#include "host/macos/FoundationValues.h"
#include "host/macos/ResolvedPath.h"

namespace vantrell::host {

std::vector<std::string> MacApplications::locationsOfApplicationsWithIdentifier(const std::string& identifier) {
  std::vector<std::string> paths;
  if (identifier.empty()) return paths;
  @autoreleasepool {
    // Its successor is part of AppKit, which a daemon stays clear of. This one is no more than announced to go.
    NSArray* locations = CFBridgingRelease(
        LSCopyApplicationURLsForBundleIdentifier((__bridge CFStringRef)stringFrom(identifier), nullptr));
    for (NSURL* location in locations) {
      if (location.isFileURL && location.path != nil) paths.push_back(textFrom(location.path));
    }
  }
  return paths;
}

std::optional<Date> MacApplications::lastUsedDateOfItemAtPath(const std::string& path) {
  // The index knows objects, not links to them.
  const auto resolved = resolvedPath(path);
  if (!resolved) return std::nullopt;
  @autoreleasepool {
    const CoreFoundationRef<MDItemRef> item(
        MDItemCreate(kCFAllocatorDefault, (__bridge CFStringRef)stringFrom(*resolved)));
    if (!item) return std::nullopt;
    const CoreFoundationRef<CFTypeRef> date(MDItemCopyAttribute(item.get(), kMDItemLastUsedDate));
    if (!date || CFGetTypeID(date.get()) != CFDateGetTypeID()) return std::nullopt;
    return Date::fromSecondsSinceReferenceDate(CFDateGetAbsoluteTime(static_cast<CFDateRef>(date.get())));
  }
}

}  // namespace vantrell::host
