// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/LinuxFirmwareVariables.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <optional>

#include <fcntl.h>
#include <linux/fs.h>
#include <linux/magic.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

#include "host/linux/FirmwareValueText.h"
#include "host/posix/FileDescriptor.h"

namespace vantrell::host {
namespace {

constexpr std::size_t kAttributesSize = 4;
// Non-volatile, boot service access, runtime access (UEFI's GetVariable), little-endian.
constexpr std::array<std::uint8_t, kAttributesSize> kNewAttributes = {0x07, 0, 0, 0};
constexpr std::size_t kLargestVariable = std::size_t{1} << 20;  // firmware stores some tens of kilobytes in all
constexpr std::size_t kGuidLength = 36;

// From IOKit's IOReturn.h.
constexpr auto ioReturn(std::uint32_t low) {
  return static_cast<DeviceReturnCode>(0xE0000000U | low);
}
constexpr auto kGeneralError = ioReturn(0x2BC);
constexpr auto kNoMemory = ioReturn(0x2BD);
constexpr auto kNotPrivileged = ioReturn(0x2C1);
constexpr auto kBadArgument = ioReturn(0x2C2);
constexpr auto kInputOutput = ioReturn(0x2CA);
constexpr auto kNotWritable = ioReturn(0x2CF);
constexpr auto kBusy = ioReturn(0x2D5);
constexpr auto kNoSpace = ioReturn(0x2DB);

DeviceReturnCode codeFromErrno(int number = errno) {
  switch (number) {
    case ENOMEM:
      return kNoMemory;
    case EPERM:
    case EACCES:
      return kNotPrivileged;
    case EINVAL:
    case ENAMETOOLONG:
    case ENOENT:
      return kBadArgument;
    case EROFS:
      return kNotWritable;
    case EBUSY:
      return kBusy;
    case ENOSPC:
    case EFBIG:
      return kNoSpace;
    case EIO:
      return kInputOutput;
    default:
      return kGeneralError;
  }
}

bool isGuid(std::string_view text) {
  if (text.size() != kGuidLength) return false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool isDash = i == 8 || i == 13 || i == 18 || i == 23;
    const char character = text[i];
    const bool isDigit = (character >= '0' && character <= '9') || (character >= 'a' && character <= 'f') ||
                         (character >= 'A' && character <= 'F');
    if (isDash ? character != '-' : !isDigit) return false;
  }
  return true;
}

struct VariableFile {
  std::string name;
  FirmwareVariableOwner owner;
};

std::optional<VariableFile> fileOf(std::string_view variable) {
  if (variable.empty() || variable.find_first_of(std::string_view("/\0", 2)) != std::string_view::npos)
    return std::nullopt;
  std::string name(variable);
  if (name.size() < kGuidLength + 2 || name[name.size() - kGuidLength - 1] != '-' ||
      !isGuid(std::string_view(name).substr(name.size() - kGuidLength)))
    name.append("-").append(kVendorVariableGuid);
  // The file system compares the GUID without regard to case and shows it in lower case.
  const auto guid = name.end() - static_cast<std::ptrdiff_t>(kGuidLength);
  std::transform(guid, name.end(), guid, [](char c) { return c >= 'A' && c <= 'F' ? static_cast<char>(c | 0x20) : c; });
  const bool isOwn = name.ends_with(kVendorVariableGuid);
  return VariableFile{std::move(name), isOwn ? FirmwareVariableOwner::Vendor : FirmwareVariableOwner::Other};
}

/// Takes the immutable flag, by which the file system guards most variables against `rm -rf`, off a file, and puts it
/// back at the end.
class UnprotectedFile {
 public:
  UnprotectedFile(int folder, const std::string& name)
      : file_(openat(folder, name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC)) {
    if (!file_ || ioctl(file_.get(), FS_IOC_GETFLAGS, &flags_) != 0 || (flags_ & FS_IMMUTABLE_FL) == 0) return;
    wasProtected_ = setFlags(flags_ & ~FS_IMMUTABLE_FL);
  }
  UnprotectedFile(const UnprotectedFile&) = delete;
  UnprotectedFile& operator=(const UnprotectedFile&) = delete;
  ~UnprotectedFile() {
    if (wasProtected_) setFlags(flags_);
  }

 private:
  bool setFlags(int flags) { return ioctl(file_.get(), FS_IOC_SETFLAGS, &flags) == 0; }

