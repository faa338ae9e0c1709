// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <string>
#include <string_view>

namespace vantrell {

enum class LineBreaks : bool { Escape, Keep };

/// `text` without anything that a terminal would act upon: control characters (C0, DEL, C1) and the invisible ones that
/// change the direction of writing appear as \n, \t, \r, \xNN or \u{N}; bytes that are not UTF-8 as \xNN.
std::string terminalSafe(std::string_view text, LineBreaks lineBreaks = LineBreaks::Escape);

}  // namespace vantrell
