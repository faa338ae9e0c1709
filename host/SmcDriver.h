// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <expected>
#include <memory>

namespace vantrell::host {

/// What one call of the controller's driver takes and gives: 80 bytes in host byte order at these offsets. The bytes of
/// a value are big-endian for integer types.
struct SmcRecord {
  struct Version {
    std::uint8_t majorNumber = 0;
    std::uint8_t minorNumber = 0;
    std::uint8_t build = 0;
    std::uint8_t reserved = 0;
    std::uint16_t release = 0;
    std::uint16_t padding = 0;
  };
  struct Limits {
    std::uint16_t dataVersion = 0;
    std::uint16_t dataLength = 0;
    std::uint32_t cpuLimit = 0;
    std::uint32_t gpuLimit = 0;
    std::uint32_t memoryLimit = 0;
  };
  struct KeyInfo {
    std::uint32_t dataSize = 0;   // bytes of the value
    std::uint32_t dataType = 0;   // a code of four characters, the first one in the highest byte
    std::uint8_t attributes = 0;  // 0x80 readable, 0x40 writable; 0 where a driver doesn't tell
    std::array<std::uint8_t, 3> padding{};
  };

  std::uint32_t key = 0;  // a code like the type's
  Version version{};      // not used here
  Limits limits{};        // not used here
  KeyInfo keyInfo{};
  std::uint8_t result = 0;
  std::uint8_t status = 0;
  std::uint8_t command = 0;
  std::uint8_t padding = 0;
  std::uint32_t data32 = 0;  // the index, for the command "key at index"
  std::array<std::uint8_t, 32> bytes{};
};

static_assert(sizeof(SmcRecord) == 80);
static_assert(offsetof(SmcRecord, version) == 4 && offsetof(SmcRecord::Version, release) == 4);
static_assert(offsetof(SmcRecord, limits) == 12 && offsetof(SmcRecord::Limits, cpuLimit) == 4);
static_assert(offsetof(SmcRecord, keyInfo) == 28 && offsetof(SmcRecord::KeyInfo, dataType) == 4);
static_assert(offsetof(SmcRecord::KeyInfo, attributes) == 8);
static_assert(offsetof(SmcRecord, result) == 40 && offsetof(SmcRecord, status) == 41);
static_assert(offsetof(SmcRecord, command) == 42 && offsetof(SmcRecord, data32) == 44);
static_assert(offsetof(SmcRecord, bytes) == 48);

/// What a call returns, in the driver framework's own numbering, on every host.
using SmcReturnCode = std::uint32_t;

inline constexpr SmcReturnCode kSmcSuccess = 0;
inline constexpr SmcReturnCode kSmcGeneralError = 0xE00002BC;  // also: there is no controller, or no driver for it
inline constexpr SmcReturnCode kSmcNotPrivileged = 0xE00002C1;
inline constexpr SmcReturnCode kSmcInternalError = 0xE00002C9;
inline constexpr SmcReturnCode kSmcInputOutputError = 0xE00002CA;
inline constexpr SmcReturnCode kSmcBadArgument = 0xE00002DE;
inline constexpr SmcReturnCode kSmcNotFound = 0xE00002F0;

namespace smc_command {
inline constexpr std::uint8_t kReadValue = 5;   // in: key, size; out: bytes
inline constexpr std::uint8_t kWriteValue = 6;  // in: key, size, bytes
inline constexpr std::uint8_t kKeyAtIndex = 8;  // in: data32; out: key
inline constexpr std::uint8_t kKeyInfo = 9;     // in: key; out: key info
}  // namespace smc_command

/// Values of the record's result. Callers tell success, "not found" and everything else apart; the others' numbers
/// merely help a person who looks at a record.
namespace smc_result {
inline constexpr std::uint8_t kSuccess = 0;
inline constexpr std::uint8_t kBadCommand = 0x82;
inline constexpr std::uint8_t kKeyNotFound = 0x84;
inline constexpr std::uint8_t kNotReadable = 0x85;
inline constexpr std::uint8_t kNotWritable = 0x86;
inline constexpr std::uint8_t kSizeMismatch = 0x87;
inline constexpr std::uint8_t kNoSuchIndex = 0xB8;
}  // namespace smc_result

/// One open connection to the driver; closed when it is destroyed. Used by one thread.
class SmcConnection {
 public:
  virtual ~SmcConnection() = default;

  /// Begins and ends the use of the connection: the driver's scalar methods 0 and 1, without arguments.
  virtual SmcReturnCode openUserClient() = 0;
  virtual SmcReturnCode closeUserClient() = 0;

  /// The driver's structure method 2. Whatever a controller refuses is told by `output.result`, with the return code 0;
  /// another return code means that the call itself failed, and then `output` says nothing.
  virtual SmcReturnCode call(const SmcRecord& input, SmcRecord& output) = 0;
};

/// The way to the System Management Controller. Safe from any thread; connections are independent of each other and
/// must not outlive it.
class SmcDriver {
 public:
  virtual ~SmcDriver() = default;

  /// Finds the service and opens it. On macOS: the main port (or its code), the dictionary that matches the class
  /// "AppleSMC" and the first service that does (kSmcGeneralError without either), opened with connection type 1 for
  /// this task (or the code of that). Everywhere: kSmcGeneralError where there is no such controller.
  virtual std::expected<std::unique_ptr<SmcConnection>, SmcReturnCode> connect() = 0;
};

}  // namespace vantrell::host
