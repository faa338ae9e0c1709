// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "catalogue/ErrorModel.h"

#include <utility>

#include "foundation/Value.h"

#ifndef VANTRELL_VENDOR_DOMAIN_PREFIX
#error "The build sets the vendor's prefix."
#endif

namespace vantrell {

std::string vendorDomainPrefix() {
  return VANTRELL_VENDOR_DOMAIN_PREFIX;
}
std::string privilegedToolErrorDomain() {
  return vendorDomainPrefix() + ".error.privileged-tool";
}
std::string privilegedOperationErrorDomain() {
  return vendorDomainPrefix() + ".error.privileged-operation";
}

Error privilegedOperationError(std::int64_t code, const char* description, const char* suggestionTemplate,
                               const std::vector<std::string>& parameters, const std::string& path) {
  Dictionary userInfo{{NSLocalizedDescriptionKey, description},
                      {QELLocalizedRecoverySuggestionTemplateKey, suggestionTemplate},
                      {QELLocalizedRecoverySuggestionParametersKey, Array(parameters.begin(), parameters.end())}};
  if (!path.empty()) userInfo.set(NSFilePathErrorKey, path);
  return {privilegedOperationErrorDomain(), code, std::move(userInfo)};
}

namespace privileged_tool_error {

namespace {

constexpr char kCommunicationFailed[] = "Communication with the security component failed.";

Error refusal(std::int64_t code, const char* description, const char* suggestionTemplate, Array parameters) {
  return {privilegedToolErrorDomain(), code,
          Dictionary{{NSLocalizedDescriptionKey, description},
                     {QELLocalizedRecoverySuggestionTemplateKey, suggestionTemplate},
                     {QELLocalizedRecoverySuggestionParametersKey, std::move(parameters)}}};
}

std::string textOrNil(std::string_view text) {
  return text.empty() ? "<nil>" : std::string(text);
}

}  // namespace

Error invalidOperation(std::uint64_t code) {
  return refusal(1, kCommunicationFailed,
                 "Internal error: The operation with code $1$ is invalid or the arguments are missing.",
                 {std::to_string(code)});
}

Error authorizationProblem(unsigned result) {
  return refusal(2, kCommunicationFailed,
                 "An authorization or trust issue of type $1$ was detected. The operation was rejected to avoid a "
                 "security breach. Uninstall the security component and try again.",
                 {std::to_string(result)});
}

Error wrongArgumentCount(std::string_view identifier, std::uint64_t expected, std::uint64_t received) {
  return refusal(3, kCommunicationFailed,
                 "Internal error: An invalid number of arguments has been sent for operation $1$ ($2$ expected, $3$ "
                 "received).",
                 {identifier, std::to_string(expected), std::to_string(received)});
}

Error badTypeCodes(std::string_view identifier) {
  return refusal(4, kCommunicationFailed,
                 "Internal error: A contradiction in the definition of type codes for operation $1$ has been detected.",
                 {identifier});
}

Error invalidTypeCode(char typeCode, std::string_view identifier) {
  return refusal(5, kCommunicationFailed,
                 "Internal error: An invalid type code '$1$' has been detected in the definition of operation $2$.",
                 {std::string(1, typeCode), identifier});
}

Error wrongArgumentClass(std::string_view identifier, std::uint64_t index, std::string_view className, char typeCode) {
  return refusal(
      6, kCommunicationFailed,
      "Internal error: The operation $1$ was rejected because argument $2$ has class $3$, but type '$4$' was "
      "expected.",
      {identifier, std::to_string(index), className, std::string(1, typeCode)});
}

Error stringListExpected(std::string_view identifier, std::string_view className) {
  return refusal(7, kCommunicationFailed,
                 "Internal error: The operation $1$ was rejected because at least one argument has class $2$, but a "
                 "string list was expected.",
                 {identifier, className});
}

Error unhandledException(std::string_view identifier, std::string_view name, std::string_view reason) {
  return refusal(8, "An unhandled error occurred during a privileged operation.",
                 "While trying to execute the operation $1$, the exception '$2$' was detected: $3$",
                 {identifier, textOrNil(name), textOrNil(reason)});
}

Error notImplemented(std::string_view identifier) {
  return refusal(9, kCommunicationFailed,
                 "Internal error: The privileged operation $1$ could not be executed because it is not implemented "
                 "(yet).",
                 {identifier});
}

Error busyWithOtherClient(std::int32_t requester, std::string_view otherName, std::int32_t other) {
  return refusal(10, "The security component is currently busy. It may be working for another user session.",
                 "The request to remove the privileged helper was rejected (your process $1$). Process $2$ ($3$) is "
                 "still using it.",
                 {std::to_string(requester), otherName, std::to_string(other)});
}

Error unsafeLaunchControl() {
  return {privilegedToolErrorDomain(), 11,
          Dictionary{{NSLocalizedDescriptionKey,
                      "A security issue was detected with the launch control subsystem of this operating system."},
                     {NSLocalizedRecoverySuggestionErrorKey,
                      "The request to remove the privileged helper was rejected to avoid a possible security breach. "
                      "Required permission settings in your system installation are unsafe and may have been "
                      "manipulated."},
                     {NSFilePathErrorKey, "/bin/launchctl"}}};
}

}  // namespace privileged_tool_error
}  // namespace vantrell
