// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <optional>
#include <string>
#include <utility>

#include <sys/types.h>

#include "foundation/Data.h"
#include "foundation/Dictionary.h"
#include "foundation/Result.h"
#include "foundation/Value.h"

namespace vantrell::host {

/// Tells one state of a file from a later one.
struct FileSignature {
  dev_t device = 0;
  ino_t inode = 0;
  std::int64_t modificationSeconds = 0;
  std::int64_t modificationNanoseconds = 0;
  off_t size = 0;

  bool operator==(const FileSignature&) const = default;
};

struct PropertyListFile {
  Dictionary contents;
  FileSignature signature;
  mode_t permissions = 0;
  uid_t owner = 0;
  gid_t group = 0;
};

/// Reads the file `name` of an open folder; links are not followed. Nothing where there is no such file. What is no
/// regular file, larger than a property list may be or no property list with a dictionary at its root is an error.
Result<std::optional<PropertyListFile>> readPropertyListFile(int folder, const std::string& name);

/// The signature of the file, or nothing where there is none.
Result<std::optional<FileSignature>> signatureOfFile(int folder, const std::string& name);

struct FileReplacement {
  std::string temporaryName;  // what bears it is removed first; nobody else may use it meanwhile
  mode_t permissions = 0644;
  std::optional<std::pair<uid_t, gid_t>> owner;  // nothing: whoever creates files
};

/// Puts `content` in the place of the file `name`, or makes it, in such a way that at every moment, and after a crash
/// at any moment, the old or the new file is there whole. It is on the medium when this returns.
ErrorOrNil replaceFile(int folder, const std::string& name, DataView content, const FileReplacement& replacement);

/// Removes the file, as durably. One that is not there is no error.
ErrorOrNil removeFile(int folder, const std::string& name);

}  // namespace vantrell::host
