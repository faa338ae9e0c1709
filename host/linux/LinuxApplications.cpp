// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/LinuxApplications.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

#include <pwd.h>
#include <unistd.h>

#include "foundation/PropertyList.h"

namespace vantrell::host {
namespace {

constexpr std::string_view kApplicationSuffix = ".app";
constexpr std::array kInformationFiles = {"/Contents/Info.plist", "/Contents/Info-macos.plist"};
constexpr PropertyListLimits kInformationLimits{.maximumSize = 4 << 20, .maximumDepth = 128, .maximumObjects = 200'000};

// As macOS names it, in the namespace that everybody who may write to an item may write to. Sixteen bytes: seconds
// since 1970 and nanoseconds, each a little-endian 64-bit number.
constexpr char kLastUsedDateAttribute[] = "user.com.apple.lastuseddate#PS";
constexpr std::size_t kLastUsedDateSize = 16;

std::uint64_t littleEndian64(DataView bytes) {
  std::uint64_t value = 0;
  for (std::size_t i = 8; i-- > 0;) value = value << 8 | bytes[i];
  return value;
}

char lowercase(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}
bool isSameIdentifier(std::string_view one, std::string_view other) {
  return std::ranges::equal(one, other, {}, lowercase, lowercase);
}

/// One look through all folders.
class Scan {
 public:
  Scan(FileSystem& fileSystem, const std::string& identifier, const LinuxApplications::Limits& limits)
      : fileSystem_(fileSystem), identifier_(identifier), limits_(limits) {}

  void lookThrough(const std::string& path) {
    if (auto folder = fileSystem_.openDirectory(path, FollowLinks::Yes)) lookThrough(**folder, path, 1);
  }
  std::vector<std::string> take() { return std::move(found_); }

 private:
  // Links are left alone: an application behind one lies elsewhere, and a link to a folder may be one to itself.
  void lookThrough(DirectoryHandle& folder, const std::string& path, std::size_t depth) {
    while (entries_ < limits_.entries) {
      const auto entry = folder.next();
      if (!entry || !*entry) return;
      ++entries_;
      const std::string name((*entry)->name);
      if (!isFolder(folder, **entry, name)) continue;
      if (name.ends_with(kApplicationSuffix)) {
        consider(path + "/" + name);
      } else if (depth < limits_.depth) {
        auto inner = folder.openDirectory(name.c_str(), MountPoints::Enter);
        if (inner) lookThrough(**inner, path + "/" + name, depth + 1);
      }
    }
  }

  static bool isFolder(const DirectoryHandle& folder, const DirectoryEntry& entry, const std::string& name) {
    if (entry.type != FileType::Unknown) return entry.type == FileType::Directory;
    const auto status = folder.statusOf(name.c_str(), FollowLinks::No);
    return status && status->isDirectory();
  }

  void consider(const std::string& application) {
    if (applications_ == limits_.applications) return;
    ++applications_;
    const auto identifier = identifierOf(application);
    if (identifier && isSameIdentifier(*identifier, identifier_)) found_.push_back(application);
  }

  std::optional<std::string> identifierOf(const std::string& application) {
    for (const auto* name : kInformationFiles) {
      const auto path = application + name;
      const auto status = fileSystem_.status(path, FollowLinks::Yes);
      if (!status || status->isDirectory()) continue;
      const auto contents = fileSystem_.loadFile(path, kInformationLimits.maximumSize);
      if (!contents) return std::nullopt;
      const auto list = propertyListFromData((*contents)->bytes(), kInformationLimits);
      const auto* dictionary = list ? list->root.asDictionary() : nullptr;
      const auto* value = dictionary ? dictionary->find("CFBundleIdentifier") : nullptr;
      const auto* text = value ? value->asString() : nullptr;
      return text ? std::optional(*text) : std::nullopt;
    }
    return std::nullopt;
  }

  FileSystem& fileSystem_;
  const std::string& identifier_;
  const LinuxApplications::Limits& limits_;
  std::size_t entries_ = 0;
  std::size_t applications_ = 0;
  std::vector<std::string> found_;
};

std::optional<std::string> homeOfThisUser() {
  std::vector<char> buffer(1 << 14);
  passwd record;
  passwd* found = nullptr;
  if (getpwuid_r(geteuid(), &record, buffer.data(), buffer.size(), &found) != 0 || !found) return std::nullopt;
  const std::string home = found->pw_dir;
  return home.starts_with('/') && home != "/" ? std::optional(home) : std::nullopt;
}

}  // namespace

std::vector<std::string> LinuxApplications::usualApplicationFolders() {
  std::vector<std::string> folders{"/Applications", "/System/Applications", "/System/Library/CoreServices"};
  if (const auto home = homeOfThisUser()) folders.push_back(*home + "/Applications");
  return folders;
}

std::vector<std::string> LinuxApplications::locationsOfApplicationsWithIdentifier(const std::string& identifier) {
  if (identifier.empty()) return {};
  Scan scan(fileSystem_, identifier, limits_);
  for (const auto& folder : folders_) scan.lookThrough(folder);
  return scan.take();
}

std::optional<Date> LinuxApplications::lastUsedDateOfItemAtPath(const std::string& path) {
  const auto item = fileSystem_.openObject(path, FollowLinks::Yes);
  if (!item) return std::nullopt;
  const auto bytes = (*item)->extendedAttribute(kLastUsedDateAttribute);
  if (!bytes || bytes->size() != kLastUsedDateSize) return std::nullopt;
  const auto nanoseconds = littleEndian64(DataView(*bytes).subspan(8));
  if (nanoseconds > 999'999'999) return std::nullopt;
  return Date{static_cast<std::int64_t>(littleEndian64(*bytes)), static_cast<std::uint32_t>(nanoseconds)};
}

}  // namespace vantrell::host
