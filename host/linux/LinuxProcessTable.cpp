// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/LinuxProcessTable.h"

#include <array>
#include <cerrno>
#include <charconv>
#include <memory>
#include <string_view>
#include <utility>

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include "foundation/PosixCodes.h"
#include "host/posix/ErrorNumbers.h"
#include "host/posix/FileDescriptor.h"

namespace vantrell::host {
namespace {

constexpr std::size_t kNameLength = 15;  // the kernel's TASK_COMM_LEN without the final zero byte

struct FolderCloser {
  void operator()(DIR* folder) const noexcept { closedir(folder); }
};
using Folder = std::unique_ptr<DIR, FolderCloser>;

template <class T>
std::optional<T> numberFrom(std::string_view text) {
  T number{};
  const auto [end, problem] = std::from_chars(text.data(), text.data() + text.size(), number);
  return problem == std::errc() && end == text.data() + text.size() ? std::optional(number) : std::nullopt;
}

// The kernel writes a line break in a name as "\n" and a backslash as two, so that a name can't pretend to be a line.
// It appends to the names of its own worker threads what they are busy with; that is no part of the name.
std::string nameFrom(std::string_view escaped) {
  std::string name;
  for (std::size_t i = 0; i < escaped.size() && name.size() < kNameLength; ++i) {
    if (escaped[i] == '\\' && i + 1 < escaped.size()) {
      ++i;
      name += escaped[i] == 'n' ? '\n' : escaped[i];
    } else {
      name += escaped[i];
    }
  }
  return name;
}

/// The lines at the start of a process's status, which is where all that is wanted stands.
class StatusLines {
 public:
  explicit StatusLines(std::string_view text) : rest_(text) {}

  /// What follows "KEY:" and a tab, from the next line with that key on.
  std::optional<std::string_view> valueOf(std::string_view key) {
    while (!rest_.empty()) {
      const auto line = rest_.substr(0, rest_.find('\n'));
      rest_.remove_prefix(std::min(rest_.size(), line.size() + 1));
      if (line.size() > key.size() + 1 && line.starts_with(key) && line.substr(key.size(), 2) == ":\t")
        return line.substr(key.size() + 2);
    }
    return std::nullopt;
  }

 private:
  std::string_view rest_;
};

std::optional<ProcessRecord> recordFrom(std::string_view status) {
  StatusLines lines(status);
  const auto name = lines.valueOf("Name");
  const auto group = lines.valueOf("Tgid");
  const auto identifier = lines.valueOf("Pid");
  auto users = lines.valueOf("Uid");  // real, effective, saved, file system
  if (!name || !group || !identifier || !users) return std::nullopt;
  // Asked for by its identifier, a thread has an entry as well.
  if (*group != *identifier) return std::nullopt;
  users->remove_prefix(std::min(users->size(), users->find('\t') + 1));
  const auto number = numberFrom<std::int32_t>(*identifier);
  const auto user = numberFrom<std::uint32_t>(users->substr(0, users->find('\t')));
  if (!number || !user) return std::nullopt;
  return ProcessRecord{*number, nameFrom(*name), *user};
}

// What can't be looked at (/proc can be mounted so) is not in the table for this process.
bool meansNoProcess(int number) {
  return number == ENOENT || number == ESRCH || number == EACCES || number == EPERM;
}

/// The process of the folder `name` in /proc.
Result<std::optional<ProcessRecord>> readRecord(int table, const std::string& name) {
  const FileDescriptor file(openat(table, (name + "/status").c_str(), O_RDONLY | O_CLOEXEC));
  if (!file) return meansNoProcess(errno) ? Result<std::optional<ProcessRecord>>(std::nullopt) : errnoFailure();
  std::array<char, 1024> buffer;
  ssize_t count = 0;
  do {
    count = read(file.get(), buffer.data(), buffer.size());
  } while (count < 0 && errno == EINTR);
  if (count < 0) return meansNoProcess(errno) ? Result<std::optional<ProcessRecord>>(std::nullopt) : errnoFailure();
  return recordFrom({buffer.data(), static_cast<std::size_t>(count)});
}

Result<Folder> openTable() {
  Folder table(opendir("/proc"));
  if (!table) return errnoFailure();
  return table;
}

}  // namespace

std::size_t LinuxProcessTable::nameLength() const noexcept {
  return kNameLength;
}

Result<std::vector<ProcessRecord>> LinuxProcessTable::processes() {
  const auto table = openTable();
  if (!table) return failure(table.error());
  std::vector<ProcessRecord> records;
  for (;;) {
    errno = 0;
    const auto* entry = readdir(table->get());
    if (!entry && errno != 0) return errnoFailure();
    if (!entry) return records;
    if (!numberFrom<std::int32_t>(entry->d_name)) continue;
    auto record = readRecord(dirfd(table->get()), entry->d_name);
    if (!record) return failure(record.error());
    if (*record) records.push_back(*std::move(*record));
  }
}

Result<std::optional<ProcessRecord>> LinuxProcessTable::processWithIdentifier(std::int32_t identifier) {
  if (identifier <= 0) return std::nullopt;
  return readRecord(AT_FDCWD, "/proc/" + std::to_string(identifier));
}

}  // namespace vantrell::host
