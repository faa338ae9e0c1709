// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "system/SimulatedSmc.h"

#include <algorithm>
#include <string>
#include <utility>

#include "system/SmcCodes.h"

namespace vantrell {

using host::SmcRecord;
using host::SmcReturnCode;
namespace smc_command = host::smc_command;
namespace smc_result = host::smc_result;

namespace {

constexpr std::uint8_t kReadable = 0x80;
constexpr std::uint8_t kWritable = 0x40;

std::uint32_t typeCode(std::string_view type) {
  std::string padded(type);
  padded.resize(4, '\0');
  return smcKeyFromString(padded);
}

Data bigEndian(std::uint32_t number) {
  Data bytes;
  for (int shift = 24; shift >= 0; shift -= 8) bytes.push_back(static_cast<std::uint8_t>(number >> shift));
  return bytes;
}

std::uint8_t attributesOf(const SimulatedSmc::Key& key) {
  return static_cast<std::uint8_t>((key.readResult == smc_result::kSuccess ? kReadable : 0) |
                                   (key.writeResult == smc_result::kSuccess ? kWritable : 0));
}

}  // namespace

class SimulatedSmc::Connection final : public host::SmcConnection {
 public:
  explicit Connection(SimulatedSmc& smc) : smc_(smc) {}

  SmcReturnCode openUserClient() override {
    isOpen_ = true;
    return host::kSmcSuccess;
  }
  SmcReturnCode closeUserClient() override {
    isOpen_ = false;
    return host::kSmcSuccess;
  }
  SmcReturnCode call(const SmcRecord& input, SmcRecord& output) override {
    if (!isOpen_) return host::kSmcGeneralError;
    output = smc_.answerTo(input);
    return host::kSmcSuccess;
  }

 private:
  SimulatedSmc& smc_;
  bool isOpen_ = false;
};

SimulatedSmc::Key SimulatedSmc::readWriteKey(std::string_view key, std::string_view type, Data value) {
  return {.code = smcKeyFromString(key), .type = typeCode(type), .value = std::move(value)};
}

SimulatedSmc::Key SimulatedSmc::readOnlyKey(std::string_view key, std::string_view type, Data value) {
  auto result = readWriteKey(key, type, std::move(value));
  result.writeResult = smc_result::kNotWritable;
  return result;
}

SimulatedSmc::Key SimulatedSmc::writeOnlyKey(std::string_view key, std::string_view type, Data value) {
  auto result = readWriteKey(key, type, std::move(value));
  result.readResult = smc_result::kNotReadable;
  return result;
}

SimulatedSmc::SimulatedSmc(std::vector<Key> keys) : keys_(std::move(keys)) {
  keys_.push_back(readOnlyKey("#KEY", "ui32", bigEndian(static_cast<std::uint32_t>(keys_.size() + 1))));
  for (auto& key : keys_) key.value.resize(std::min(key.value.size(), SmcRecord().bytes.size()));
  std::ranges::sort(keys_, {}, &Key::code);
}

std::expected<std::unique_ptr<host::SmcConnection>, SmcReturnCode> SimulatedSmc::connect() {
  return std::make_unique<Connection>(*this);
}

SimulatedSmc::Key* SimulatedSmc::find(std::uint32_t code) noexcept {
  const auto found = std::ranges::lower_bound(keys_, code, {}, &Key::code);
  return found != keys_.end() && found->code == code ? &*found : nullptr;
}

Data SimulatedSmc::valueOfKey(std::string_view key) const {
  const std::lock_guard guard(lock_);
  const auto found = std::ranges::find(keys_, smcKeyFromString(key), &Key::code);
  return found == keys_.end() ? Data() : found->value;
}

SmcRecord SimulatedSmc::answerTo(const SmcRecord& request) {
  const std::lock_guard guard(lock_);
  SmcRecord answer;
  if (request.command == smc_command::kKeyAtIndex) {
    const bool exists = request.data32 < keys_.size();
    answer.key = exists ? keys_[request.data32].code : 0;
    answer.result = exists ? smc_result::kSuccess : smc_result::kNoSuchIndex;
  } else if (auto* key = find(request.key)) {
    answerForKey(request, *key, answer);
  } else {
    answer.result = smc_result::kKeyNotFound;
  }
  return answer;
}

void SimulatedSmc::answerForKey(const SmcRecord& request, Key& key, SmcRecord& answer) {
  const bool sizeFits = request.keyInfo.dataSize == key.value.size();
  switch (request.command) {
    case smc_command::kKeyInfo:
      answer.result = key.infoResult;
      answer.keyInfo.dataSize = static_cast<std::uint32_t>(key.value.size());
      answer.keyInfo.dataType = key.type;
      answer.keyInfo.attributes = attributesOf(key);
      return;
    case smc_command::kReadValue:
      answer.result = key.readResult == smc_result::kSuccess && !sizeFits ? smc_result::kSizeMismatch : key.readResult;
      if (answer.result == smc_result::kSuccess) std::ranges::copy(key.value, answer.bytes.begin());
      return;
    case smc_command::kWriteValue:
      answer.result =
          key.writeResult == smc_result::kSuccess && !sizeFits ? smc_result::kSizeMismatch : key.writeResult;
      if (answer.result == smc_result::kSuccess) {
        std::ranges::copy_n(request.bytes.begin(), static_cast<std::ptrdiff_t>(key.value.size()), key.value.begin());
      }
      return;
    default:
      answer.result = smc_result::kBadCommand;
  }
}

}  // namespace vantrell
