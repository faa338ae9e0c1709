// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "foundation/FileManagerPrivateFolder.h"

#include <cstdint>
#include <random>
#include <utility>

#include <fmt/core.h>

#include "foundation/PosixCodes.h"
#include "foundation/TreeRemoval.h"

namespace vantrell {
namespace {

constexpr std::uint16_t kPrivate = 0700;
constexpr unsigned kAttempts = 16;
constexpr char kProbeName[] = "probe";

std::string inventedName() {
  std::random_device random;
  return fmt::format(".vantrell-{:08x}{:08x}", random(), random());
}

// Someone may have put a folder of their own in its place before it was opened. What this process creates has its user.
ErrorOrNil checkOwnership(host::DirectoryHandle& folder) {
  const auto status = folder.status();
  if (!status) return status.error();
  auto probe = folder.createFile(kProbeName, kPrivate);
  if (!probe) return probe.error();
  const auto own = (*probe)->status();
  const auto removal = folder.removeFile(kProbeName);
  if (!own) return own.error();
  if (removal) return removal;
  if (status->owner != own->owner || (status->permissions & 0777) != kPrivate)
    return Error::posix(posix::kNotPermitted);
  return std::nullopt;
}

}  // namespace

Result<std::unique_ptr<FileManagerPrivateFolder>> FileManagerPrivateFolder::makeIn(host::DirectoryHandle& outer) {
  for (unsigned attempt = 1;; ++attempt) {
    auto name = inventedName();
    const auto error = outer.makeDirectory(name.c_str(), kPrivate);
    if (error && error->isPosix(posix::kExists) && attempt < kAttempts) continue;
    if (error) return failure(*error);
    std::unique_ptr<FileManagerPrivateFolder> made(new FileManagerPrivateFolder(outer, std::move(name)));
    if (auto openError = made->open()) return failure(*openError);
    return made;
  }
}

ErrorOrNil FileManagerPrivateFolder::open() {
  auto folder = outer_.openDirectory(name_.c_str(), host::MountPoints::Refuse);
  if (!folder) return folder.error();
  if (auto error = checkOwnership(**folder)) return error;
  folder_ = std::move(*folder);
  return std::nullopt;
}

// Nothing can be done about a failure, and nothing in here matters to anyone.
FileManagerPrivateFolder::~FileManagerPrivateFolder() {
  folder_.reset();
  const auto error = outer_.removeDirectory(name_.c_str());
  if (error && error->isPosix(posix::kNotEmpty)) (void)removeTree(outer_, name_, name_);
}

}  // namespace vantrell
