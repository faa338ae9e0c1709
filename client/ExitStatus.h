// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

namespace vantrell {

/// How vantrellctl ends.
enum class ExitStatus : int {
  Success = 0,
  Failure = 1,       // the operation failed
  Usage = 2,         // the command line can't be carried out as it stands
  NoConnection = 3,  // the service can't be reached, or does not trust this client
};

}  // namespace vantrell
