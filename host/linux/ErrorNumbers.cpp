// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/posix/ErrorNumbers.h"

namespace vantrell::host {

std::int64_t darwinErrorNumber(int number) noexcept {
  // 1 to 34 are the historic numbers and agree, but for EDEADLK's place, which Linux gave to EAGAIN.
  if (number >= 1 && number <= 34 && number != EAGAIN) return number;
  switch (number) {
    case EDEADLK:
      return 11;
    case EAGAIN:
      return 35;
    case EINPROGRESS:
      return 36;
    case EALREADY:
      return 37;
    case ENOTSOCK:
      return 38;
    case EDESTADDRREQ:
      return 39;
    case EMSGSIZE:
      return 40;
    case EPROTOTYPE:
      return 41;
    case ENOPROTOOPT:
      return 42;
    case EPROTONOSUPPORT:
      return 43;
    case ESOCKTNOSUPPORT:
      return 44;
    case EOPNOTSUPP:  // one number with ENOTSUP here, two on Darwin; for files it is ENOTSUP that is meant
      return 45;
    case EPFNOSUPPORT:
      return 46;
    case EAFNOSUPPORT:
      return 47;
    case EADDRINUSE:
      return 48;
    case EADDRNOTAVAIL:
      return 49;
    case ENETDOWN:
      return 50;
    case ENETUNREACH:
      return 51;
    case ENETRESET:
      return 52;
    case ECONNABORTED:
      return 53;
    case ECONNRESET:
      return 54;
    case ENOBUFS:
      return 55;
    case EISCONN:
      return 56;
    case ENOTCONN:
      return 57;
    case ESHUTDOWN:
      return 58;
    case ETOOMANYREFS:
      return 59;
    case ETIMEDOUT:
      return 60;
    case ECONNREFUSED:
      return 61;
    case ELOOP:
      return 62;
    case ENAMETOOLONG:
      return 63;
    case EHOSTDOWN:
      return 64;
    case EHOSTUNREACH:
      return 65;
    case ENOTEMPTY:
      return 66;
    case EUSERS:
      return 68;
    case EDQUOT:
      return 69;
    case ESTALE:
      return 70;
    case EREMOTE:
      return 71;
    case ENOLCK:
      return 77;
    case ENOSYS:
      return 78;
    case EOVERFLOW:
      return 84;
    case ECANCELED:
      return 89;
    case EIDRM:
      return 90;
    case ENOMSG:
      return 91;
    case EILSEQ:
      return 92;
    case ENODATA:  // Linux reports a missing extended attribute so; Darwin has ENOATTR for it
      return 93;
    case EBADMSG:
      return 94;
    case EMULTIHOP:
      return 95;
    case ENOLINK:
      return 97;
    case ENOSR:
      return 98;
    case ENOSTR:
      return 99;
    case EPROTO:
      return 100;
    case ETIME:
      return 101;
    case EOWNERDEAD:
      return 105;
    case ENOTRECOVERABLE:
      return 104;
    default:
      return 5;
  }
}

}  // namespace vantrell::host
