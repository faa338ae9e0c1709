// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include <dirent.h>
#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include "foundation/Data.h"
#include "host/posix/FileDescriptor.h"

namespace vantrell::tests {

inline constexpr char kShell[] = "/bin/sh";

/// A shell's arguments for one line of script.
inline std::vector<std::string> script(const std::string& line) {
  return {"-c", line};
}

/// One piece of output: the stream and its bytes.
struct Piece {
  bool isError;
  std::string bytes;

  bool operator==(const Piece&) const = default;
};

/// What came through both streams, in the order in which it came. Safe from any thread.
class OutputRecord {
 public:
  void add(DataView bytes, bool isError) {
    const std::lock_guard lock(mutex_);
    pieces_.push_back({isError, std::string(textOf(bytes))});
  }
  std::vector<Piece> pieces() const {
    const std::lock_guard lock(mutex_);
    return pieces_;
  }
  std::string text(bool ofError) const {
    std::string all;
    for (const auto& piece : pieces())
      if (piece.isError == ofError) all += piece.bytes;
    return all;
  }
  /// Each stream ended with its only empty piece.
  bool eachStreamEndedOnce() const {
    std::map<bool, std::pair<int, bool>> ends;  // how many empty pieces, and whether the last one was
    for (const auto& piece : pieces()) {
      ends[piece.isError].first += piece.bytes.empty();
      ends[piece.isError].second = piece.bytes.empty();
    }
    return ends[false] == std::pair(1, true) && ends[true] == std::pair(1, true);
  }

 private:
  mutable std::mutex mutex_;
  std::vector<Piece> pieces_;
};

/// While this lives, only so many descriptors can be had. UndefinedBehaviorSanitizer needs two for its check of an
/// object's type, the first time it meets the type.
class DescriptorsLeft {
 public:
  explicit DescriptorsLeft(std::size_t count) {
    getrlimit(RLIMIT_NOFILE, &before_);
    auto limit = before_;
    limit.rlim_cur = 64;
    setrlimit(RLIMIT_NOFILE, &limit);
    for (;;) {
      host::FileDescriptor descriptor(open("/dev/null", O_RDONLY | O_CLOEXEC));
      if (!descriptor) break;
      taken_.push_back(std::move(descriptor));
    }
    taken_.resize(taken_.size() - std::min(taken_.size(), count));
  }
  DescriptorsLeft(const DescriptorsLeft&) = delete;
  DescriptorsLeft& operator=(const DescriptorsLeft&) = delete;
  ~DescriptorsLeft() { setrlimit(RLIMIT_NOFILE, &before_); }

 private:
  rlimit before_{};
  std::vector<host::FileDescriptor> taken_;
};

/// How many descriptors this process has open.
inline std::size_t openDescriptors() {
  std::size_t count = 0;
  auto* folder = opendir("/dev/fd");
  while (readdir(folder)) ++count;
  closedir(folder);
  return count;
}

}  // namespace vantrell::tests
