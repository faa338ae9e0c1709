// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <string>

#include "macho/QELMachOProcessor.h"

namespace vantrell {

/// What a reader found, as lines of text for a terminal, the last one ended, too: for each part its architecture,
/// header, segments, sections and descriptor; after the parts the signatures, which the reader does not assign to
/// parts. Control characters in names from the file appear as \xNN.
std::string machOReport(const QELMachOProcessor& processor);

}  // namespace vantrell
