// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <iosfwd>
#include <optional>
#include <string>

#include "host/Terminal.h"

namespace vantrell {

/// A bar in the last line of the terminal behind standard error. It is drawn anew only when that would change a
/// character. One thread at a time.
class ProgressBar {
 public:
  /// `out` leads to standard error; both must outlive the bar.
  ProgressBar(std::ostream& out, const host::Terminal& terminal) : out_(out), terminal_(terminal) {}

  /// `fraction` is clamped to 0 to 1; not-a-number counts as 0.
  void show(double fraction);
  /// Clears the line for other output; the next `show` or `redraw` brings the bar back.
  void hide();
  /// Nothing before the first `show`.
  void redraw();

 private:
  std::ostream& out_;
  const host::Terminal& terminal_;
  std::optional<double> fraction_;
  std::string drawn_;  // what stands in the line now; empty when hidden
};

/// "[#####-----]  50 %" in at most `columns` characters; the percentage alone where there is no room for a bar.
std::string progressLine(double fraction, unsigned columns);

}  // namespace vantrell
