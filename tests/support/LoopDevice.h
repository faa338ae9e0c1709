// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cerrno>
#include <string>
#include <system_error>

#include <fcntl.h>
#include <linux/loop.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace vantrell::tests {

/// A block device whose contents are a file's, until the end of the scope. Takes root. Throws std::system_error where
/// the system has none to give.
class LoopDevice {
 public:
  explicit LoopDevice(const std::string& backingFile, unsigned blockSize = 512) {
    const int control = open("/dev/loop-control", O_RDWR | O_CLOEXEC);
    require(control >= 0, "/dev/loop-control");
    const int backing = open(backingFile.c_str(), O_RDWR | O_CLOEXEC);
    loop_config configuration{};
    configuration.fd = static_cast<unsigned>(backing);
    configuration.block_size = blockSize;
    // Somebody else may take the free one that we are told of.
    for (int tries = 0; backing >= 0 && device_ < 0 && tries < 20; ++tries) {
      const int number = ioctl(control, LOOP_CTL_GET_FREE);
      if (number < 0) break;
      path_ = "/dev/loop" + std::to_string(number);
      device_ = open(path_.c_str(), O_RDWR | O_CLOEXEC);
      if (device_ < 0) break;
      if (ioctl(device_, LOOP_CONFIGURE, &configuration) == 0) break;
      error_ = errno;
      close(device_);
      device_ = -1;
      if (error_ != EBUSY) break;
    }
    if (error_ == 0) error_ = errno;
    close(control);
    close(backing);
    errno = error_;
    require(device_ >= 0, "a loop device");
  }
  LoopDevice(const LoopDevice&) = delete;
  LoopDevice& operator=(const LoopDevice&) = delete;
  ~LoopDevice() {
    ioctl(device_, LOOP_CLR_FD, 0);
    close(device_);
  }

  const std::string& path() const noexcept { return path_; }
  /// "loop3", for what takes names below /dev.
  std::string name() const { return path_.substr(5); }

 private:
  static void require(bool succeeded, const std::string& what) {
    if (!succeeded) throw std::system_error(errno, std::system_category(), what);
  }

  std::string path_;
  int device_ = -1;
  int error_ = 0;
};

}  // namespace vantrell::tests
