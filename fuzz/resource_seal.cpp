// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <cstdint>
#include <cstdlib>

#include "host/linux/codesign/ResourceSeal.h"

using namespace vantrell;
using namespace vantrell::host::codesign;

/// A list of sealed resources whose own paths are looked up in its own rules; and the input as a rule.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const DataView input(data, size);
  std::uint64_t steps = 1'000'000;
  if (const auto seal = ResourceSeal::parse(input)) {
    for (const auto& [path, entry] : seal->entries()) {
      if (entry.kind == SealedEntry::Kind::File && entry.sha1.empty() && entry.sha256.empty()) std::abort();
      if (!seal->ruleFor(path, steps)) break;
    }
  }
  if (const auto pattern = PathPattern::parse(textOf(input))) {
    (void)pattern->isFoundIn("Resources/en.lproj/texts.strings", steps);
    (void)pattern->isFoundIn(textOf(input), steps);
  }
  return 0;
}
