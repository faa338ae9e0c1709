// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstddef>
#include <memory>
#include <utility>

#include "foundation/Data.h"
#include "foundation/Result.h"
#include "host/AccessControlList.h"

namespace vantrell::host {

/// An extended list of ACL_TYPE_EXTENDED, kept in the kernel's own form (struct kauth_filesec of sys/kauth.h).
class MacAccessControlList final : public AccessControlList {
 public:
  /// Of the most entries that a list can have.
  static constexpr std::size_t kMaximumNativeSize = 44 + 24 * 128;

  /// A whole form in the kernel's bytes, as fromNativeForm makes sure.
  explicit MacAccessControlList(Data native) noexcept : native_(std::move(native)) {}

  /// Null for a form that says that there is no list; POSIX error 22 for bytes that are no list in full.
  static Result<std::unique_ptr<MacAccessControlList>> fromNativeForm(DataView bytes);
  /// What acl_copy_ext writes. POSIX error 22 for bytes that are no list in full; what follows it is not looked at.
  static Result<std::unique_ptr<AccessControlList>> fromExternalForm(DataView bytes);
  /// The native form that says that there is no list.
  static Data nativeFormOfNone();

  /// No entry, and no flag of the list that would keep it from inheriting.
  bool isEmpty() const noexcept override;
  Data externalForm() const override;
  const Data& nativeForm() const noexcept { return native_; }

  bool operator==(const MacAccessControlList& other) const noexcept { return native_ == other.native_; }

 private:
  Data native_;  // without owner and group, which are no part of a list
};

}  // namespace vantrell::host
