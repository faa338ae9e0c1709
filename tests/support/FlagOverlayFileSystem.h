// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <atomic>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

#include "foundation/PathUtilities.h"
#include "foundation/PosixCodes.h"
#include "tests/support/ForwardingFileSystem.h"

namespace vantrell::tests {

/// A real file system whose objects bear all of BSD's flags: those that Linux has not, and those that it lets root
/// alone set. Flags are kept here by device and inode and enforced as BSD does it: what is immutable, append-only,
/// undeletable or restricted, or lies in a folder that is immutable, append-only or restricted, is not removed or
/// renamed; what is immutable, append-only or restricted is not changed and gets no further name; nothing comes into a
/// folder that is immutable or restricted; flags of an object with system flags are not changed. Regular files and
/// folders bear flags, others don't. Everything else is the real file system's doing.
class FlagOverlayFileSystem final : public ForwardingFileSystem {
 public:
  explicit FlagOverlayFileSystem(host::FileSystem& real) : ForwardingFileSystem(real) {}

  /// Past all rules, for the object itself. Throws std::bad_expected_access where there is none.
  void forceFlags(const std::string& path, std::uint32_t flags) {
    const auto status = real().status(path, host::FollowLinks::No).value();
    const std::lock_guard lock(mutex_);
    flags_[{status.device, status.inode}] = flags;
  }
  /// Makes every change of flags fail, or lets it succeed again.
  void failFlagChanges(ErrorOrNil error) { flagChangeFailure_ = std::move(error); }
  /// Changes of flags that were carried out or refused; requests that changed nothing don't count.
  unsigned flagChanges() const { return flagChanges_; }

  Result<host::FileStatus> status(const std::string& path, host::FollowLinks follow) override {
    return withFlags(real().status(path, follow));
  }
  ErrorOrNil setFlags(const std::string& path, std::uint32_t flags, host::FollowLinks follow) override {
    return changeFlags(status(path, follow), flags);
  }
  Result<std::unique_ptr<host::DirectoryHandle>> openDirectory(const std::string& path,
                                                               host::FollowLinks follow) override {
    return wrap(real().openDirectory(path, follow));
  }
  Result<host::Location> locate(const std::string& path) override {
    auto location = real().locate(path);
    if (!location) return location;
    return host::Location{std::make_unique<Handle>(*this, std::move(location->folder)), std::move(location->name)};
  }
  Result<std::unique_ptr<host::ObjectHandle>> openObject(const std::string& path, host::FollowLinks follow) override {
    return wrap(real().openObject(path, follow));
  }
  ErrorOrNil removeFile(const std::string& path) override {
    if (auto refusal = refusalToRemove(path)) return refusal;
    const auto before = real().status(path, host::FollowLinks::No);
    return forget(before, real().removeFile(path));
  }
  ErrorOrNil removeDirectory(const std::string& path) override {
    if (auto refusal = refusalToRemove(path)) return refusal;
    const auto before = real().status(path, host::FollowLinks::No);
    return forget(before, real().removeDirectory(path));
  }

 private:
  class Object final : public ForwardingObjectHandle {
   public:
    Object(FlagOverlayFileSystem& overlay, std::unique_ptr<host::ObjectHandle> real)
        : ForwardingObjectHandle(std::move(real)), overlay_(overlay) {}

    Result<host::FileStatus> status() const override { return overlay_.withFlags(real().status()); }
    Result<std::unique_ptr<host::DirectoryHandle>> openDirectory() const override {
      return overlay_.wrap(real().openDirectory());
    }
    ErrorOrNil setFlags(std::uint32_t flags) override { return overlay_.changeFlags(status(), flags); }

    ErrorOrNil setOwner(std::optional<std::uint32_t> owner, std::optional<std::uint32_t> group) override {
      if (auto refusal = refusalToChange(status())) return refusal;
      return real().setOwner(owner, group);
    }
    ErrorOrNil setPermissions(std::uint16_t permissions) override {
      if (auto refusal = refusalToChange(status())) return refusal;
      return real().setPermissions(permissions);
    }
    ErrorOrNil setTimes(std::optional<Date> accessed, std::optional<Date> modified) override {
      if (auto refusal = refusalToChange(status())) return refusal;
      return real().setTimes(accessed, modified);
    }
    ErrorOrNil touch() override {
      if (auto refusal = refusalToChange(status())) return refusal;
      return real().touch();
    }
    ErrorOrNil setExtendedAttribute(const std::string& name, DataView value) override {
      if (auto refusal = refusalToChange(status())) return refusal;
      return real().setExtendedAttribute(name, value);
    }
    ErrorOrNil removeExtendedAttribute(const std::string& name, host::FSCompression compression) override {
      if (auto refusal = refusalToChange(status())) return refusal;
      return real().removeExtendedAttribute(name, compression);
    }
    ErrorOrNil setAccessControlList(const host::AccessControlList* list) override {
      if (auto refusal = refusalToChange(status())) return refusal;
      return real().setAccessControlList(list);
    }

