// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <optional>

#include "host/Terminal.h"

namespace vantrell::tests {

struct FakeTerminal final : host::Terminal {
  bool output = false;
  bool error = false;
  std::optional<unsigned> width = 80;

  bool isTerminal(host::StandardStream stream) const override {
    return stream == host::StandardStream::Output ? output : error;
  }
  std::optional<unsigned> columns(host::StandardStream stream) const override {
    return isTerminal(stream) ? width : std::nullopt;
  }
};

}  // namespace vantrell::tests
