// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/ForwardingFileSystem.h"

namespace vantrell::tests {

/// A real file system in which some fixed paths lie somewhere else. Notes which folders among them were opened.
class RedirectedFileSystem final : public ForwardingFileSystem {
 public:
  RedirectedFileSystem(host::FileSystem& real, std::map<std::string, std::string> places)

      : ForwardingFileSystem(real), places_(std::move(places)) {}

  void failOpening(const std::string& path, Error error) { failures_.insert_or_assign(path, std::move(error)); }
  const std::vector<std::string>& foldersOpened() const { return opened_; }

  Result<host::FileStatus> status(const std::string& path, host::FollowLinks follow) override {
    return real().status(placeOf(path), follow);
  }
  ErrorOrNil setFlags(const std::string& path, std::uint32_t flags, host::FollowLinks follow) override {
    return real().setFlags(placeOf(path), flags, follow);
  }
  Result<std::unique_ptr<host::DirectoryHandle>> openDirectory(const std::string& path,
                                                               host::FollowLinks follow) override {
    if (places_.contains(path)) opened_.push_back(path);
    if (const auto failing = failures_.find(path); failing != failures_.end()) return failure(failing->second);
    return real().openDirectory(placeOf(path), follow);
  }
  Result<host::Location> locate(const std::string& path) override { return real().locate(placeOf(path)); }
  Result<std::unique_ptr<host::ObjectHandle>> openObject(const std::string& path, host::FollowLinks follow) override {
    return real().openObject(placeOf(path), follow);
  }
  ErrorOrNil removeFile(const std::string& path) override { return real().removeFile(placeOf(path)); }
  ErrorOrNil removeDirectory(const std::string& path) override { return real().removeDirectory(placeOf(path)); }
  Result<std::string> readLink(const std::string& path) override { return real().readLink(placeOf(path)); }
  Result<std::unique_ptr<host::FileContents>> loadFile(const std::string& path, std::uint64_t maximumSize) override {
    return real().loadFile(placeOf(path), maximumSize);
  }

 private:
  const std::string& placeOf(const std::string& path) const {
    const auto place = places_.find(path);
    return place == places_.end() ? path : place->second;
  }

  std::map<std::string, std::string> places_;
  std::map<std::string, Error> failures_;
  std::vector<std::string> opened_;
};

}  // namespace vantrell::tests
