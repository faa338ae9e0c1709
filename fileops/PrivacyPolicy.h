// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

namespace vantrell {

/// Whoever can tell what the operating system's privacy control lets this process see. Safe from any thread.
class PrivacyPolicy {
 public:
  /// The one answer that matters here; 0 stands for "not known".
  static constexpr int kAccessDenied = 1;

  virtual ~PrivacyPolicy() = default;
  virtual int privacyPolicyOfCurrentUserForFullDiskAccess() = 0;
  virtual int privacyPolicyOfRootForFullDiskAccess() = 0;
};

}  // namespace vantrell
