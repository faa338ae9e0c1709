// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <system_error>

namespace vantrell::tests {

/// A disk in memory, of blocks of 512 bytes, until the end of the scope. Takes root for writing. Throws
/// std::system_error where the system has none to give.
class RamDisk {
 public:
  explicit RamDisk(std::uint64_t blocks) : path_(attach(blocks)) {
    if (!path_.starts_with("/dev/disk")) throw std::system_error(ENODEV, std::system_category(), "a disk in memory");
  }
  RamDisk(const RamDisk&) = delete;
  RamDisk& operator=(const RamDisk&) = delete;
  ~RamDisk() { static_cast<void>(std::system(("hdiutil detach -quiet -force " + path_).c_str())); }

  const std::string& path() const noexcept { return path_; }
  /// The same disk past the kernel's cache.
  std::string rawPath() const { return "/dev/r" + path_.substr(5); }

 private:
  static std::string attach(std::uint64_t blocks) {
    std::FILE* const program = popen(("hdiutil attach -nomount ram://" + std::to_string(blocks)).c_str(), "r");
    if (program == nullptr) return {};
    std::array<char, 256> line{};
    const char* const read = std::fgets(line.data(), static_cast<int>(line.size()), program);
    pclose(program);
    const std::string text = read ? read : "";
    return text.substr(0, text.find_first_of(" \t\n"));
  }

  std::string path_;
};

}  // namespace vantrell::tests
