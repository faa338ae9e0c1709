// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "bundles/QELBundle.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <utility>

#include <fmt/format.h>

#include "bundles/BundleVersion.h"
#include "bundles/CaseInsensitiveOrder.h"
#include "foundation/FileManager.h"
#include "foundation/Iso8601.h"
#include "foundation/PathUtilities.h"

namespace vantrell {
namespace {

constexpr char kExecutableKey[] = "CFBundleExecutable";

// Folders with more entries than any package has are looked at so far only.
constexpr std::size_t kMostEntries = 100'000;
constexpr std::size_t kMostSupportPlugIns = 20;

constexpr std::string_view kSupportPlugInSuffix = "_support.bundle";
constexpr std::string_view kRevolutionIdentifierPrefix = "com.runrev";

/// Names of those entries of a folder that are wanted, in its order; none where it can't be listed to its end.
template <class IsWanted>
std::vector<std::string> entriesOfFolder(const std::string& path, host::FileSystem& fileSystem, IsWanted isWanted) {
  const auto folder = fileSystem.openDirectory(path, host::FollowLinks::Yes);
  if (!folder) return {};
  std::vector<std::string> names;
  for (std::size_t count = 0; count < kMostEntries; ++count) {
    const auto entry = (*folder)->next();
    if (!entry) return {};
    if (!*entry) break;
    if (isWanted((*entry)->name)) names.emplace_back((*entry)->name);
  }
  return names;
}

/// Whether a path from a package's information stays inside the package: it is no way up.
bool staysInside(std::string_view relativePath) {
  while (!relativePath.empty()) {
    const auto component = relativePath.substr(0, relativePath.find('/'));
    if (component == "..") return false;
    relativePath.remove_prefix(std::min(relativePath.size(), component.size() + 1));
  }
  return true;
}

std::string textOrNull(const std::optional<std::string>& text) {
  return text ? displayablePath(*text) : "(null)";
}

// As the platform describes dates: "2026-01-31 23:59:59 +0000".
std::string textOrNull(const std::optional<Date>& date) {
  if (!date) return "(null)";
  auto text = iso8601FromDate(*date);
  if (!text) return fmt::format("{} s since 1970", date->seconds);
  text->replace(text->rfind('T'), 1, " ");
  text->replace(text->rfind('Z'), 1, " +0000");
  return *text;
}

float singlePrecision(double number) {
  return number > std::numeric_limits<float>::max() ? std::numeric_limits<float>::infinity()
                                                    : static_cast<float>(number);
}

double versionNumberOf(const Dictionary& information, const std::string& identifier) {
  const bool isSafari = identifier == "com.apple.Safari";
  auto text = textUnder(information, isSafari ? "CFBundleGetInfoString" : "CFBundleShortVersionString");
  if (!text || text->empty()) text = textUnder(information, "CFBundleVersion");
  return text ? versionNumberFromString(*text) : 0.0;
}

}  // namespace

std::optional<QELBundle> QELBundle::initWithPath(const std::string& path, host::FileSystem& fileSystem,
                                                 host::Applications& applications) {
  QELBundle bundle(fileSystem, applications);
  std::optional<std::string> infoPath;
  for (std::uint64_t style = 0; style < kPackageStyles && !infoPath; ++style) {
    infoPath = infoPathForBundlePath(path, style);
    if (infoPath && !bundle.isFile(*infoPath)) infoPath.reset();
    bundle.packageStyle_ = static_cast<PackageStyle>(style);
  }
  if (!infoPath) return std::nullopt;

  const auto information = dictionaryFromPropertyListFile(*infoPath, fileSystem).value_or(Dictionary());
  if (bundle.packageStyle_ == PackageStyle::Flat && !information.contains("MainHTML") &&
      !information.contains("MobileAssetProperties")) {
    return std::nullopt;
  }
  bundle.bundlePath_ = path;
  FileManager fileManager(fileSystem);
  bundle.softwareType_ = softwareTypeOfPackage(path, bundle.packageStyle_, information, fileManager);
  if (bundle.packageStyle_ == PackageStyle::Composition && bundle.softwareType_ == SoftwareType::ScreenSaver) {
    bundle.versionString_ = "";
    bundle.bundleIdentifier_ = "";
  } else {
    bundle.versionString_ = versionTextFromInformation(information);
    bundle.bundleIdentifier_ = textUnder(information, "CFBundleIdentifier");
  }
  bundle.dateLastUsed_ = applications.lastUsedDateOfItemAtPath(path);
  return bundle;
}

std::optional<std::string> QELBundle::infoPathForBundlePath(std::string_view path, std::uint64_t packageStyle) {
  return vantrell::infoPathForBundlePath(path, packageStyle);
}

double QELBundle::versionNumberFromString(std::string_view text) {
  return vantrell::versionNumberFromString(text);
}

float QELBundle::versionNumberForApplicationWithIdentifier(const std::string& identifier, host::FileSystem& fileSystem,
                                                           host::Applications& applications) {
  if (identifier.empty()) return 0;
  float highest = 0;
  for (const auto& location : applications.locationsOfApplicationsWithIdentifier(identifier)) {
    const auto bundle = initWithPath(location, fileSystem, applications);
    if (!bundle || bundle->softwareType() != SoftwareType::Application) continue;
    const auto information = bundle->infoDictionary();
    if (information) highest = std::max(highest, singlePrecision(versionNumberOf(*information, identifier)));
  }
  return highest;
}

bool QELBundle::isQuartzCompositionUsableAsScreenSaverWithContents(const Dictionary& contents) {
  return isQuartzCompositionUsableAsScreenSaver(contents);
}

std::string QELBundle::description() const {
  return fmt::format("{}: '{}' style: {} type: {} version: '{}' identifier: '{}' last used: {}\n", kClassName,
                     textOrNull(bundlePath_), static_cast<std::uint64_t>(packageStyle_),
                     static_cast<std::uint64_t>(softwareType_), textOrNull(versionString_),
                     textOrNull(bundleIdentifier_), textOrNull(dateLastUsed_));
}

std::weak_ordering QELBundle::compare(const QELBundle* other) const {
  if (!other) return std::weak_ordering::greater;
  const auto name = [](const QELBundle& bundle) {
    return bundle.bundlePath_ ? lastPathComponent(*bundle.bundlePath_) : std::string_view();
  };
  return caseInsensitiveOrder(name(*this), name(*other));
}

std::optional<SystemBundle> QELBundle::systemBundle() const {
  return bundlePath_ ? SystemBundle::bundleWithPath(*bundlePath_, *fileSystem_) : std::nullopt;
}

std::string QELBundle::contentsPath() const {
  const auto path = bundlePath_.value_or("");
  return hasContentsFolder(packageStyle_) && bundlePath_ ? stringByAppendingPathComponent(path, "Contents") : path;
}

std::string QELBundle::resourcesPath() const {
  if (packageStyle_ == PackageStyle::Flat || !bundlePath_) return bundlePath_.value_or("");
  return stringByAppendingPathComponent(contentsPath(), "Resources");
}

std::optional<std::string> QELBundle::infoDictionaryPath() const {
  const auto path = infoPathForBundlePath(bundlePath_.value_or(""), static_cast<std::uint64_t>(packageStyle_));
  return path && isFile(*path) ? path : std::nullopt;
}

std::optional<Dictionary> QELBundle::infoDictionary() const {
  const auto path = infoDictionaryPath();
  return path ? dictionaryFromPropertyListFile(*path, *fileSystem_) : std::nullopt;
}

std::optional<std::string> QELBundle::developmentLocalization() const {
  const auto information = infoDictionary();
  return information ? textUnder(*information, "CFBundleDevelopmentRegion") : std::nullopt;
}

std::vector<std::string> QELBundle::namesOfActiveLocalizations() const {
  if (!bundlePath_) return {};
  auto names = entriesOfFolder(resourcesPath(), *fileSystem_, [](std::string_view name) {
    return pathExtension(name) == "lproj" && nameWithoutPathExtension(name) != "Base";
  });
  for (auto& name : names) name = std::string(nameWithoutPathExtension(name));
  return names;
}

std::string QELBundle::nonLocalizedName() const {
  return bundlePath_ ? std::string(nameWithoutPathExtension(*bundlePath_)) : std::string();
}

std::optional<std::string> QELBundle::executablePath() const {
  if (softwareType_ == SoftwareType::Unknown || softwareType_ == SoftwareType::Asset) return std::nullopt;
  const auto information = infoDictionary();
  if (!information) return std::nullopt;
  return softwareType_ == SoftwareType::Widget ? executablePathOfPlugIn(*information)
                                               : pathOfExecutableNamedBy(*information);
}

// Only what the plug-in's own information says is asked for, so that a plug-in that names itself or its package as its
// plug-in leads nowhere.
std::optional<std::string> QELBundle::executablePathOfPlugIn(const Dictionary& information) const {
  const auto name = textUnder(information, "Plugin");
  if (!name || name->empty() || !staysInside(*name)) return std::nullopt;
  const auto plugIn = initWithPath(stringByAppendingPathComponent(*bundlePath_, *name), *fileSystem_, *applications_);
  const auto plugInInformation = plugIn ? plugIn->infoDictionary() : std::nullopt;
  return plugInInformation ? plugIn->pathOfExecutableNamedBy(*plugInInformation) : std::nullopt;
}

std::optional<std::string> QELBundle::pathOfExecutableNamedBy(const Dictionary& information) const {
  const auto name = textUnder(information, kExecutableKey);
  if (!name || name->empty()) return std::nullopt;
  const auto path = stringByAppendingPathComponent(stringByAppendingPathComponent(contentsPath(), "MacOS"), *name);
  return isFile(path) ? std::optional(path) : std::nullopt;
}

Array QELBundle::servicesEntries() const {
  if (softwareType_ != SoftwareType::Application) return {};
  const auto information = infoDictionary();
  const auto* value = information ? information->find("NSServices") : nullptr;
  const auto* entries = value ? value->asArray() : nullptr;
  return entries ? *entries : Array();
}

bool QELBundle::isCodesigned() const {
  if (!bundlePath_) return false;
  const auto contents = contentsPath();
  return isFile(stringByAppendingPathComponent(contents, "_CodeSignature/CodeResources")) ||
         isFile(stringByAppendingPathComponent(contents, "CodeResources"));
}

bool QELBundle::isMRJApplication() const {
  if (softwareType_ != SoftwareType::Application) return false;
  const auto bundle = systemBundle();
  return bundle && bundle->pathForResource("MRJApp", "properties");
}

bool QELBundle::isRevolutionApplication() const {
  if (softwareType_ != SoftwareType::Application) return false;
  const auto plugIns = stringByAppendingPathComponent(contentsPath(), "PlugIns");
  const auto names = entriesOfFolder(plugIns, *fileSystem_,
                                     [](std::string_view name) { return name.ends_with(kSupportPlugInSuffix); });
  const auto end = names.begin() + static_cast<std::ptrdiff_t>(std::min(names.size(), kMostSupportPlugIns));
  return std::any_of(names.begin(), end, [&](const std::string& name) {
    const auto plugIn = initWithPath(stringByAppendingPathComponent(plugIns, name), *fileSystem_, *applications_);
    return plugIn && plugIn->bundleIdentifier() && plugIn->bundleIdentifier()->starts_with(kRevolutionIdentifierPrefix);
  });
}

bool QELBundle::isFile(const std::string& path) const {
  bool isDirectory = false;
  return FileManager(*fileSystem_).fileExistsAtPath(path, &isDirectory) && !isDirectory;
}

}  // namespace vantrell
