// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/LinuxPreferences.h"

#include <cerrno>
#include <optional>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "foundation/PosixCodes.h"
#include "foundation/PropertyList.h"
#include "host/linux/FileAccessIdentity.h"
#include "host/linux/PreferencesLocation.h"
#include "host/linux/PropertyListFile.h"
#include "host/posix/ErrorNumbers.h"

#ifndef VANTRELL_VENDOR_DOMAIN_PREFIX
#error "The build sets the vendor's prefix."
#endif

namespace vantrell::host {
namespace {

constexpr mode_t kModeOfAllUsers = 0644;
constexpr mode_t kModeOfOneUser = 0600;

/// Waits until no other writer is at work in `folder`, and holds the place as long as the descriptor is open. The lock
/// is not on the folder itself: anyone who can read that could keep it forever.
Result<FileDescriptor> lockFolder(const std::string& root, int folder) {
  static constexpr const char* kLockFolder[] = {"run", VANTRELL_VENDOR_DOMAIN_PREFIX ".preferences"};
  const auto locks = openFolderChain({root + "/", kLockFolder, false, 0755}, MissingFolders::AreCreated);
  if (!locks) return failure(locks.error());
  struct stat status;
  if (fstat(folder, &status) != 0) return errnoFailure();
  const auto name = std::to_string(status.st_dev) + "-" + std::to_string(status.st_ino);
  FileDescriptor lock(openat(locks->get(), name.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, S_IRUSR | S_IWUSR));
  if (!lock) return errnoFailure();
  while (flock(lock.get(), LOCK_EX) != 0) {
    if (errno != EINTR) return errnoFailure();
  }
  return lock;
}

bool belongsTo(const std::string& folder, uid_t user) {
  struct stat status;
  return stat(folder.c_str(), &status) == 0 && status.st_uid == user;
}

class FileChanges final : public PreferencesChanges {
 public:
  FileChanges(PreferencesDomain domain, std::string root, std::shared_ptr<const UserDatabase> users)
      : domain_(std::move(domain)), root_(std::move(root)), users_(std::move(users)) {}

  void setValue(std::string key, std::optional<Value> value) override {
    changes_.emplace_back(std::move(key), std::move(value));
  }

  bool synchronize() override {
    if (changes_.empty()) return true;
    const auto location = preferencesLocationOf(domain_, root_, *users_);
    if (!location || (location->user && !belongsTo(location->start, location->user->user))) return false;
    const auto folder = openFolder(*location);
    if (!folder) return folder.error().isPosix(posix::kNoEntry) && !adds();
    const auto lock = lockFolder(root_, folder->get());
    if (!lock || !change(*location, folder->get())) return false;
    changes_.clear();
    return true;
  }

 private:
  /// What is done to the user's files is done under this. Processes that are not root's have no choice.
  static std::optional<FileAccessIdentity>& assumeIdentity(const PreferencesLocation& location,
                                                           std::optional<FileAccessIdentity>& identity) {
    if (location.user && location.user->user != geteuid()) identity.emplace(location.user->user, location.user->group);
    return identity;
  }

  // Folders are not made for the sake of a key that is to be removed.
  bool adds() const {
    for (const auto& [key, value] : changes_)
      if (value) return true;
    return false;
  }

  Result<FileDescriptor> openFolder(const PreferencesLocation& location) const {
    std::optional<FileAccessIdentity> identity;
    if (assumeIdentity(location, identity) && !*identity) return posixFailure(posix::kNotPermitted);
    return openFolderChain(location.folders(), adds() ? MissingFolders::AreCreated : MissingFolders::AreErrors);
  }

  bool change(const PreferencesLocation& location, int folder) const {
    std::optional<FileAccessIdentity> identity;
    if (assumeIdentity(location, identity) && !*identity) return false;
    auto file = readPropertyListFile(folder, location.fileName);
    if (!file) return false;
    auto contents = *file ? std::move((*file)->contents) : Dictionary();
    bool isChanged = false;
    for (const auto& [key, value] : changes_) {
      if (value) contents.set(key, *value);
      isChanged = value || contents.remove(key) || isChanged;
    }
    if (!isChanged) return true;
    if (contents.empty()) return !removeFile(folder, location.fileName);
    return write(location, folder, std::move(contents), *file ? std::optional((*file)->permissions) : std::nullopt);
  }

  static bool write(const PreferencesLocation& location, int folder, Dictionary contents,
                    std::optional<mode_t> formerMode) {
    const auto content = binaryPropertyListFromValue(Value(std::move(contents)));
    if (!content) return false;
    FileReplacement replacement{location.fileName + ".new", location.user ? kModeOfOneUser : kModeOfAllUsers, {}};
    if (formerMode) replacement.permissions &= *formerMode | kModeOfOneUser;
    if (!location.user && geteuid() == 0) replacement.owner.emplace(0, 0);
    return !replaceFile(folder, location.fileName, *content, replacement);
  }

  PreferencesDomain domain_;
  std::string root_;
  std::shared_ptr<const UserDatabase> users_;
  std::vector<std::pair<std::string, std::optional<Value>>> changes_;
};

}  // namespace

LinuxPreferences::LinuxPreferences(std::string root, std::shared_ptr<const UserDatabase> users)
    : root_(std::move(root)), users_(std::move(users)) {}

std::unique_ptr<PreferencesChanges> LinuxPreferences::changesOf(PreferencesDomain domain) {
  return std::make_unique<FileChanges>(std::move(domain), root_, users_);
}

}  // namespace vantrell::host