   private:
    FlagOverlayFileSystem& overlay_;
  };

  class Handle final : public ForwardingDirectoryHandle {
   public:
    Handle(FlagOverlayFileSystem& overlay, std::unique_ptr<host::DirectoryHandle> real)
        : ForwardingDirectoryHandle(std::move(real)), overlay_(overlay) {}

    Result<host::FileStatus> status() const override { return overlay_.withFlags(real().status()); }
    Result<host::FileStatus> statusOf(const char* name, host::FollowLinks follow) const override {
      return overlay_.withFlags(real().statusOf(name, follow));
    }
    Result<std::unique_ptr<host::ObjectHandle>> openObject(const char* name, host::FollowLinks follow) const override {
      return overlay_.wrap(real().openObject(name, follow));
    }
    Result<std::unique_ptr<host::DirectoryHandle>> openDirectory(const char* name,
                                                                 host::MountPoints mountPoints) const override {
      return overlay_.wrap(real().openDirectory(name, mountPoints));
    }
    Result<std::unique_ptr<host::DirectoryHandle>> openParent() const override {
      return overlay_.wrap(real().openParent());
    }
    ErrorOrNil setFlags(std::uint32_t flags) override { return overlay_.changeFlags(status(), flags); }
    ErrorOrNil setFlagsOf(const char* name, std::uint32_t flags, host::FollowLinks follow) override {
      return overlay_.changeFlags(statusOf(name, follow), flags);
    }
    ErrorOrNil removeFile(const char* name) override {
      if (auto refusal = refusalToRemove(statusOf(name, host::FollowLinks::No), status())) return refusal;
      const auto before = real().statusOf(name, host::FollowLinks::No);
      return overlay_.forget(before, real().removeFile(name));
    }
    ErrorOrNil removeDirectory(const char* name) override {
      if (auto refusal = refusalToRemove(statusOf(name, host::FollowLinks::No), status())) return refusal;
      const auto before = real().statusOf(name, host::FollowLinks::No);
      return overlay_.forget(before, real().removeDirectory(name));
    }

    Result<std::unique_ptr<host::FileWriter>> createFile(const char* name, std::uint16_t permissions) override {
      if (auto refusal = refusalToCreate(name)) return failure(*refusal);
      return real().createFile(name, permissions);
    }
    ErrorOrNil makeDirectory(const char* name, std::uint16_t permissions) override {
      if (auto refusal = refusalToCreate(name)) return refusal;
      return real().makeDirectory(name, permissions);
    }
    ErrorOrNil makeSymbolicLink(const char* name, const std::string& target) override {
      if (auto refusal = refusalToCreate(name)) return refusal;
      return real().makeSymbolicLink(name, target);
    }
    ErrorOrNil makeSpecialFile(const char* name, const host::FileStatus& like) override {
      if (auto refusal = refusalToCreate(name)) return refusal;
      return real().makeSpecialFile(name, like);
    }
    ErrorOrNil makeLink(const char* name, const host::DirectoryHandle& sourceFolder, const char* sourceName) override {
      const auto source = sourceFolder.statusOf(sourceName, host::FollowLinks::No);
      if (source)
        if (auto refusal = refusalToCreate(name)) return refusal;
      if (source && !isTaken(name))
        if (auto refusal = refusalToChange(source)) return refusal;
      return real().makeLink(name, realOf(sourceFolder), sourceName);
    }
    ErrorOrNil rename(const char* name, host::DirectoryHandle& destination, const char* newName) override {
      const auto source = statusOf(name, host::FollowLinks::No);
      auto* target = dynamic_cast<Handle*>(&destination);
      if (source && target && !target->isTaken(newName)) {
        if (auto refusal = refusalToRemove(source, status())) return refusal;
        if (auto refusal = target->refusalToCreate(newName)) return refusal;
      }
      return real().rename(name, realOf(destination), newName);
    }

