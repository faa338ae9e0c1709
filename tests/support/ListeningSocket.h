// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdlib>
#include <cstring>
#include <string>
#include <utility>

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace vantrell::tests {

/// A Unix stream socket that listens in a folder of its own, both removed in the end.
class ListeningSocket {
 public:
  ListeningSocket() {
    std::string folder = "/tmp/vantrell-test-XXXXXX";
    if (!mkdtemp(folder.data())) {
      ADD_FAILURE() << "mkdtemp: " << std::strerror(errno);
      return;
    }
    folder_ = folder;
    path_ = folder_ + "/socket";
    address_ = "unix:path=" + path_;
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path_.copy(address.sun_path, sizeof address.sun_path - 1);
    descriptor_ = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (descriptor_ < 0 || bind(descriptor_, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 ||
        listen(descriptor_, SOMAXCONN) != 0) {
      ADD_FAILURE() << "listening socket: " << std::strerror(errno);
    }
  }
  ListeningSocket(const ListeningSocket&) = delete;
  ListeningSocket& operator=(const ListeningSocket&) = delete;
  ~ListeningSocket() {
    if (descriptor_ >= 0) close(descriptor_);
    if (!path_.empty()) unlink(path_.c_str());
    if (!folder_.empty()) rmdir(folder_.c_str());
  }

  int descriptor() const { return descriptor_; }
  /// Hands the descriptor over.
  int release() { return std::exchange(descriptor_, -1); }
  const std::string& path() const { return path_; }
  const std::string& folder() const { return folder_; }
  const std::string& address() const { return address_; }

 private:
  std::string folder_;
  std::string path_;
  std::string address_;
  int descriptor_ = -1;
};

}  // namespace vantrell::tests
