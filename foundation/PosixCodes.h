// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdint>

/// Error numbers of the POSIX domain: Darwin's, on every host (from its public sys/errno.h). Each host folder has one
/// translator from its own numbers; nothing else may put a kernel's number into an error.
namespace vantrell::posix {

inline constexpr std::int64_t kNotPermitted = 1;          // EPERM
inline constexpr std::int64_t kNoEntry = 2;               // ENOENT
inline constexpr std::int64_t kInterrupted = 4;           // EINTR
inline constexpr std::int64_t kInputOutput = 5;           // EIO
inline constexpr std::int64_t kBadDescriptor = 9;         // EBADF
inline constexpr std::int64_t kNoMemory = 12;             // ENOMEM
inline constexpr std::int64_t kAccessDenied = 13;         // EACCES
inline constexpr std::int64_t kBusy = 16;                 // EBUSY
inline constexpr std::int64_t kExists = 17;               // EEXIST
inline constexpr std::int64_t kCrossDevice = 18;          // EXDEV
inline constexpr std::int64_t kNotDirectory = 20;         // ENOTDIR
inline constexpr std::int64_t kIsDirectory = 21;          // EISDIR
inline constexpr std::int64_t kInvalidArgument = 22;      // EINVAL
inline constexpr std::int64_t kFileTableFull = 23;        // ENFILE
inline constexpr std::int64_t kTooManyOpenFiles = 24;     // EMFILE
inline constexpr std::int64_t kFileTooLarge = 27;         // EFBIG
inline constexpr std::int64_t kNoSpace = 28;              // ENOSPC
inline constexpr std::int64_t kReadOnlyFileSystem = 30;   // EROFS
inline constexpr std::int64_t kBrokenPipe = 32;           // EPIPE
inline constexpr std::int64_t kAgain = 35;                // EAGAIN
inline constexpr std::int64_t kMessageSize = 40;          // EMSGSIZE
inline constexpr std::int64_t kNotSupported = 45;         // ENOTSUP
inline constexpr std::int64_t kConnectionReset = 54;      // ECONNRESET
inline constexpr std::int64_t kNoBufferSpace = 55;        // ENOBUFS
inline constexpr std::int64_t kNotConnected = 57;         // ENOTCONN
inline constexpr std::int64_t kTimedOut = 60;             // ETIMEDOUT
inline constexpr std::int64_t kConnectionRefused = 61;    // ECONNREFUSED
inline constexpr std::int64_t kTooManyLinks = 62;         // ELOOP
inline constexpr std::int64_t kNameTooLong = 63;          // ENAMETOOLONG
inline constexpr std::int64_t kNotEmpty = 66;             // ENOTEMPTY
inline constexpr std::int64_t kQuotaExceeded = 69;        // EDQUOT
inline constexpr std::int64_t kNotImplemented = 78;       // ENOSYS
inline constexpr std::int64_t kWrongFormat = 79;          // EFTYPE
inline constexpr std::int64_t kOverflow = 84;             // EOVERFLOW
inline constexpr std::int64_t kCanceled = 89;             // ECANCELED
inline constexpr std::int64_t kIllegalByteSequence = 92;  // EILSEQ
inline constexpr std::int64_t kNoAttribute = 93;          // ENOATTR
inline constexpr std::int64_t kBadMessage = 94;           // EBADMSG
inline constexpr std::int64_t kProtocol = 100;            // EPROTO

}  // namespace vantrell::posix
