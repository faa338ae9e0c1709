// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdint>
#include <string>

#include "foundation/Dictionary.h"
#include "host/linux/MarshalledMessage.h"

namespace vantrell::host {

/// Puts feedback messages into the bytes of D-Bus method calls. A search sends hundreds of thousands of records: sd-bus
/// would cost several times what walking the tree does, and checks what is known to be sound here. Everything else on
/// the wire is sd-bus's.
class FeedbackCall {
 public:
  FeedbackCall();

  /// The whole message, no reply expected. `serial` is not 0. False where it would exceed the protocol's bounds.
  [[nodiscard]] bool write(const Dictionary& message, std::uint32_t serial, MarshalledMessage& bytes) const;

 private:
  std::string header_;  // the same for each but for the body's length and the serial number
};

}  // namespace vantrell::host
