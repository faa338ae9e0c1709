// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/PosixAccessControlList.h"

#include <utility>

#include "foundation/PosixCodes.h"
#include "host/linux/LibraryAccessList.h"

namespace vantrell::host {

Data PosixAccessControlList::externalForm() const {
  Data form = libraryFormOfList(listWithNamedEntries(PosixAccessList{}, named_));
  if (default_) {
    const Data defaultForm = libraryFormOfList(*default_);
    form.insert(form.end(), defaultForm.begin(), defaultForm.end());
  }
  return form;
}

Result<std::unique_ptr<AccessControlList>> PosixAccessControlList::fromExternalForm(DataView bytes) {
  const auto access = takeLibraryForm(bytes);
  if (!access) return failure(access.error());
  std::optional<PosixAccessList> defaultList;
  if (!bytes.empty()) {
    auto second = takeLibraryForm(bytes);
    if (!second) return failure(second.error());
    defaultList = std::move(*second);
  }
  if (!bytes.empty()) return posixFailure(posix::kInvalidArgument);
  std::vector<PosixAccessList::NamedEntry> named;
  if (*access) named = effectiveList(**access).named;
  return std::make_unique<PosixAccessControlList>(std::move(named), std::move(defaultList));
}

}  // namespace vantrell::host
