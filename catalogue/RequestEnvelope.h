// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

#include "foundation/Data.h"
#include "foundation/Date.h"
#include "foundation/Number.h"
#include "foundation/Uuid.h"

namespace vantrell {

/// What the checks need of a request envelope. An entry that is missing or of another class is nothing.
///
/// The envelope is a binary property list whose root dictionary has the entries "Vrs" (text, "2.0"), "OpCode"
/// (integer), "SetID" (text), "Parms" (array), "PID" (integer), "Time" (date) and "OUUID" (data, 16 bytes).
struct RequestEnvelope {
  std::optional<Number> processIdentifier;    // "PID"
  std::optional<Number> operationCode;        // "OpCode"
  std::optional<std::size_t> parameterCount;  // elements of "Parms"
  std::optional<Date> time;                   // "Time"
  std::optional<Uuid::Bytes> operationUUID;   // "OUUID", when it is data of 16 bytes

  /// Reads an envelope of the operation set `setIdentifier` in place, any property-list format. Nothing when the data
  /// is no property list, its root no dictionary, its version neither "1.0" nor "2.0", or the set another one.
  static std::optional<RequestEnvelope> fromData(DataView data, std::string_view setIdentifier);
};

namespace envelope_key {
inline constexpr char kVersion[] = "Vrs";
inline constexpr char kOperationCode[] = "OpCode";
inline constexpr char kSetIdentifier[] = "SetID";
inline constexpr char kParameters[] = "Parms";
inline constexpr char kProcessIdentifier[] = "PID";
inline constexpr char kTime[] = "Time";
inline constexpr char kOperationUUID[] = "OUUID";
}  // namespace envelope_key

inline constexpr char kEnvelopeVersion[] = "2.0";
inline constexpr char kOlderEnvelopeVersion[] = "1.0";

}  // namespace vantrell
