// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "client/ProgressBar.h"

#include <algorithm>
#include <cmath>
#include <ostream>

#include <fmt/core.h>

namespace vantrell {

namespace {
constexpr unsigned kUsualColumns = 80;
constexpr unsigned kWidestBar = 60;
constexpr unsigned kNarrowestBar = 4;
constexpr char kClearLine[] = "\r\x1b[K";
}  // namespace

std::string progressLine(double fraction, unsigned columns) {
  // 100 % only when all is done.
  const auto percentage = fmt::format("{:3} %", static_cast<unsigned>(std::floor(fraction * 100)));
  const auto around = static_cast<unsigned>(percentage.size()) + 4;  // brackets, a space, and the last column left free
  if (columns < around + kNarrowestBar) return percentage;
  const auto width = std::min(columns - around, kWidestBar);
  const auto filled = static_cast<unsigned>(std::floor(fraction * width));
  return "[" + std::string(filled, '#') + std::string(width - filled, '-') + "] " + percentage;
}

void ProgressBar::show(double fraction) {
  fraction_ = std::isnan(fraction) ? 0.0 : std::clamp(fraction, 0.0, 1.0);
  redraw();
}

void ProgressBar::redraw() {
  if (!fraction_) return;
  auto line = progressLine(*fraction_, terminal_.columns(host::StandardStream::Error).value_or(kUsualColumns));
  if (line == drawn_) return;
  out_ << kClearLine << line << std::flush;
  drawn_ = std::move(line);
}

void ProgressBar::hide() {
  if (drawn_.empty()) return;
  out_ << kClearLine << std::flush;
  drawn_.clear();
}

}  // namespace vantrell
