// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <algorithm>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "foundation/Data.h"
#include "foundation/PosixCodes.h"
#include "host/StorageDevices.h"

namespace vantrell::tests {

/// Devices in memory, by path.
class FakeStorageDevices final : public host::StorageDevices {
 public:
  struct Contents {
    Data bytes;
    std::optional<std::uint64_t> failingBlock = {};  // the first that can't be written
    ErrorOrNil failure = {};
  };

  Result<std::unique_ptr<host::StorageDevice>> openForWriting(const std::string& path) override {
    openedPaths.push_back(path);
    if (path.contains('\0')) return posixFailure(posix::kInvalidArgument);
    const auto found = devices.find(path);
    if (found == devices.end()) return posixFailure(posix::kNoEntry);
    return std::make_unique<Device>(found->second);
  }

  std::map<std::string, Contents> devices;
  std::vector<std::string> openedPaths;

 private:
  class Device final : public host::StorageDevice {
   public:
    explicit Device(Contents& contents) : contents_(contents) {}
    ErrorOrNil writeZeroBlocks(std::uint64_t count) override {
      for (std::uint64_t block = 0; block < count; ++block) {
        if (block == contents_.failingBlock) return contents_.failure;
        if (block * kBlockSize >= contents_.bytes.size()) return Error::posix(posix::kNoSpace);
        const auto begin = contents_.bytes.begin() + static_cast<std::ptrdiff_t>(block * kBlockSize);
        std::fill_n(begin, std::min<std::ptrdiff_t>(kBlockSize, contents_.bytes.end() - begin), std::uint8_t{0});
      }
      return std::nullopt;
    }

   private:
    Contents& contents_;
  };
};

}  // namespace vantrell::tests
