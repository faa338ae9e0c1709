// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "treewalk/PropagationTemporaryObject.h"

#include <utility>

#include "catalogue/ErrorModel.h"
#include "foundation/PathUtilities.h"
#include "foundation/PosixCodes.h"
#include "treewalk/PropagationErrors.h"

namespace vantrell {
namespace {

constexpr std::uint16_t kPermissions = 0700;

ErrorOrNil create(host::DirectoryHandle& folder, const char* name, PropagationTemporaryObject::Kind kind) {
  if (kind == PropagationTemporaryObject::Kind::Folder) return folder.makeDirectory(name, kPermissions);
  const auto file = folder.createFile(name, kPermissions);
  return file ? std::nullopt : ErrorOrNil(file.error());
}

}  // namespace

std::string PropagationTemporaryObject::candidateName(std::uint64_t attempt) {
  auto name = "." + vendorDomainPrefix() + ".acl.propagation";
  if (attempt != 0) name += "-" + std::to_string(attempt);
  return name;
}

Result<PropagationTemporaryObject> PropagationTemporaryObject::make(host::DirectoryHandle& folder,
                                                                    std::string_view folderPath, Kind kind) {
  for (std::uint64_t attempt = 0;; ++attempt) {
    auto name = candidateName(attempt);
    const auto error = create(folder, name.c_str(), kind);
    if (!error) return PropagationTemporaryObject(folder, folderPath, kind, std::move(name));
    if (error->isPosix(posix::kExists)) continue;
    const auto path = stringByAppendingPathComponent(folderPath, name);
    const auto reason = error->isPosix(posix::kNoEntry) ? Error::posix(posix::kAccessDenied) : *error;
    return failure(propagation_error::accessControlListNotRead(path, reason));
  }
}

PropagationTemporaryObject::PropagationTemporaryObject(PropagationTemporaryObject&& other) noexcept
    : folder_(std::exchange(other.folder_, nullptr)),
      folderPath_(std::move(other.folderPath_)),
      kind_(other.kind_),
      name_(std::move(other.name_)) {}

PropagationTemporaryObject::~PropagationTemporaryObject() {
  if (!folder_) return;
  if (kind_ == Kind::Folder)
    (void)folder_->removeDirectory(name_.c_str());
  else
    (void)folder_->removeFile(name_.c_str());
}

Result<std::unique_ptr<host::AccessControlList>> PropagationTemporaryObject::accessControlList() const {
  auto list = folder_->inheritedAccessControlListOf(name_.c_str());
  if (list) return list;
  const auto path = stringByAppendingPathComponent(folderPath_, name_);
  return failure(propagation_error::accessControlListNotRead(path, list.error()));
}

}  // namespace vantrell