    ErrorOrNil setOwnerOf(const char* name, std::optional<std::uint32_t> owner,
                          std::optional<std::uint32_t> group) override {
      if (auto refusal = refusalToChange(statusOf(name, host::FollowLinks::No))) return refusal;
      return real().setOwnerOf(name, owner, group);
    }
    ErrorOrNil setPermissionsOf(const char* name, std::uint16_t permissions) override {
      if (auto refusal = refusalToChange(statusOf(name, host::FollowLinks::No))) return refusal;
      return real().setPermissionsOf(name, permissions);
    }
    ErrorOrNil setAccessControlListOf(const char* name, const host::AccessControlList* list) override {
      if (auto refusal = refusalToChange(statusOf(name, host::FollowLinks::No))) return refusal;
      return real().setAccessControlListOf(name, list);
    }

   private:
    // A name that is taken is the first thing that speaks against an object of that name.
    bool isTaken(const char* name) const { return real().statusOf(name, host::FollowLinks::No).has_value(); }
    ErrorOrNil refusalToCreate(const char* name) const {
      if (isTaken(name)) return std::nullopt;
      return refusalOf(status(), kLocksCreation);
    }

    FlagOverlayFileSystem& overlay_;
  };

  using Identity = std::pair<std::uint64_t, std::uint64_t>;

  static constexpr std::uint32_t kKnownFlags = 0x1 | 0x2 | 0x4 | 0x80 | 0x20000 | 0x40000 | 0x80000 | 0x100000;
  static constexpr std::uint32_t kSystemFlags = 0xffff0000;
  static constexpr std::uint32_t kLocksContents = 0x2 | 0x4 | 0x80 | 0x20000 | 0x40000 | 0x80000;
  static constexpr std::uint32_t kLocksCreation = kLocksContents & ~std::uint32_t{0x4 | 0x40000};
  static constexpr std::uint32_t kLocksObject = kLocksContents | 0x100000;

  Result<std::unique_ptr<host::DirectoryHandle>> wrap(Result<std::unique_ptr<host::DirectoryHandle>> real) {
    if (!real) return real;
    return std::make_unique<Handle>(*this, std::move(*real));
  }
  Result<std::unique_ptr<host::ObjectHandle>> wrap(Result<std::unique_ptr<host::ObjectHandle>> real) {
    if (!real) return real;
    return std::make_unique<Object>(*this, std::move(*real));
  }

  Result<host::FileStatus> withFlags(Result<host::FileStatus> status) const {
    if (!status) return status;
    const std::lock_guard lock(mutex_);
    const auto found = flags_.find({status->device, status->inode});
    if (found != flags_.end()) status->flags |= found->second;
    return status;
  }

  ErrorOrNil changeFlags(const Result<host::FileStatus>& status, std::uint32_t flags) {
    if (!status) return status.error();
    if (status->flags == flags) return std::nullopt;
    if (status->type != host::FileType::Regular && !status->isDirectory()) return Error::posix(posix::kNotSupported);
    ++flagChanges_;
    if (flagChangeFailure_) return flagChangeFailure_;
    if (flags & ~kKnownFlags) return Error::posix(posix::kNotSupported);
    if ((status->flags | flags) & kSystemFlags) return Error::posix(posix::kNotPermitted);
    const std::lock_guard lock(mutex_);
    flags_[{status->device, status->inode}] = flags;
    return std::nullopt;
  }

  static ErrorOrNil refusalOf(const Result<host::FileStatus>& object, std::uint32_t locks) {
    if (!object) return object.error();
    return object->flags & locks ? ErrorOrNil(Error::posix(posix::kNotPermitted)) : std::nullopt;
  }
  static ErrorOrNil refusalToChange(const Result<host::FileStatus>& object) {
    return refusalOf(object, kLocksContents);
  }
  static ErrorOrNil refusalToRemove(const Result<host::FileStatus>& object, const Result<host::FileStatus>& folder) {
    if (auto refusal = refusalOf(object, kLocksObject)) return refusal;
    return folder ? refusalOf(folder, kLocksContents) : std::nullopt;
  }
  ErrorOrNil refusalToRemove(const std::string& path) {
    const auto parent = stringByDeletingLastPathComponent(path);
    return refusalToRemove(status(path, host::FollowLinks::No),
                           status(parent.empty() ? "." : parent, host::FollowLinks::Yes));
  }

  // The inode number is soon another object's.
  ErrorOrNil forget(const Result<host::FileStatus>& removed, ErrorOrNil error) {
    if (!error && removed && (removed->isDirectory() || removed->links == 1)) {
      const std::lock_guard lock(mutex_);
      flags_.erase({removed->device, removed->inode});
    }
    return error;
  }

  mutable std::mutex mutex_;
  std::map<Identity, std::uint32_t> flags_;
  std::atomic<unsigned> flagChanges_ = 0;
  ErrorOrNil flagChangeFailure_;
};

}  // namespace vantrell::tests
