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
Dictionary finalMessage() {
  return {{feedback_key::kFinalFeedbackMessage, true}};
}

}  // namespace vantrell
