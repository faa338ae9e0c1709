// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

namespace vantrell::host {

// Where the two objects of the wire live; the vendor's prefix is a setting of the build.
inline constexpr char kServiceInterface[] = VANTRELL_VENDOR_DOMAIN_PREFIX ".QELPrivilegedToolProtocol";
inline constexpr char kFeedbackInterface[] = VANTRELL_VENDOR_DOMAIN_PREFIX ".QELPrivilegedOperationFeedbackProtocol";

/// An object path made of the vendor's prefix and a name.
template <unsigned long kSize>
struct ObjectPath {
  char text[kSize + sizeof VANTRELL_VENDOR_DOMAIN_PREFIX + 1] = {'/'};

  constexpr explicit ObjectPath(const char (&name)[kSize]) noexcept {
    char* to = text + 1;
    for (const char c : VANTRELL_VENDOR_DOMAIN_PREFIX) *to++ = c == '.' || c == '\0' ? '/' : c;
    for (const char c : name) *to++ = c;
  }
};

inline constexpr ObjectPath kServicePath("PrivilegedTool");
inline constexpr ObjectPath kFeedbackPath("PrivilegedOperationFeedback");

// Methods, named by the protocols.
inline constexpr char kGetVersionMethod[] = "getVersionStringUsingReply";
inline constexpr char kRegisterMethod[] = "registerClientWithPID";
inline constexpr char kUnregisterMethod[] = "unregisterClientWithPID";
inline constexpr char kPerformMethod[] = "performPrivilegedOperation";
inline constexpr char kCancelMethod[] = "cancelPrivilegedOperation";
inline constexpr char kFeedbackMethod[] = "processPrivilegedOperationFeedback";

}  // namespace vantrell::host
