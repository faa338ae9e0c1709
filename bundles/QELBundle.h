// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <compare>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "bundles/InformationFile.h"
#include "bundles/SoftwareType.h"
#include "bundles/SystemBundle.h"
#include "foundation/Date.h"
#include "foundation/Dictionary.h"
#include "foundation/Value.h"
#include "host/Applications.h"
#include "host/FileSystem.h"

namespace vantrell {

/// Looks at one software package on disk (an application, widget, screen saver …) without loading it or changing
/// anything. Never fails: what is missing, unreadable or made to mislead gives nothing, 0, an empty list or false, in
/// bounded time and memory. Paths are bytes and may hold names that are no UTF-8.
///
/// The fields are those of the moment when it was made; everything else is looked up anew with each call. A value; the
/// file system and the applications must outlive it. Calls on different inspectors may come from any thread.
class QELBundle {
 public:
  static constexpr char kClassName[] = "QELBundle";

  /// An inspector of nothing: style 0, type 0, all other fields missing.
  QELBundle(host::FileSystem& fileSystem, host::Applications& applications)
      : fileSystem_(&fileSystem), applications_(&applications) {}

  /// Nothing when no style yields an information file, or when a flat package is neither widget nor asset by its
  /// information ("MainHTML", "MobileAssetProperties").
  static std::optional<QELBundle> initWithPath(const std::string& path, host::FileSystem& fileSystem,
                                               host::Applications& applications);

  /// See infoPathForBundlePath in bundles/InformationFile.h.
  static std::optional<std::string> infoPathForBundlePath(std::string_view path, std::uint64_t packageStyle);
  /// See bundles/BundleVersion.h.
  static double versionNumberFromString(std::string_view text);
  /// The highest version number of all installed applications with that identifier; 0 when there is none.
  static float versionNumberForApplicationWithIdentifier(const std::string& identifier, host::FileSystem& fileSystem,
                                                         host::Applications& applications);
  /// `contents`: the property list of a composition.
  static bool isQuartzCompositionUsableAsScreenSaverWithContents(const Dictionary& contents);

  /// As it was given.
  const std::optional<std::string>& bundlePath() const noexcept { return bundlePath_; }
  PackageStyle packageStyle() const noexcept { return packageStyle_; }
  SoftwareType softwareType() const noexcept { return softwareType_; }
  const std::optional<std::string>& versionString() const noexcept { return versionString_; }
  const std::optional<std::string>& bundleIdentifier() const noexcept { return bundleIdentifier_; }
  const std::optional<Date>& dateLastUsed() const noexcept { return dateLastUsed_; }

  /// All fields in one line; what is missing is "(null)".
  std::string description() const;

  /// By the names of the packages, see caseInsensitiveOrder. Every inspector is greater than null.
  std::weak_ordering compare(const QELBundle* other) const;

  /// Nothing where the package is no folder.
  std::optional<SystemBundle> systemBundle() const;

  std::string contentsPath() const;
  std::string resourcesPath() const;

  /// Nothing once the information file has gone or become a folder.
  std::optional<std::string> infoDictionaryPath() const;
  std::optional<Dictionary> infoDictionary() const;

  std::optional<std::string> developmentLocalization() const;
  /// Names of the language folders in the order of the folder, without ".lproj"; "Base" is none.
  std::vector<std::string> namesOfActiveLocalizations() const;
  std::string nonLocalizedName() const;

  /// The main executable, of a widget that of its plug-in, if that file exists. Nothing where the information names
  /// none, and for assets and software of unknown type.
  std::optional<std::string> executablePath() const;

  /// What an application offers to others: the entry "NSServices" if it is a list, else an empty one.
  Array servicesEntries() const;

  /// Whether there is a list of sealed resources. Says nothing about whether it holds: see host/CodeSignatures.h.
  bool isCodesigned() const;
  /// An application for the runtime environment of Java before macOS 10.
  bool isMRJApplication() const;
  /// An application made with Revolution, told by a plug-in of its maker.
  bool isRevolutionApplication() const;

 private:
  bool isFile(const std::string& path) const;
  std::optional<std::string> pathOfExecutableNamedBy(const Dictionary& information) const;
  std::optional<std::string> executablePathOfPlugIn(const Dictionary& information) const;

  host::FileSystem* fileSystem_;
  host::Applications* applications_;
  std::optional<std::string> bundlePath_;
  PackageStyle packageStyle_ = PackageStyle::Contents;
  SoftwareType softwareType_ = SoftwareType::Unknown;
  std::optional<std::string> versionString_;
  std::optional<std::string> bundleIdentifier_;
  std::optional<Date> dateLastUsed_;
};

}  // namespace vantrell
