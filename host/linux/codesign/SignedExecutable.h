// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "foundation/Result.h"
#include "host/CodeSignatures.h"
#include "host/FileSystem.h"
#include "host/linux/codesign/CodeDirectory.h"
#include "host/linux/codesign/MachOSlices.h"
#include "host/linux/codesign/SignedMessage.h"
#include "host/linux/codesign/SuperBlob.h"

namespace vantrell::host::codesign {

/// The signature of one architecture, as it is read; nothing is verified but that it fits together.
class ArchitectureSignature {
 public:
  /// kUnsigned where there is none. The slice's bytes must outlive the result.
  static Result<ArchitectureSignature> read(const MachOSlice& slice);

  const MachOSlice& slice() const noexcept { return slice_; }
  const SuperBlob& blobs() const noexcept { return blobs_; }
  /// At least one, in the order of their slots; all with one identifier, team and code limit.
  const std::vector<CodeDirectory>& directories() const noexcept { return directories_; }
  /// Null for an ad-hoc signature, which nobody has signed.
  const SignedMessage* message() const noexcept { return message_ ? &*message_ : nullptr; }

  CodeSigningInformation information() const;

 private:
  ErrorOrNil readDirectories();
  ErrorOrNil readMessage();

  MachOSlice slice_;
  SuperBlob blobs_;
  std::vector<CodeDirectory> directories_;
  std::optional<SignedMessage> message_;
};

/// A Mach-O file and the signatures of its architectures, at least one.
struct SignedExecutable {
  // The whole file has to be at hand at once, in memory where it can't be mapped.
  static constexpr std::uint64_t kMaximumSize = std::uint64_t{1} << 30;

  /// With `all`, every architecture must be signed; else the first one, and others aren't looked at.
  static Result<SignedExecutable> load(FileSystem& fileSystem, const std::string& path, bool all);

  std::unique_ptr<FileContents> contents;
  std::vector<ArchitectureSignature> architectures;
};

}  // namespace vantrell::host::codesign
