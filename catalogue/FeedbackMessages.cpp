// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "catalogue/FeedbackMessages.h"

#include "foundation/Value.h"

namespace vantrell {

Dictionary progressMessage(double fraction) {
  return {{feedback_key::kProgressFraction, fraction}};
}
Dictionary openingOutputMessage() {
  return {{feedback_key::kOutputData, Data{}}, {feedback_key::kErrorData, Data{}}};
}
Dictionary outputMessage(DataView data, bool isError, std::uint64_t sequenceNumber) {
  return {{isError ? feedback_key::kErrorData : feedback_key::kOutputData, Data(data.begin(), data.end())},
          {feedback_key::kSequenceNumber, sequenceNumber}};
}
Dictionary finalMessage() {
  return {{feedback_key::kFinalFeedbackMessage, true}};
}

}  // namespace vantrell
