// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <chrono>
#include <cstddef>

namespace vantrell::host {

/// What a client may make the service hold for it.
struct TransportLimits {
  /// Further connections are closed at once.
  std::size_t connections = 1024;
  /// Of one client; further requests are answered with an error.
  std::size_t unansweredRequests = 4096;
  /// Of one client, about: tokens and arguments of its unanswered requests. Further ones are answered with an error.
  std::size_t unansweredBytes = std::size_t{256} << 20;
  /// Of one client; while more answers than that wait, its requests are left in the socket.
  std::size_t waitingAnswerBytes = std::size_t{64} << 20;
  /// Of one feedback connection; a sender waits at this bound.
  std::size_t waitingFeedbackBytes = std::size_t{64} << 20;
  /// A client that takes no feedback for so long, while a sender or the connection's end waits for it, has gone.
  std::chrono::milliseconds feedbackStall = std::chrono::seconds(30);
};

}  // namespace vantrell::host
