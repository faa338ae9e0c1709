// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "bundles/QELBundle.h"
#include "foundation/Dictionary.h"
#include "host/Applications.h"
#include "host/CodeSignatures.h"
#include "host/FileSystem.h"

namespace vantrell {

/// Looks at an application that claims to install an operating system: whether it is built like one, whether its
/// signature holds, which generation of the system it brings, and where its tool for making install media is. Never
/// fails; what is missing leaves its flag false. What is seen is the moment of making; `isMediaUtilityUnchanged` looks
/// again. The roles must outlive it. One thread at a time.
class OSInstallAppValidator {
 public:
  static constexpr char kClassName[] = "OSInstallAppValidator";
  static constexpr std::int8_t kUnknownGeneration = -1;

  /// What a validator works with.
  struct Environment {
    host::FileSystem& fileSystem;
    host::Applications& applications;
    host::CodeSignatures& codeSignatures;
  };

  /// Nothing for a URL that is no file URL. See system/FileUrl.h. Reads all that the application's signature seals,
  /// which are gigabytes.
  static std::optional<OSInstallAppValidator> initWithURL(const std::string& url, const Environment& environment);

  /// The application has the expected structure, a media tool and a version description.
  bool isWellFormed() const noexcept { return isWellFormed_; }
  /// The signature is valid by the rules of the generation. Never true of what is not well-formed.
  bool isAuthentic() const noexcept { return isAuthentic_; }
  /// The install media needs more than 8 GB.
  bool isExceeding8GB() const noexcept { return isExceeding8GB_; }
  /// The generation: the second number of the version (10.9 has 9). It was meant for versions 10.x; 11.2.3 has 2.
  std::int8_t minorOSVersion() const noexcept { return minorOSVersion_; }
  const std::string& applicationURL() const noexcept { return applicationURL_; }
  /// "macOS 10.15.7", "macOS Catalina" …
  const std::optional<std::string>& osDescription() const noexcept { return osDescription_; }
  /// Where the tool is, or is missing; nothing for what isn't a signed application.
  const std::optional<std::string>& mediaUtilityPath() const noexcept { return mediaUtilityPath_; }

  std::string description() const;

  /// Whether the application has a folder for what it installs.
  bool isProvidingInstallationPayload() const;
  /// Whether the application can get what it installs from the network.
  bool canDownloadInstallationPayload() const noexcept { return minorOSVersion_ > 13; }

  /// Whether the tool is the same file, by identity, size and date of change, that was there before the signature was
  /// checked. A file that was changed on the spot and dated back passes.
  bool isMediaUtilityUnchanged() const;

  // The signature rules. On success `getProperties`, which may be null, receives what the signature says.
  static bool isCodeSignatureValidForObjectAtURL(const std::string& url, host::CodeSignatures& codeSignatures,
                                                 std::optional<host::CodeSigningInformation>* getProperties);
  /// The same, but the install image may have been added after the signature was made, and nothing else.
  static bool isCodeSignatureValidForMavericksInstallerAtURL(
      const std::string& url, host::CodeSignatures& codeSignatures,
      std::optional<host::CodeSigningInformation>* getProperties);
  /// False for an empty identifier and where there is no information.
  static bool isTeamIdentifier(const std::string& identifier,
                               const std::optional<host::CodeSigningInformation>& inCodesigningInfo);

 private:
  OSInstallAppValidator(std::string url, const Environment& environment)
      : environment_(environment), applicationURL_(std::move(url)) {}

  void validate();
  bool examine(const QELBundle& application);
  void takeVersion(const Dictionary& installInfo);
  void takeNames(const Dictionary& information, const QELBundle& application);
  bool isSignatureAuthentic() const;

  Environment environment_;
  bool isWellFormed_ = false;
  bool isAuthentic_ = false;
  bool isExceeding8GB_ = false;
  std::int8_t minorOSVersion_ = kUnknownGeneration;
  std::string applicationURL_;
  std::optional<std::string> osDescription_;
  std::optional<std::string> mediaUtilityPath_;
  std::optional<host::FileStatus> mediaUtilityStatus_;  // before the signature was checked
};

}  // namespace vantrell
