// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "host/ClientTransport.h"
#include "host/linux/BusChannel.h"
#include "host/posix/FileDescriptor.h"

namespace vantrell::host {

/// One end of a socket pair, served by a thread of its own; the other end goes to the service with one request.
class LinuxFeedbackListener final : public FeedbackListener {
 public:
  using Handler = std::function<void(const Dictionary&)>;

  static Result<std::unique_ptr<FeedbackListener>> make(Handler handler);

  LinuxFeedbackListener(Handler handler, FileDescriptor endpoint);
  /// Closes the connection and waits for the thread. Not from the handler.
  ~LinuxFeedbackListener() override;

  bool waitUntilClosed(std::chrono::milliseconds limit) override;

  /// The end for the service; none when it was taken before.
  FileDescriptor takeEndpoint() noexcept;

 private:
  static int messageArrived(sd_bus_message* message, void* listener, sd_bus_error* error) noexcept;
  ErrorOrNil start(FileDescriptor socket);
  void run();
  bool step();

  const Handler handler_;
  BusChannel channel_;
  // Guarded by the channel's lock.
  std::vector<Dictionary> arrived_;
  bool stopping_ = false;

  std::mutex mutex_;
  std::condition_variable ended_;
  FileDescriptor endpoint_;
  bool closed_ = false;
  std::thread thread_;
};

}  // namespace vantrell::host
