// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/UnixAddress.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <utility>

#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>

#include "foundation/PosixCodes.h"
#include "host/posix/ErrorNumbers.h"

namespace vantrell::host {

namespace {

constexpr std::string_view kPrefix = "unix:path=";
/// How long to wait where the service takes in no one.
constexpr time_t kConnectSeconds = 25;

bool standsForItself(char c) noexcept {
  return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') ||
         std::strchr("-_/.\\*", c) != nullptr;
}

Result<FileDescriptor> unixSocket(const std::string& path, sockaddr_un& address) {
  if (path.size() >= sizeof address.sun_path) return posixFailure(posix::kNameTooLong);
  address.sun_family = AF_UNIX;
  std::ranges::copy(path, address.sun_path);
  FileDescriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  if (!socket) return errnoFailure();
  return socket;
}

}  // namespace

std::string unixAddressOfPath(std::string_view path) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string address(kPrefix);
  for (const char c : path) {
    if (standsForItself(c)) {
      address += c;
    } else {
      const auto byte = static_cast<unsigned char>(c);
      address += {'%', kDigits[byte >> 4], kDigits[byte & 15]};
    }
  }
  return address;
}

Result<std::string> pathOfUnixAddress(std::string_view address) {
  if (!address.starts_with(kPrefix)) return posixFailure(posix::kInvalidArgument);
  address.remove_prefix(kPrefix.size());
  std::string path;
  // A comma begins further keys, such as the server's identifier; a semicolon a further address.
  for (std::size_t i = 0; i < address.size() && address[i] != ',' && address[i] != ';'; ++i) {
    if (address[i] != '%') {
      path += address[i];
      continue;
    }
    unsigned value = 0;
    const std::string_view digits = address.substr(i + 1, 2);
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value, 16);
    if (digits.size() != 2 || error != std::errc() || end != digits.data() + 2 || value == 0) {
      return posixFailure(posix::kInvalidArgument);
    }
    path += static_cast<char>(value);
    i += 2;
  }
  if (path.empty() || path.contains('\0')) return posixFailure(posix::kInvalidArgument);
  return path;
}

Result<FileDescriptor> connectToSocket(const std::string& path) {
  sockaddr_un address{};
  Result<FileDescriptor> socket = unixSocket(path, address);
  if (!socket) return socket;
  // Waits where the service's backlog is full; the time limit for that is the one for sending.
  const timeval limit{kConnectSeconds, 0};
  setsockopt(socket->get(), SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit);
  int connected = 0;
  do {
    connected = connect(socket->get(), reinterpret_cast<const sockaddr*>(&address), sizeof address);
  } while (connected != 0 && errno == EINTR);
  if (connected != 0) return errno == EAGAIN ? posixFailure(posix::kTimedOut) : errnoFailure();
  return socket;
}

Result<FileDescriptor> listenOnSocket(const std::string& path) {
  sockaddr_un address{};
  Result<FileDescriptor> socket = unixSocket(path, address);
  if (!socket) return socket;
  if (bind(socket->get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
      listen(socket->get(), SOMAXCONN) != 0) {
    return errnoFailure();
  }
  return socket;
}

}  // namespace vantrell::host
