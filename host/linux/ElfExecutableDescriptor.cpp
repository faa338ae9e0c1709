// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/ElfExecutableDescriptor.h"

#include <map>

#include <fmt/format.h>

#include "foundation/PosixCodes.h"
#include "host/linux/ElfFile.h"

namespace vantrell::host {

namespace {

using ContentsByName = std::map<std::string_view, DataView>;  // in ascending byte order; the last of equal names

/// Contents of allocated sections never overlap, so together they are no longer than the file. Where they are, someone
/// asks for endless work: POSIX error 94. The same where there are none: the digest of nothing identifies nothing.
Result<ContentsByName> contentsToDigest(const ElfFile& file, std::uint64_t fileSize) {
  ContentsByName contents;
  std::uint64_t left = fileSize;
  for (const ElfSection& section : file.sections()) {
    if (!section.isAllocated || !section.occupiesFileSpace) continue;
    if (section.contents.size() > left) return posixFailure(posix::kBadMessage);
    left -= section.contents.size();
    contents.insert_or_assign(section.name, section.contents);
  }
  if (contents.empty()) return posixFailure(posix::kBadMessage);
  return contents;
}

}  // namespace

Result<std::vector<std::string>> ElfExecutableDescriptor::descriptorsForFileAtPath(std::string_view path) {
  const auto loaded = fileSystem_.loadFile(std::string(path), ElfFile::kMaximumFileSize);
  if (!loaded) return failure(loaded.error());
  const DataView bytes = (*loaded)->bytes();
  const auto file = ElfFile::fromBytes(bytes);
  if (!file) return failure(file.error());
  const auto contents = contentsToDigest(*file, bytes.size());
  if (!contents) return failure(contents.error());
  const auto digest = cryptography_.makeSha1();
  if (!digest) return failure(digest.error());
  for (const auto& [name, section] : *contents) (*digest)->update(section);
  return std::vector<std::string>{fmt::format("{:02x}", fmt::join((*digest)->finish(), ""))};
}

}  // namespace vantrell::host
