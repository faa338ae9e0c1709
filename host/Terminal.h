// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdint>
#include <memory>
#include <optional>

namespace vantrell::host {

enum class StandardStream : std::uint8_t { Output, Error };

/// What the standard streams of this process are connected to. Safe from any thread.
class Terminal {
 public:
  virtual ~Terminal() = default;

  virtual bool isTerminal(StandardStream stream) const = 0;

  /// Present width in characters; nothing when the stream is no terminal or the terminal does not tell.
  virtual std::optional<unsigned> columns(StandardStream stream) const = 0;
};

std::unique_ptr<Terminal> makeTerminal();

}  // namespace vantrell::host
