// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <string>
#include <string_view>
#include <utility>

#include "foundation/Error.h"
#include "foundation/Result.h"

namespace vantrell::host {

/// The attribute files of the `applesmc` driver. Safe from any thread. Errors are POSIX errors.
class AppleSmcAttributes {
 public:
  virtual ~AppleSmcAttributes() = default;

  /// Whether there is a driver at all.
  virtual bool exist() const = 0;

  /// The whole content as one read gives it, a final newline included. POSIX error 27 for more than any attribute
  /// holds (one page).
  virtual Result<std::string> read(const std::string& name) const = 0;

  /// Stores `text` in one write. The file is never made.
  virtual ErrorOrNil write(const std::string& name, std::string_view text) const = 0;
};

/// The files themselves.
class SysfsSmcAttributes final : public AppleSmcAttributes {
 public:
  explicit SysfsSmcAttributes(std::string folder) : folder_(std::move(folder)) {}

  bool exist() const override;
  Result<std::string> read(const std::string& name) const override;
  ErrorOrNil write(const std::string& name, std::string_view text) const override;

 private:
  const std::string folder_;
};

}  // namespace vantrell::host
