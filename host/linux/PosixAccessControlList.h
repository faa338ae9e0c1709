// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "foundation/Result.h"
#include "host/AccessControlList.h"
#include "host/linux/PosixAccessList.h"

namespace vantrell::host {

/// Named entries, each with its effective permissions, and a folder's default list, whole as it stands, or none.
///
/// The external form is libacl's of a valid list with these named entries (owner, group and other in it are empty and
/// mean nothing), directly followed by libacl's form of the default list where there is one.
class PosixAccessControlList final : public AccessControlList {
 public:
  PosixAccessControlList(std::vector<PosixAccessList::NamedEntry> named, std::optional<PosixAccessList> defaultList)
      : named_(std::move(named)), default_(std::move(defaultList)) {}

  bool isEmpty() const noexcept override { return named_.empty() && !default_; }
  Data externalForm() const override;

  const std::vector<PosixAccessList::NamedEntry>& named() const noexcept { return named_; }
  const std::optional<PosixAccessList>& defaultList() const noexcept { return default_; }

  /// See FileSystem::accessControlListFromExternalForm. Any bytes will do. A list without any entry counts as none.
  static Result<std::unique_ptr<AccessControlList>> fromExternalForm(DataView bytes);

 private:
  const std::vector<PosixAccessList::NamedEntry> named_;
  const std::optional<PosixAccessList> default_;
};

}  // namespace vantrell::host
