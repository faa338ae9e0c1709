// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/LinuxMainBundle.h"

#include <filesystem>
#include <system_error>
#include <utility>

#include "foundation/PosixCodes.h"
#include "host/linux/ElfFile.h"
#include "host/posix/ErrorNumbers.h"

namespace vantrell::host {

namespace {

std::optional<Data> copyOf(std::optional<DataView> bytes) {
  if (!bytes) return std::nullopt;
  return Data(bytes->begin(), bytes->end());
}

}  // namespace

LinuxMainBundle::LinuxMainBundle(FileSystem& fileSystem, std::string executable)
    : fileSystem_(fileSystem), executable_(std::move(executable)) {}

// The link of a running executable that has gone reads "PATH (deleted)". Resolving the link and not only reading it
// keeps such a text from being taken for a path.
Result<std::string> LinuxMainBundle::executablePath() {
  std::error_code error;
  std::string path = std::filesystem::canonical(executable_, error).string();
  if (error) return errnoFailure(error.value());
  return path;
}

Result<Data> LinuxMainBundle::informationPropertyList() {
  return list(&Lists::information);
}

Result<Data> LinuxMainBundle::launchdPropertyList() {
  return list(&Lists::launchd);
}

Result<LinuxMainBundle::Lists> LinuxMainBundle::readLists() {
  const auto loaded = fileSystem_.loadFile(executable_, ElfFile::kMaximumFileSize);
  if (!loaded) return failure(loaded.error());
  const auto file = ElfFile::fromBytes((*loaded)->bytes());
  if (!file) return failure(file.error());
  return Lists{copyOf(file->contentsOf("__info_plist")), copyOf(file->contentsOf("__launchd_plist"))};
}

Result<Data> LinuxMainBundle::list(std::optional<Data> Lists::*which) {
  const std::lock_guard guard(lock_);
  if (!lists_) lists_ = readLists();
  if (!*lists_) return failure(lists_->error());
  const std::optional<Data>& data = (**lists_).*which;
  if (!data) return posixFailure(posix::kNoEntry);
  return *data;
}

}  // namespace vantrell::host
