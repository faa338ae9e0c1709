// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/DBusErrors.h"

#include <cerrno>

#include "foundation/PosixCodes.h"
#include "host/posix/ErrorNumbers.h"

namespace vantrell::host {

namespace {

struct NamedCode {
  const char* name;
  std::int64_t code;
};

// sd-bus answers NoReply itself when a connection ends under a request; a message bus does when the service does.
constexpr NamedCode kCodes[] = {
    {SD_BUS_ERROR_INVALID_ARGS, posix::kInvalidArgument},   {SD_BUS_ERROR_NO_REPLY, posix::kConnectionReset},
    {SD_BUS_ERROR_DISCONNECTED, posix::kConnectionReset},   {SD_BUS_ERROR_SERVICE_UNKNOWN, posix::kNotConnected},
    {SD_BUS_ERROR_NAME_HAS_NO_OWNER, posix::kNotConnected}, {SD_BUS_ERROR_UNKNOWN_METHOD, posix::kProtocol},
    {SD_BUS_ERROR_UNKNOWN_OBJECT, posix::kProtocol},        {SD_BUS_ERROR_UNKNOWN_INTERFACE, posix::kProtocol},
};

}  // namespace

Error errorOfReply(const sd_bus_error& error) {
  for (const NamedCode& known : kCodes) {
    if (sd_bus_error_has_name(&error, known.name) > 0) return Error::posix(known.code);
  }
  return errorFromErrno(sd_bus_error_get_errno(&error));
}

std::int64_t codeOfConnectionFailure(int result) noexcept {
  switch (-result) {
    case EPIPE:
    case ECONNRESET:
    case ENOTCONN:
    case ESHUTDOWN:
    case ECONNABORTED:
      return posix::kConnectionReset;
    case EBADMSG:
    case EPROTO:
    case ESRCH:
    case EMSGSIZE:
    case EPERM:  // the handshake was not agreed upon
      return posix::kProtocol;
    default:
      return darwinErrorNumber(-result);
  }
}

}  // namespace vantrell::host
