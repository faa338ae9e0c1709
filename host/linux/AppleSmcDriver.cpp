// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/AppleSmcDriver.h"

#include <algorithm>
#include <utility>

namespace vantrell::host {

/// There is nothing to hold open between calls: each opens the files that it needs.
class AppleSmcDriver::Connection final : public SmcConnection {
 public:
  explicit Connection(AppleSmcDriver& driver) : driver_(driver) {}

  SmcReturnCode openUserClient() override {
    isOpen_ = true;
    return kSmcSuccess;
  }
  SmcReturnCode closeUserClient() override {
    isOpen_ = false;
    return kSmcSuccess;
  }
  SmcReturnCode call(const SmcRecord& input, SmcRecord& output) override {
    if (!isOpen_) return kSmcGeneralError;
    output = {};
    const auto refusal = driver_.answer(input, output);
    if (refusal.result != smc_result::kSuccess) output = {};
    output.result = refusal.result;
    return refusal.returnCode;
  }

 private:
  AppleSmcDriver& driver_;
  bool isOpen_ = false;
};

AppleSmcDriver::AppleSmcDriver(const std::string& folder)
    : AppleSmcDriver(std::make_unique<SysfsSmcAttributes>(folder)) {}

AppleSmcDriver::AppleSmcDriver(std::unique_ptr<AppleSmcAttributes> attributes)
    : attributes_(std::move(attributes)), keys_(*attributes_), fans_(*attributes_, keys_) {}

std::expected<std::unique_ptr<SmcConnection>, SmcReturnCode> AppleSmcDriver::connect() {
  if (!attributes_->exist()) return std::unexpected(kSmcGeneralError);
  return std::make_unique<Connection>(*this);
}

SmcRefusal AppleSmcDriver::answer(const SmcRecord& request, SmcRecord& answer) {
  const std::lock_guard guard(lock_);
  switch (request.command) {
    case smc_command::kKeyAtIndex:
      return keyAtIndex(request, answer);
    case smc_command::kKeyInfo:
      return keyInfo(request, answer);
    case smc_command::kReadValue:
      return readValue(request, answer);
    case smc_command::kWriteValue:
      return writeValue(request);
    default:
      return {.result = smc_result::kBadCommand};
  }
}

SmcRefusal AppleSmcDriver::keyAtIndex(const SmcRecord& request, SmcRecord& answer) {
  const auto code = keys_.codeAtIndex(request.data32);
  if (!code) return code.error();
  answer.key = *code;
  return {};
}

SmcRefusal AppleSmcDriver::keyInfo(const SmcRecord& request, SmcRecord& answer) {
  const auto key = keys_.keyInfo(request.key);
  if (!key) return key.error();
  answer.keyInfo.dataSize = key->size;
  answer.keyInfo.dataType = key->type;
  return {};
}

SmcRefusal AppleSmcDriver::readValue(const SmcRecord& request, SmcRecord& answer) {
  const auto key = keys_.keyWithValue(request.key);
  if (!key) return key.error();
  if (request.keyInfo.dataSize != key->size) return {.result = smc_result::kSizeMismatch};
  std::ranges::copy(key->value, answer.bytes.begin());
  return {};
}

SmcRefusal AppleSmcDriver::writeValue(const SmcRecord& request) {
  const auto key = keys_.keyInfo(request.key);
  if (!key) return key.error();
  if (request.keyInfo.dataSize != key->size) return {.result = smc_result::kSizeMismatch};
  const auto size = std::min<std::size_t>(key->size, request.bytes.size());
  return fans_.write(request.key, *key, DataView(request.bytes).first(size));
}

}  // namespace vantrell::host
