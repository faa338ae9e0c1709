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
#include "host/FileSystem.h"

namespace vantrell::tests {

/// A real file system whose objects bear all of BSD's flags: those that Linux has not, and those that it lets root
/// alone set. Flags are kept here by device and inode and enforced as BSD does it: what is immutable, append-only,
/// undeletable or restricted, or lies in a folder that is immutable, append-only or restricted, is not removed; flags
/// of an object with system flags are not changed. Regular files and folders bear flags, others don't. Everything else
/// is the real file system's doing.
class FlagOverlayFileSystem final : public host::FileSystem {
 public:
  explicit FlagOverlayFileSystem(host::FileSystem& real) : real_(real) {}

  /// Past all rules, for the object itself. Throws std::bad_expected_access where there is none.
  void forceFlags(const std::string& path, std::uint32_t flags) {
    const auto status = real_.status(path, host::FollowLinks::No).value();
    const std::lock_guard lock(mutex_);
    flags_[{status.device, status.inode}] = flags;
  }
  /// Makes every change of flags fail, or lets it succeed again.
  void failFlagChanges(ErrorOrNil error) { flagChangeFailure_ = std::move(error); }
  /// Changes of flags that were carried out or refused; requests that changed nothing don't count.
  unsigned flagChanges() const { return flagChanges_; }

  Result<host::FileStatus> status(const std::string& path, host::FollowLinks follow) override {
    return withFlags(real_.status(path, follow));
  }
  ErrorOrNil setFlags(const std::string& path, std::uint32_t flags, host::FollowLinks follow) override {
    return changeFlags(status(path, follow), flags);
  }
  Result<std::unique_ptr<host::DirectoryHandle>> openDirectory(const std::string& path,
                                                               host::FollowLinks follow) override {
    return wrap(real_.openDirectory(path, follow));
  }
  ErrorOrNil removeFile(const std::string& path) override {
    if (auto refusal = refusalToRemove(path)) return refusal;
    const auto before = real_.status(path, host::FollowLinks::No);
    return forget(before, real_.removeFile(path));
  }
  ErrorOrNil removeDirectory(const std::string& path) override {
    if (auto refusal = refusalToRemove(path)) return refusal;
    const auto before = real_.status(path, host::FollowLinks::No);
    return forget(before, real_.removeDirectory(path));
  }
  Result<std::string> readLink(const std::string& path) override { return real_.readLink(path); }
  Result<std::unique_ptr<host::FileContents>> loadFile(const std::string& path, std::uint64_t maximumSize) override {
    return real_.loadFile(path, maximumSize);
  }

 private:
  class Handle final : public host::DirectoryHandle {
   public:
    Handle(FlagOverlayFileSystem& overlay, std::unique_ptr<host::DirectoryHandle> real)
        : overlay_(overlay), real_(std::move(real)) {}

    Result<host::FileStatus> status() const override { return overlay_.withFlags(real_->status()); }
    Result<host::FileStatus> statusOf(const char* name, host::FollowLinks follow) const override {
      return overlay_.withFlags(real_->statusOf(name, follow));
    }
    Result<std::unique_ptr<host::DirectoryHandle>> openDirectory(const char* name,
                                                                 host::MountPoints mountPoints) const override {
      return overlay_.wrap(real_->openDirectory(name, mountPoints));
    }
    Result<std::unique_ptr<host::DirectoryHandle>> openParent() const override {
      return overlay_.wrap(real_->openParent());
    }
    Result<std::optional<host::DirectoryEntry>> next() override { return real_->next(); }
    void rewind() override { real_->rewind(); }
    std::uint64_t position() const noexcept override { return real_->position(); }
    void setPosition(std::uint64_t position) override { real_->setPosition(position); }
    ErrorOrNil setFlags(std::uint32_t flags) override { return overlay_.changeFlags(status(), flags); }
    ErrorOrNil setFlagsOf(const char* name, std::uint32_t flags, host::FollowLinks follow) override {
      return overlay_.changeFlags(statusOf(name, follow), flags);
    }
    ErrorOrNil removeFile(const char* name) override {
      if (auto refusal = overlay_.refusal(statusOf(name, host::FollowLinks::No), status())) return refusal;
      const auto before = real_->statusOf(name, host::FollowLinks::No);
      return overlay_.forget(before, real_->removeFile(name));
    }
    ErrorOrNil removeDirectory(const char* name) override {
      if (auto refusal = overlay_.refusal(statusOf(name, host::FollowLinks::No), status())) return refusal;
      const auto before = real_->statusOf(name, host::FollowLinks::No);
      return overlay_.forget(before, real_->removeDirectory(name));
    }

   private:
    FlagOverlayFileSystem& overlay_;
    std::unique_ptr<host::DirectoryHandle> real_;
  };

  using Identity = std::pair<std::uint64_t, std::uint64_t>;

  static constexpr std::uint32_t kKnownFlags = 0x1 | 0x2 | 0x4 | 0x80 | 0x20000 | 0x40000 | 0x80000 | 0x100000;
  static constexpr std::uint32_t kSystemFlags = 0xffff0000;
  static constexpr std::uint32_t kLocksContents = 0x2 | 0x4 | 0x80 | 0x20000 | 0x40000 | 0x80000;
  static constexpr std::uint32_t kLocksObject = kLocksContents | 0x100000;

  Result<std::unique_ptr<host::DirectoryHandle>> wrap(Result<std::unique_ptr<host::DirectoryHandle>> real) {
    if (!real) return real;
    return std::make_unique<Handle>(*this, std::move(*real));
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

  ErrorOrNil refusal(const Result<host::FileStatus>& object, const Result<host::FileStatus>& folder) const {
    if (!object) return object.error();
    const bool locked = (object->flags & kLocksObject) || (folder && (folder->flags & kLocksContents));
    return locked ? ErrorOrNil(Error::posix(posix::kNotPermitted)) : std::nullopt;
  }
  ErrorOrNil refusalToRemove(const std::string& path) {
    const auto parent = stringByDeletingLastPathComponent(path);
    return refusal(status(path, host::FollowLinks::No), status(parent.empty() ? "." : parent, host::FollowLinks::Yes));
  }

  // The inode number is soon another object's.
  ErrorOrNil forget(const Result<host::FileStatus>& removed, ErrorOrNil error) {
    if (!error && removed && (removed->isDirectory() || removed->links == 1)) {
      const std::lock_guard lock(mutex_);
      flags_.erase({removed->device, removed->inode});
    }
    return error;
  }

  host::FileSystem& real_;
  mutable std::mutex mutex_;
  std::map<Identity, std::uint32_t> flags_;
  std::atomic<unsigned> flagChanges_ = 0;
  ErrorOrNil flagChangeFailure_;
};

}  // namespace vantrell::tests
