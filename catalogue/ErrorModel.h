// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/Error.h"

namespace vantrell {

/// The vendor's reverse-DNS prefix, fixed when the system is built.
std::string vendorDomainPrefix();

/// Domain of refusals by the service core, codes 1 to 11.
std::string privilegedToolErrorDomain();

/// Domain of the results of operations; code 0 carries a result value and is no failure.
std::string privilegedOperationErrorDomain();

// User-info keys of this system; the text of each is its name without "Key".
inline constexpr char QELLocalizedDescriptionTemplateKey[] = "QELLocalizedDescriptionTemplate";
inline constexpr char QELLocalizedDescriptionParametersKey[] = "QELLocalizedDescriptionParameters";
inline constexpr char QELLocalizedRecoverySuggestionTemplateKey[] = "QELLocalizedRecoverySuggestionTemplate";
inline constexpr char QELLocalizedRecoverySuggestionParametersKey[] = "QELLocalizedRecoverySuggestionParameters";
inline constexpr char QELSecurityPolicyCheckResultKey[] = "QELSecurityPolicyCheckResult";

/// A failed operation: a plain description, a recovery-suggestion template with its parameters, and the path that it is
/// about, unless that is empty.
Error privilegedOperationError(std::int64_t code, const char* description, const char* suggestionTemplate,
                               const std::vector<std::string>& parameters, const std::string& path = {});

/// The service core's refusals. Each holds a plain description, a recovery-suggestion template and its parameters.
namespace privileged_tool_error {

Error invalidOperation(std::uint64_t code);                                                             // 1
Error authorizationProblem(unsigned result);                                                            // 2
Error wrongArgumentCount(std::string_view identifier, std::uint64_t expected, std::uint64_t received);  // 3
Error badTypeCodes(std::string_view identifier);                                                        // 4
Error invalidTypeCode(char typeCode, std::string_view identifier);                                      // 5
Error wrongArgumentClass(std::string_view identifier, std::uint64_t index, std::string_view className,
                         char typeCode);                                            // 6
Error stringListExpected(std::string_view identifier, std::string_view className);  // 7
/// An empty name or reason is reported as "<nil>".
Error unhandledException(std::string_view identifier, std::string_view name, std::string_view reason);  // 8
Error notImplemented(std::string_view identifier);                                                      // 9
Error busyWithOtherClient(std::int32_t requester, std::string_view otherName, std::int32_t other);      // 10
Error unsafeLaunchControl();                                                                            // 11

}  // namespace privileged_tool_error
}  // namespace vantrell
