// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "foundation/Result.h"
#include "host/DirectoryHandle.h"

namespace vantrell {

/// A file or folder that is made for a moment, to see which access control list new ones get in its folder, and that
/// goes with the end of the scope.
class PropagationTemporaryObject {
 public:
  enum class Kind : bool { File, Folder };

  /// Under the first free name, also when others take names at the same moment. `folderPath` is shown for the folder.
  /// Error 23 with the path of what could not be made; a folder that is missing counts as one without access.
  static Result<PropagationTemporaryObject> make(host::DirectoryHandle& folder, std::string_view folderPath, Kind kind);

  PropagationTemporaryObject(PropagationTemporaryObject&&) noexcept;
  PropagationTemporaryObject& operator=(PropagationTemporaryObject&&) = delete;
  ~PropagationTemporaryObject();

  /// Null when new objects get none. Error 23.
  Result<std::unique_ptr<host::AccessControlList>> accessControlList() const;

  const std::string& name() const noexcept { return name_; }

  /// The name to be tried first (0), and those to be tried after it (1, 2, …).
  static std::string candidateName(std::uint64_t attempt);

 private:
  PropagationTemporaryObject(host::DirectoryHandle& folder, std::string_view folderPath, Kind kind, std::string name)
      : folder_(&folder), folderPath_(folderPath), kind_(kind), name_(std::move(name)) {}

  host::DirectoryHandle* folder_;  // nullptr once moved from
  std::string folderPath_;
  Kind kind_;
  std::string name_;
};

}  // namespace vantrell
