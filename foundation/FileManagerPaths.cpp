// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <algorithm>
#include <cstddef>
#include <string_view>
#include <utility>

#include "foundation/FileManager.h"
#include "foundation/PathUtilities.h"
#include "foundation/PosixCodes.h"

namespace vantrell {
namespace {

constexpr unsigned kMaximumLinks = 40;  // as the kernel's own bound

// The components of a path one after the other, without copying what is left each time: links can make it long.
class ComponentReader {
 public:
  explicit ComponentReader(std::string path) : path_(std::move(path)) {}

  /// Empty at the end.
  std::string_view next() {
    start_ = std::min(path_.find_first_not_of('/', end_), path_.size());
    end_ = std::min(path_.find('/', start_), path_.size());
    return std::string_view(path_).substr(start_, end_ - start_);
  }
  /// The last component read, and all after it.
  std::string_view rest() const { return std::string_view(path_).substr(start_); }
  /// What a link says in place of the last component read.
  void replaceLast(const std::string& target) {
    path_ = target + path_.substr(end_);
    end_ = 0;
  }

 private:
  std::string path_;
  std::size_t start_ = 0;
  std::size_t end_ = 0;
};

// Foundation's list.
bool liesInUnwrittenFolder(std::string_view path, std::string_view folder) {
  if (!path.starts_with(folder)) return false;
  path.remove_prefix(folder.size());
  for (const std::string_view name : {"/etc", "/tmp", "/var"}) {
    if (path.starts_with(name) && (path.size() == name.size() || path[name.size()] == '/')) return true;
  }
  return false;
}

}  // namespace

std::string FileManager::stringByResolvingSymlinksInPath(const std::string& path) {
  if (path.empty() || path.front() != '/') return path;
  auto resolved = resolvedPath(path);
  const auto prefix = fileSystem_.unwrittenFolder();
  if (prefix.empty() || !liesInUnwrittenFolder(resolved, prefix)) return resolved;
  auto written = resolved.substr(prefix.size());
  return fileSystem_.status(written, host::FollowLinks::Yes) ? written : resolved;
}

std::string FileManager::resolvedPath(const std::string& path) {
  std::string resolved = "/";
  ComponentReader reader(path);
  unsigned links = 0;
  for (;;) {
    const auto component = reader.next();
    if (component.empty()) return resolved;
    if (component == ".") continue;
    if (component == "..") {
      resolved = stringByDeletingLastPathComponent(resolved);
      continue;
    }
    auto candidate = stringByAppendingPathComponent(resolved, component);
    const auto target = fileSystem_.readLink(candidate);
    if (target && !target->empty() && ++links <= kMaximumLinks) {
      if (target->front() == '/') resolved = "/";
      reader.replaceLast(*target);
    } else if (!target && target.error().isPosix(posix::kInvalidArgument)) {
      resolved = std::move(candidate);  // exists and is no link
    } else {
      return stringByAppendingPathComponent(resolved, reader.rest());
    }
  }
}

}  // namespace vantrell
