// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <atomic>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include "host/ClientTransport.h"
#include "host/linux/FeedbackReceiver.h"
#include "host/posix/FileDescriptor.h"

namespace vantrell::host {

/// One end of a socket pair, served by a thread of its own; the other end goes to the service with one request.
class LinuxFeedbackListener final : public FeedbackListener {
 public:
  using Handler = std::function<void(const Dictionary&)>;

  static Result<std::unique_ptr<FeedbackListener>> make(Handler handler);

  /// `socket` blocks. `identifier`: 32 hexadecimal digits.
  LinuxFeedbackListener(Handler handler, FileDescriptor socket, FileDescriptor endpoint, std::string identifier);
  /// Closes the connection and waits for the thread. Not from the handler.
  ~LinuxFeedbackListener() override;

  bool waitUntilClosed(std::chrono::milliseconds limit) override;

  /// The end for the service; none when it was taken before.
  FileDescriptor takeEndpoint() noexcept;

 private:
  void run() noexcept;
  bool takeWhatArrives();
  bool sendAnswers();

  const Handler handler_;
  const FileDescriptor socket_;
  FeedbackReceiver receiver_;  // the thread's
  std::atomic<bool> stopping_ = false;

  std::mutex mutex_;
  std::condition_variable ended_;
  FileDescriptor endpoint_;
  bool closed_ = false;
  std::thread thread_;
};

}  // namespace vantrell::host
