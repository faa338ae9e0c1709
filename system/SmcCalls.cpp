// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "system/SmcCalls.h"

#include <algorithm>

namespace vantrell {

using host::SmcRecord;
using host::SmcReturnCode;

namespace {

SmcReturnCode codeOfResult(std::uint8_t result) {
  if (result == host::smc_result::kSuccess) return host::kSmcSuccess;
  return result == host::smc_result::kKeyNotFound ? host::kSmcNotFound : host::kSmcInternalError;
}

}  // namespace

SmcReturnCode callSmcDriver(host::SmcDriver& driver, const SmcRecord& input, SmcRecord& output) {
  output = {};
  const auto connection = driver.connect();
  if (!connection) return connection.error();
  if (const auto code = (*connection)->openUserClient(); code != host::kSmcSuccess) return code;
  const auto code = (*connection)->call(input, output);
  static_cast<void>((*connection)->closeUserClient());  // the call's own result counts
  return code;
}

SmcReturnCode readSmcKey(host::SmcDriver& driver, std::uint32_t key, std::span<std::uint8_t> buffer, std::size_t& size,
                         std::uint32_t& type) {
  if (key == 0 || buffer.empty() || size == 0) return host::kSmcBadArgument;
  const auto target = buffer.first(std::min(size, buffer.size()));
  std::ranges::fill(target, std::uint8_t{0});

  SmcRecord output;
  const SmcRecord question{.key = key, .command = host::smc_command::kKeyInfo};
  if (const auto code = callSmcDriver(driver, question, output); code != host::kSmcSuccess) return code;
  if (const auto code = codeOfResult(output.result); code != host::kSmcSuccess) return code;
  type = output.keyInfo.dataType;

  const auto dataSize = output.keyInfo.dataSize;
  const SmcRecord request{.key = key, .keyInfo = {.dataSize = dataSize}, .command = host::smc_command::kReadValue};
  const auto code = callSmcDriver(driver, request, output);
  if (const auto refusal = codeOfResult(output.result); refusal != host::kSmcSuccess) return refusal;
  size = std::min<std::size_t>(target.size(), dataSize);
  std::ranges::copy_n(output.bytes.begin(), static_cast<std::ptrdiff_t>(std::min(size, output.bytes.size())),
                      target.begin());
  return code;
}

}  // namespace vantrell
