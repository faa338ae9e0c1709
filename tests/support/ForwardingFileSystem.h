// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "host/FileSystem.h"

// File systems and handles that hand everything on to real ones. A fake overrides what it wants otherwise.
namespace vantrell::tests {

class ForwardingObjectHandle : public host::ObjectHandle {
 public:
  explicit ForwardingObjectHandle(std::unique_ptr<host::ObjectHandle> real) : real_(std::move(real)) {}

  Result<host::FileStatus> status() const override { return real_->status(); }
  Result<std::uint16_t> ownPermissions(const host::FileStatus& status) const override {
    return real_->ownPermissions(status);
  }
  Result<std::unique_ptr<host::DirectoryHandle>> openDirectory() const override { return real_->openDirectory(); }
  ErrorOrNil setOwner(std::optional<std::uint32_t> owner, std::optional<std::uint32_t> group) override {
    return real_->setOwner(owner, group);
  }
  ErrorOrNil setPermissions(std::uint16_t permissions) override { return real_->setPermissions(permissions); }
  ErrorOrNil setFlags(std::uint32_t flags) override { return real_->setFlags(flags); }
  ErrorOrNil setTimes(std::optional<Date> accessed, std::optional<Date> modified) override {
    return real_->setTimes(accessed, modified);
  }
  ErrorOrNil touch() override { return real_->touch(); }
  Result<std::vector<std::string>> extendedAttributeNames(host::FSCompression compression) const override {
    return real_->extendedAttributeNames(compression);
  }
  Result<Data> extendedAttribute(const std::string& name) const override { return real_->extendedAttribute(name); }
  ErrorOrNil setExtendedAttribute(const std::string& name, DataView value) override {
    return real_->setExtendedAttribute(name, value);
  }
  ErrorOrNil removeExtendedAttribute(const std::string& name, host::FSCompression compression) override {
    return real_->removeExtendedAttribute(name, compression);
  }
  Result<std::unique_ptr<host::AccessControlList>> accessControlList() const override {
    return real_->accessControlList();
  }
  ErrorOrNil setAccessControlList(const host::AccessControlList* list) override {
    return real_->setAccessControlList(list);
  }

 protected:
  host::ObjectHandle& real() const noexcept { return *real_; }

 private:
  std::unique_ptr<host::ObjectHandle> real_;
};

class ForwardingDirectoryHandle : public host::DirectoryHandle {
 public:
  explicit ForwardingDirectoryHandle(std::unique_ptr<host::DirectoryHandle> real) : real_(std::move(real)) {}

  Result<host::FileStatus> status() const override { return real_->status(); }
  Result<host::FileStatus> statusOf(const char* name, host::FollowLinks follow) const override {
    return real_->statusOf(name, follow);
  }
  Result<std::unique_ptr<host::ObjectHandle>> openObject(const char* name, host::FollowLinks follow) const override {
    return real_->openObject(name, follow);
  }
  Result<std::unique_ptr<host::DirectoryHandle>> openDirectory(const char* name,
                                                               host::MountPoints mountPoints) const override {
    return real_->openDirectory(name, mountPoints);
  }
  Result<std::unique_ptr<host::DirectoryHandle>> openParent() const override { return real_->openParent(); }
  Result<std::optional<host::DirectoryEntry>> next() override { return real_->next(); }
  void rewind() override { real_->rewind(); }
  std::uint64_t position() const noexcept override { return real_->position(); }
  void setPosition(std::uint64_t position) override { real_->setPosition(position); }
  ErrorOrNil setFlags(std::uint32_t flags) override { return real_->setFlags(flags); }
  ErrorOrNil setFlagsOf(const char* name, std::uint32_t flags, host::FollowLinks follow) override {
    return real_->setFlagsOf(name, flags, follow);
  }
  ErrorOrNil removeFile(const char* name) override { return real_->removeFile(name); }
  ErrorOrNil removeDirectory(const char* name) override { return real_->removeDirectory(name); }
  Result<std::string> readLinkOf(const char* name) const override { return real_->readLinkOf(name); }
  Result<std::unique_ptr<host::FileReader>> openFile(const char* name) const override { return real_->openFile(name); }
  Result<std::unique_ptr<host::FileWriter>> createFile(const char* name, std::uint16_t permissions) override {
    return real_->createFile(name, permissions);
  }
  ErrorOrNil makeDirectory(const char* name, std::uint16_t permissions) override {
    return real_->makeDirectory(name, permissions);
  }
  ErrorOrNil makeSymbolicLink(const char* name, const std::string& target) override {
    return real_->makeSymbolicLink(name, target);
  }
  ErrorOrNil makeSpecialFile(const char* name, const host::FileStatus& like) override {
    return real_->makeSpecialFile(name, like);
  }
  ErrorOrNil makeLink(const char* name, const host::DirectoryHandle& sourceFolder, const char* sourceName) override {
    return real_->makeLink(name, realOf(sourceFolder), sourceName);
  }
  ErrorOrNil rename(const char* name, host::DirectoryHandle& destination, const char* newName) override {
    return real_->rename(name, realOf(destination), newName);
  }
  ErrorOrNil setOwnerOf(const char* name, std::optional<std::uint32_t> owner,
                        std::optional<std::uint32_t> group) override {
    return real_->setOwnerOf(name, owner, group);
  }
  ErrorOrNil setPermissionsOf(const char* name, std::uint16_t permissions) override {
    return real_->setPermissionsOf(name, permissions);
  }
  Result<std::uint16_t> ownPermissionsOf(const char* name, const host::FileStatus& status) const override {
    return real_->ownPermissionsOf(name, status);
  }
  Result<std::unique_ptr<host::AccessControlList>> accessControlListOf(const char* name) const override {
    return real_->accessControlListOf(name);
  }
  ErrorOrNil setAccessControlListOf(const char* name, const host::AccessControlList* list) override {
    return real_->setAccessControlListOf(name, list);
  }
  Result<std::unique_ptr<host::AccessControlList>> inheritedAccessControlListOf(const char* name) const override {
    return real_->inheritedAccessControlListOf(name);
  }
  ErrorOrNil synchronize() override { return real_->synchronize(); }

