// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include "foundation/FileManager.h"
#include "foundation/Log.h"
#include "foundation/PosixCodes.h"
#include "host/linux/LinuxFileSystem.h"
#include "tests/support/RecordingLog.h"
#include "tests/support/RunProgram.h"
#include "tests/support/TemporaryFolder.h"
#include "treewalk/PermissionOperations.h"

namespace vantrell::tests {

inline const std::string kOperationDomain = VANTRELL_VENDOR_DOMAIN_PREFIX ".error.privileged-operation";

// What the tools and the kernel say, past all code under test.

inline void setfacl(const std::vector<std::string>& arguments) {
  const auto result = runProgram("/usr/bin/setfacl", arguments);
  if (result.status != 0) throw std::runtime_error("setfacl: " + result.error);
}
/// Entries with numeric identifiers, one a line, joined by commas: "user::rw-,group::r--,other::r--".
inline std::string getfacl(const std::string& path) {
  const auto result = runProgram("/usr/bin/getfacl", {"-n", "-c", "-E", "-p", path});
  std::string text;
  for (const char character : result.output) {
    if (character != '\n') {
      text += character;
    } else if (!text.empty() && text.back() != ',') {
      text += ',';
    }
  }
  while (!text.empty() && text.back() == ',') text.pop_back();
  return text;
}
inline std::optional<std::string> attribute(const std::string& path, const char* name) {
  std::string value(1024, '\0');
  const ssize_t count = lgetxattr(path.c_str(), name, value.data(), value.size());
  if (count < 0) return std::nullopt;
  value.resize(static_cast<std::size_t>(count));
  return value;
}
inline bool hasAccessList(const std::string& path) {
  return attribute(path, "system.posix_acl_access").has_value();
}
inline bool hasDefaultList(const std::string& path) {
  return attribute(path, "system.posix_acl_default").has_value();
}
inline struct stat statusOf(const std::string& path) {
  struct stat status {};
  if (lstat(path.c_str(), &status) != 0) throw std::runtime_error("no status of " + path);
  return status;
}
inline unsigned modeOf(const std::string& path) {
  return statusOf(path).st_mode & 07777;
}
inline void setMode(const std::string& path, unsigned mode) {
  if (chmod(path.c_str(), mode) != 0) throw std::runtime_error("no mode for " + path);
}
inline void setOwner(const std::string& path, unsigned owner, unsigned group) {
  if (lchown(path.c_str(), owner, group) != 0) throw std::runtime_error("no owner for " + path);
}

class RecordingFeedback final : public QELPrivilegedOperationFeedbackProtocol {
 public:
  void processPrivilegedOperationFeedback(const Dictionary& message) override { messages.push_back(message); }
  std::vector<Dictionary> messages;
};

inline std::vector<Dictionary> progress(const std::vector<double>& fractions) {
  std::vector<Dictionary> messages;
  for (const double fraction : fractions) messages.push_back({{"ProgressFraction", fraction}});
  return messages;
}

/// Real objects and lists; which takes root.
class PropagationFixture : public testing::Test {
 protected:
  static constexpr unsigned kOwner = 1234;
  static constexpr unsigned kGroup = 2345;

  void SetUp() override {
    if (geteuid() != 0) GTEST_SKIP() << "only root may give objects away";
    umask(022);
    top_ = folder_.makeFolder("top");
    setMode(top_, 0755);
  }

  std::string makeFile(const std::string& name, unsigned mode = 0644) {
    const auto path = folder_.makeFile("top/" + name);
    setMode(path, mode);
    return path;
  }
  std::string makeFolder(const std::string& name, unsigned mode = 0755) {
    const auto path = folder_.makeFolder("top/" + name);
    setMode(path, mode);
    return path;
  }
  std::string path(const std::string& name) const { return top_ + "/" + name; }

  ErrorOrNil propagate(unsigned options, std::uint64_t expected = 1) { return propagateIn(top_, options, expected); }
  ErrorOrNil propagateIn(const std::string& folder, unsigned options, std::uint64_t expected = 1) {
    return operations_.propPermissions({folder, expected, options}, &feedback_,
                                       [this] { return looks_++ >= cancelAfter_; });
  }

  Error operationError(std::int64_t code, const char* description, const char* suggestion, const std::string& path,
                       const Error& underlying) const {
    return {kOperationDomain, code,
            Dictionary{{"NSLocalizedDescription", description},
                       {"NSLocalizedRecoverySuggestion", suggestion},
                       {"NSFilePath", path},
                       {"NSUnderlyingError", underlying}}};
  }
  Error error12(const std::string& path, std::int64_t posixCode = posix::kNotPermitted) const {
    return operationError(12, "An Access Control List could not be set.",
                          "The operating system was unable to change the rights for a file system object via an Access "
                          "Control List.",
                          path, Error::posix(posixCode));
  }
  Error error14(const std::string& path, std::int64_t posixCode = posix::kNotPermitted) const {
    return operationError(14, "It was not possible to change the owner of a file system object.",
                          "The operating system was unable to set a new owner for a file and folder.", path,
                          Error::posix(posixCode));
  }
  Error error15(const std::string& path, std::int64_t posixCode = posix::kNotPermitted) const {
    return operationError(15, "It was not possible to change the POSIX permissions of a file system object.",
                          "The operating system was unable to establish new permission settings for a file or folder.",
                          path, Error::posix(posixCode));
  }
  Error error22(const std::string& path, const Error& underlying) const {
    return operationError(22, "A folder could not be read.",
                          "This folder may be shielded by System Integrity Protection.", path, underlying);
  }
  Error error23(const std::string& path, std::int64_t posixCode) const {
    return operationError(23, "The Access Control List (ACL) of a file system object could not be read.",
                          "Please check whether this volume supports ACLs and whether the object can be read by an "
                          "absolute path with acceptable length.",
                          path, Error::posix(posixCode));
  }
  static Error guardError(const std::string& path) {
    return {std::string(kPosixErrorDomain), posix::kInvalidArgument, Dictionary{{"NSFilePath", path}}};
  }

  host::LinuxFileSystem fileSystem_;
  FileManager fileManager_{fileSystem_};
  RecordingLog log_;
  PermissionOperations operations_{fileSystem_, fileManager_, Log(log_)};
  RecordingFeedback feedback_;
  int looks_ = 0;
  int cancelAfter_ = 1'000'000;  // that many looks, each of which says no
  TemporaryFolder folder_;
  std::string top_;
};

}  // namespace vantrell::tests
