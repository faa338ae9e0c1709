// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <utility>

#include "host/Transport.h"
#include "host/posix/FileDescriptor.h"

namespace vantrell::host {

/// A client's feedback endpoint: our end of its socket pair.
class DescriptorEndpoint final : public Endpoint {
 public:
  explicit DescriptorEndpoint(FileDescriptor socket) noexcept : socket_(std::move(socket)) {}
  FileDescriptor take() noexcept { return std::move(socket_); }

 private:
  FileDescriptor socket_;
};

}  // namespace vantrell::host
