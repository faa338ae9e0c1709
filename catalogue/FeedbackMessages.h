// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdint>

#include "foundation/Data.h"
#include "foundation/Dictionary.h"

namespace vantrell {

// The keys and forms of what is sent back while an operation runs. Each message holds one of the forms.
namespace feedback_key {
inline constexpr char kProgressFraction[] = "ProgressFraction";
inline constexpr char kOutputData[] = "OutputData";
inline constexpr char kErrorData[] = "ErrorData";
inline constexpr char kSequenceNumber[] = "SequenceNumber";
inline constexpr char kFinalFeedbackMessage[] = "FinalFeedbackMessage";
}  // namespace feedback_key

/// `fraction` from 0 to 1.
Dictionary progressMessage(double fraction);
/// The first message of an operation with live output: both streams, both empty, no sequence number.
Dictionary openingOutputMessage();
/// A piece of a program's output, numbered over both streams.
Dictionary outputMessage(DataView data, bool isError, std::uint64_t sequenceNumber);
/// The last message of every operation.
Dictionary finalMessage();

}  // namespace vantrell
