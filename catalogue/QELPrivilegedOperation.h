// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "foundation/Log.h"
#include "foundation/Value.h"

namespace vantrell {

/// The argument count of an operation that takes any number of strings.
inline constexpr std::uint64_t kVariableArgumentCount = 0x7FFFFFFFFFFFFFFF;

/// One row of the static catalogue. The texts are constants of the executable.
struct StaticOperationDescription {
  std::uint64_t operationCode;
  const char* identifier;             // lower-case words joined by "-"
  std::uint64_t authorizationPolicy;  // 0 allow, 1 default rule, 2 administrator
  std::uint64_t feedbackCapability;   // low byte: progress, second byte: live output
  std::uint64_t argumentCount;        // or kVariableArgumentCount
  const char* argumentTypeCodes;      // one of S, N, D for each argument; null for a variable count
  const char* presentationString;
};

/// Stored feedback capabilities.
inline constexpr std::uint64_t kNoFeedback = 0;
inline constexpr std::uint64_t kProgressFeedback = 1;
inline constexpr std::uint64_t kLiveOutputFeedback = 256;

/// The code of the row that ends a catalogue table; its other fields are not read.
inline constexpr std::uint64_t kEndOfCatalogueCode = 9999;

/// Describes one operation that the helper can perform. Immutable.
class QELPrivilegedOperation {
 public:
  /// Nothing when identifier or presentation are missing, the policy is unknown, or the rules below are broken; the
  /// last is an error entry in `log`.
  static std::shared_ptr<const QELPrivilegedOperation> initWithStaticDescription(
      const StaticOperationDescription& description, const Log& log);

  /// Nothing unless: identifier and presentation are not empty; the rule object is a non-empty string or a dictionary
  /// with at least one entry; not both capabilities are set; a variable count comes without type codes, and a fixed
  /// count with as many (missing type codes count as none).
  static std::shared_ptr<const QELPrivilegedOperation> initWithIdentifier(
      std::string identifier, Value authenticationPolicy, bool progressCapability, bool outputCapability,
      std::uint64_t argumentCount, std::optional<std::string> argumentTypes, std::string userPresentation);

  virtual ~QELPrivilegedOperation() = default;

  bool isSupportingProgressFeedback() const noexcept { return isSupportingProgressFeedback_; }
  bool isSupportingLiveOutput() const noexcept { return isSupportingLiveOutput_; }
  bool isSupportingFeedback() const noexcept { return isSupportingProgressFeedback_ || isSupportingLiveOutput_; }
  const std::string& identifier() const noexcept { return identifier_; }
  /// The rule object: text or dictionary, as the platform's authorization database takes it.
  const Value& authenticationPolicy() const noexcept { return authenticationPolicy_; }
  std::uint64_t argumentCount() const noexcept { return argumentCount_; }
  bool hasVariableArgumentCount() const noexcept { return argumentCount_ == kVariableArgumentCount; }
  virtual std::optional<std::string_view> argumentTypeCodes() const noexcept;
  const std::string& presentationString() const noexcept { return presentationString_; }

  /// The vendor's prefix, the implementation code and the identifier, joined by dots; nothing for an empty code.
  std::optional<std::string> authorizationRightNameForImplementationIdentifier(std::string_view code) const;

  /// The identifier as it stands in a selector: the components between the hyphens, letters only, each capitalized
  /// ("delete-fileobjects" gives "DeleteFileobjects").
  std::string operationIdentifierForExecutionSelector() const;

 protected:
  QELPrivilegedOperation() = default;

 private:
  bool isSupportingProgressFeedback_ = false;
  bool isSupportingLiveOutput_ = false;
  std::string identifier_;
  Value authenticationPolicy_;
  std::uint64_t argumentCount_ = 0;
  std::optional<std::string> argumentTypeCodes_;
  std::string presentationString_;
};

/// First letter upper case, the rest lower case (ASCII).
std::string capitalized(std::string_view word);

}  // namespace vantrell
