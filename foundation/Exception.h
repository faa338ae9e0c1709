// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <exception>
#include <string>
#include <utility>

namespace vantrell {

/// Raised in the few places where the platform raises; never for control flow. The dispatcher turns it into an error.
class Exception : public std::exception {
 public:
  Exception(std::string name, std::string reason) : name_(std::move(name)), reason_(std::move(reason)) {}

  const std::string& name() const noexcept { return name_; }
  const std::string& reason() const noexcept { return reason_; }
  const char* what() const noexcept override { return reason_.c_str(); }

 private:
  std::string name_;
  std::string reason_;
};

// The platform's names of what it raises.
inline constexpr char NSInvalidArgumentException[] = "NSInvalidArgumentException";
inline constexpr char NSRangeException[] = "NSRangeException";
inline constexpr char NSGenericException[] = "NSGenericException";
inline constexpr char NSMallocException[] = "NSMallocException";

}  // namespace vantrell
