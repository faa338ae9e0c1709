// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <sys/types.h>

namespace vantrell::host {

/// Makes this thread touch files as another user would until the end of the scope: what that user may not read or write
/// is refused, and what is made belongs to that user. Only the thread that made it is concerned, so it has to stay
/// there.
class FileAccessIdentity {
 public:
  FileAccessIdentity(uid_t user, gid_t group);
  FileAccessIdentity(const FileAccessIdentity&) = delete;
  FileAccessIdentity& operator=(const FileAccessIdentity&) = delete;
  ~FileAccessIdentity();

  /// False when the system did not allow it; then nothing may be touched.
  explicit operator bool() const noexcept { return isAssumed_; }

 private:
  uid_t formerUser_;
  gid_t formerGroup_;
  bool isAssumed_;
};

}  // namespace vantrell::host