 protected:
  host::DirectoryHandle& real() const noexcept { return *real_; }

  /// What stands behind another handle of such a file system: the real one takes none but its own kind.
  static host::DirectoryHandle& realOf(host::DirectoryHandle& handle) noexcept {
    const auto* forwarding = dynamic_cast<const ForwardingDirectoryHandle*>(&handle);
    return forwarding ? forwarding->real() : handle;
  }
  static const host::DirectoryHandle& realOf(const host::DirectoryHandle& handle) noexcept {
    const auto* forwarding = dynamic_cast<const ForwardingDirectoryHandle*>(&handle);
    return forwarding ? forwarding->real() : handle;
  }

 private:
  std::unique_ptr<host::DirectoryHandle> real_;
};

class ForwardingFileSystem : public host::FileSystem {
 public:
  explicit ForwardingFileSystem(host::FileSystem& real) noexcept : real_(real) {}

  Result<host::FileStatus> status(const std::string& path, host::FollowLinks follow) override {
    return real_.status(path, follow);
  }
  ErrorOrNil setFlags(const std::string& path, std::uint32_t flags, host::FollowLinks follow) override {
    return real_.setFlags(path, flags, follow);
  }
  Result<std::unique_ptr<host::DirectoryHandle>> openDirectory(const std::string& path,
                                                               host::FollowLinks follow) override {
    return real_.openDirectory(path, follow);
  }
  Result<host::Location> locate(const std::string& path) override { return real_.locate(path); }
  Result<std::unique_ptr<host::ObjectHandle>> openObject(const std::string& path, host::FollowLinks follow) override {
    return real_.openObject(path, follow);
  }
  const char* finderInfoAttributeName() const noexcept override { return real_.finderInfoAttributeName(); }
  Result<std::unique_ptr<host::AccessControlList>> accessControlListFromExternalForm(DataView bytes) override {
    return real_.accessControlListFromExternalForm(bytes);
  }
  ErrorOrNil removeFile(const std::string& path) override { return real_.removeFile(path); }
  ErrorOrNil removeDirectory(const std::string& path) override { return real_.removeDirectory(path); }
  Result<std::string> readLink(const std::string& path) override { return real_.readLink(path); }
  Result<std::unique_ptr<host::FileContents>> loadFile(const std::string& path, std::uint64_t maximumSize) override {
    return real_.loadFile(path, maximumSize);
  }

 protected:
  host::FileSystem& real() const noexcept { return real_; }

 private:
  host::FileSystem& real_;
};

}  // namespace vantrell::tests
