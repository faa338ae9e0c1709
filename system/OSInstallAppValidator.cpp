// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "system/OSInstallAppValidator.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <string_view>

#include <fmt/format.h>

#include "bundles/InformationFile.h"
#include "foundation/FileManager.h"
#include "foundation/PathUtilities.h"
#include "system/FileUrl.h"
#include "system/InstallVersionScanner.h"

namespace vantrell {
namespace {

constexpr std::array<std::string_view, 16> kGenerationNames = {
    "Cheetah",      "Puma",      "Jaguar",   "Panther",   "Tiger",  "Leopard",    "SnowLeopard", "Lion",
    "MountainLion", "Mavericks", "Yosemite", "ElCapitan", "Sierra", "HighSierra", "Mojave",      "Catalina"};

constexpr std::int8_t kMavericks = 9;
constexpr std::int8_t kHighSierra = 13;
constexpr std::int8_t kCatalina = 15;

constexpr char kMavericksTeam[] = "APPLECOMPUTER";
constexpr char kInstallerTeam[] = "K36BKF7T3D";
constexpr std::string_view kAddedInstallImage = "SharedSupport/InstallESD.dmg";

constexpr std::string_view kDisplayNamePrefix = "Install ";
constexpr std::string_view kIdentifierPrefix = "com.apple.InstallAssistant.";

constexpr host::CodeValidityOptions kValidityOptions{
    .checkAllArchitectures = true, .checkNestedCode = true, .enforceRevocationChecks = true};

std::string textOrNull(const std::optional<std::string>& text) {
  return text ? displayablePath(*text) : "(null)";
}

const char* yesOrNo(bool value) {
  return value ? "YES" : "NO";
}

bool isFile(const std::string& path, host::FileSystem& fileSystem) {
  bool isDirectory = false;
  return FileManager(fileSystem).fileExistsAtPath(path, &isDirectory) && !isDirectory;
}

bool isSameFile(const host::FileStatus& one, const host::FileStatus& other) {
  return one.device == other.device && one.inode == other.inode && one.type == other.type && one.size == other.size &&
         one.modified == other.modified && one.permissions == other.permissions && one.owner == other.owner &&
         one.group == other.group;
}

/// The one complaint that a genuine installer gives cause for: its install image, fetched and put into place after the
/// application was signed.
bool isAboutAddedInstallImageOnly(const Error& error) {
  const auto& userInfo = error.userInfo();
  const auto* value = userInfo.size() == 1 ? userInfo.find(host::SecCSResourceAdded) : nullptr;
  const auto* added = value ? value->asArray() : nullptr;
  const auto* path = added && added->size() == 1 ? added->front().asString() : nullptr;
  return path && path->ends_with(kAddedInstallImage);
}

template <class IsTolerated>
bool isSignatureValid(const std::string& url, host::CodeSignatures& codeSignatures,
                      std::optional<host::CodeSigningInformation>* getProperties, IsTolerated isTolerated) {
  const auto path = pathOfFileURL(url);
  if (!path) return false;
  const auto code = codeSignatures.staticCodeAtPath(*path);
  if (!code) return false;
  auto information = (*code)->signingInformation();
  if (!information) return false;
  const auto error = (*code)->checkValidity(kValidityOptions, host::kAnchorAppleGeneric);
  if (error && !isTolerated(*error)) return false;
  if (getProperties) *getProperties = std::move(*information);
  return true;
}

}  // namespace

std::optional<OSInstallAppValidator> OSInstallAppValidator::initWithURL(const std::string& url,
                                                                        const Environment& environment) {
  if (!isFileURL(url)) return std::nullopt;
  OSInstallAppValidator validator(url, environment);
  validator.validate();
  return validator;
}

void OSInstallAppValidator::validate() {
  const auto path = pathOfFileURL(applicationURL_);
  if (!path) return;
  const auto application = QELBundle::initWithPath(*path, environment_.fileSystem, environment_.applications);
  if (!application || !examine(*application)) return;
  isWellFormed_ = true;
  isAuthentic_ = isSignatureAuthentic();
  isExceeding8GB_ = minorOSVersion_ >= kCatalina;
}

bool OSInstallAppValidator::examine(const QELBundle& application) {
  if (application.packageStyle() != PackageStyle::Contents || application.softwareType() != SoftwareType::Application ||
      !application.isCodesigned()) {
    return false;
  }
  auto& fileSystem = environment_.fileSystem;
  mediaUtilityPath_ = stringByAppendingPathComponent(application.resourcesPath(), "createinstallmedia");
  const auto status = fileSystem.status(*mediaUtilityPath_, host::FollowLinks::Yes);
  if (!status || status->isDirectory()) return false;
  mediaUtilityStatus_ = *status;

  const auto installInfo =
      stringByAppendingPathComponent(application.contentsPath(), "SharedSupport/InstallInfo.plist");
  if (isFile(installInfo, fileSystem)) {
    takeVersion(dictionaryFromPropertyListFile(installInfo, fileSystem).value_or(Dictionary()));
  } else {
    if (!application.infoDictionaryPath()) return false;
    takeNames(application.infoDictionary().value_or(Dictionary()), application);
  }
  return osDescription_ && !osDescription_->empty();
}

void OSInstallAppValidator::takeVersion(const Dictionary& installInfo) {
  const auto* value = installInfo.find("System Image Info");
  const auto* image = value ? value->asDictionary() : nullptr;
  const auto version = image ? textUnder(*image, "version") : std::nullopt;
  if (!version) return;
  osDescription_ = "macOS " + *version;
  minorOSVersion_ = generationFromVersion(*version).value_or(kUnknownGeneration);
}

void OSInstallAppValidator::takeNames(const Dictionary& information, const QELBundle& application) {
  const auto displayName = textUnder(information, "CFBundleDisplayName");
  if (displayName && displayName->starts_with(kDisplayNamePrefix)) {
    osDescription_ = displayName->substr(kDisplayNamePrefix.size());
  }
  const auto identifier = application.bundleIdentifier().value_or("");
  if (!identifier.starts_with(kIdentifierPrefix)) return;
  const auto found = std::ranges::find(kGenerationNames, std::string_view(identifier).substr(kIdentifierPrefix.size()));
  if (found == kGenerationNames.end()) return;
  minorOSVersion_ = static_cast<std::int8_t>(std::distance(kGenerationNames.begin(), found));
}

bool OSInstallAppValidator::isSignatureAuthentic() const {
  auto& codeSignatures = environment_.codeSignatures;
  std::optional<host::CodeSigningInformation> information;
  if (minorOSVersion_ == kMavericks) {
    return isCodeSignatureValidForMavericksInstallerAtURL(applicationURL_, codeSignatures, &information) &&
           isTeamIdentifier(kMavericksTeam, information);
  }
  if (!isCodeSignatureValidForObjectAtURL(applicationURL_, codeSignatures, &information)) return false;
  const bool isAnyTeamGood = minorOSVersion_ >= kHighSierra && minorOSVersion_ <= kCatalina;
  return isAnyTeamGood || isTeamIdentifier(kInstallerTeam, information);
}

std::string OSInstallAppValidator::description() const {
  return fmt::format("<{}>: installer for '{}', media utility at {}, well-formed: {} authentic: {} generation: {}\n",
                     kClassName, textOrNull(osDescription_), textOrNull(mediaUtilityPath_), yesOrNo(isWellFormed_),
                     yesOrNo(isAuthentic_), int{minorOSVersion_});
}

bool OSInstallAppValidator::isProvidingInstallationPayload() const {
  const auto path = pathOfFileURL(applicationURL_);
  if (!path) return false;
  bool isDirectory = false;
  const auto sharedSupport = stringByAppendingPathComponent(*path, "Contents/SharedSupport");
  return FileManager(environment_.fileSystem).fileExistsAtPath(sharedSupport, &isDirectory) && isDirectory;
}

bool OSInstallAppValidator::isMediaUtilityUnchanged() const {
  if (!mediaUtilityPath_ || !mediaUtilityStatus_) return false;
  const auto status = environment_.fileSystem.status(*mediaUtilityPath_, host::FollowLinks::Yes);
  return status && isSameFile(*status, *mediaUtilityStatus_);
}

bool OSInstallAppValidator::isCodeSignatureValidForObjectAtURL(
    const std::string& url, host::CodeSignatures& codeSignatures,
    std::optional<host::CodeSigningInformation>* getProperties) {
  return isSignatureValid(url, codeSignatures, getProperties, [](const Error&) { return false; });
}

bool OSInstallAppValidator::isCodeSignatureValidForMavericksInstallerAtURL(
    const std::string& url, host::CodeSignatures& codeSignatures,
    std::optional<host::CodeSigningInformation>* getProperties) {
  return isSignatureValid(url, codeSignatures, getProperties, isAboutAddedInstallImageOnly);
}

bool OSInstallAppValidator::isTeamIdentifier(const std::string& identifier,
                                             const std::optional<host::CodeSigningInformation>& inCodesigningInfo) {
  return !identifier.empty() && inCodesigningInfo && inCodesigningInfo->teamIdentifier == identifier;
}

}  // namespace vantrell