  FileDescriptor file_;
  int flags_ = 0;
  bool wasProtected_ = false;
};

/// Attributes and value, or nothing, with the reason in errno. One reading: the file system makes each of one moment.
std::optional<Data> read(int folder, const std::string& name) {
  const FileDescriptor file(openat(folder, name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
  struct stat status;
  if (!file || fstat(file.get(), &status) != 0) return std::nullopt;
  if (!S_ISREG(status.st_mode)) {
    errno = EINVAL;
    return std::nullopt;
  }
  Data content(std::clamp<std::size_t>(static_cast<std::size_t>(status.st_size), kAttributesSize, kLargestVariable));
  ssize_t count = 0;
  do {
    count = pread(file.get(), content.data(), content.size(), 0);
  } while (count < 0 && errno == EINTR);
  if (count < 0) return std::nullopt;
  content.resize(static_cast<std::size_t>(count));
  return content;
}

/// Attributes and value go in one write, which the file system hands to the firmware as one variable.
DeviceReturnCode write(int file, const Data& content) {
  ssize_t count = 0;
  do {
    count = pwrite(file, content.data(), content.size(), 0);
  } while (count < 0 && errno == EINTR);
  if (count < 0) return codeFromErrno();
  if (static_cast<std::size_t>(count) != content.size()) return kInputOutput;
  // The firmware has replaced the value by now, whatever its size was; a plain folder keeps the end of a longer one.
  struct stat status;
  if (fstat(file, &status) == 0 && static_cast<std::size_t>(status.st_size) > content.size() &&
      ftruncate(file, static_cast<off_t>(content.size())) != 0)
    return codeFromErrno();
  return kDeviceSuccess;
}

class EfiVariables final : public FirmwareOptions {
 public:
  explicit EfiVariables(FileDescriptor folder) : folder_(std::move(folder)) {}

  std::optional<Value> value(std::string_view name) override {
    const auto file = fileOf(name);
    if (!file) return std::nullopt;
    const auto content = read(folder_.get(), file->name);
    if (!content || content->size() < kAttributesSize) return std::nullopt;
    return valueFromFirmwareBytes(DataView(*content).subspan(kAttributesSize), file->owner);
  }

  DeviceReturnCode setValue(std::string_view name, const Value& value) override {
    const auto file = fileOf(name);
    if (!file) return kBadArgument;
    const auto before = read(folder_.get(), file->name);
    if (before) return replace(*file, *before, value);
    if (errno != ENOENT) return codeFromErrno();
    return create(*file, value);
  }

 private:
  // A file without so much as attributes is a variable that someone began to make and did not write.
  DeviceReturnCode replace(const VariableFile& file, const Data& before, const Value& value) {
    std::optional<Data> oldValue;
    Data content(kNewAttributes.begin(), kNewAttributes.end());
    if (before.size() >= kAttributesSize) {
      content.assign(before.begin(), before.begin() + kAttributesSize);
      oldValue.emplace(before.begin() + kAttributesSize, before.end());
    }
    append(content, firmwareBytesFromValue(value, oldValue, file.owner));
    const UnprotectedFile unprotected(folder_.get(), file.name);
    const FileDescriptor target(openat(folder_.get(), file.name.c_str(), O_WRONLY | O_NOFOLLOW | O_CLOEXEC));
    return target ? write(target.get(), content) : codeFromErrno();
  }

  DeviceReturnCode create(const VariableFile& file, const Value& value) {
    const FileDescriptor target(
        openat(folder_.get(), file.name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0644));
    if (!target) return codeFromErrno();
    Data content(kNewAttributes.begin(), kNewAttributes.end());
    append(content, firmwareBytesFromValue(value, std::nullopt, file.owner));
    const auto code = write(target.get(), content);
    if (code != kDeviceSuccess) unlinkat(folder_.get(), file.name.c_str(), 0);
    return code;
  }

  static void append(Data& content, const Data& bytes) { content.insert(content.end(), bytes.begin(), bytes.end()); }

  FileDescriptor folder_;
};

}  // namespace

std::unique_ptr<FirmwareOptions> LinuxFirmwareVariables::options() {
  FileDescriptor folder(open(folder_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  // The empty folder that the kernel keeps for the mount is none of its own.
  struct statfs fileSystem;
  if (!folder || fstatfs(folder.get(), &fileSystem) != 0 || fileSystem.f_type == SYSFS_MAGIC) return nullptr;
  return std::make_unique<EfiVariables>(std::move(folder));
}

}  // namespace vantrell::host
