// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <utility>

#import <Foundation/Foundation.h>

namespace vantrell::host {

/// Owns one reference to a CoreFoundation object, or none (null): what a Create or Copy function returned, released
/// at the end. For Objective-C++ sources only.
template <class Ref>
class CoreFoundationRef {
 public:
  CoreFoundationRef() = default;
  explicit CoreFoundationRef(Ref owned) noexcept : ref_(owned) {}
  CoreFoundationRef(CoreFoundationRef&& other) noexcept : ref_(std::exchange(other.ref_, nullptr)) {}
  CoreFoundationRef& operator=(CoreFoundationRef&& other) noexcept {
    std::swap(ref_, other.ref_);
    return *this;
  }
  ~CoreFoundationRef() {
    if (ref_) CFRelease(ref_);
  }

  Ref get() const noexcept { return ref_; }
  explicit operator bool() const noexcept { return ref_ != nullptr; }

  /// Where a function puts a reference that the caller owns from then on. Only of one that owns none yet.
  Ref* out() noexcept { return &ref_; }

  /// Gives the reference away.
  [[nodiscard]] Ref release() noexcept { return std::exchange(ref_, nullptr); }

 private:
  Ref ref_ = nullptr;
};

/// An Objective-C object as the CoreFoundation object that it is as well; null for nil. A plain cast does where the
/// object is used up by one expression: what lives on may lose its object after its last use as an Objective-C one.
template <class Ref>
CoreFoundationRef<Ref> bridgedRef(id object) {
  return CoreFoundationRef<Ref>((__bridge_retained Ref)object);
}

}  // namespace vantrell::host
