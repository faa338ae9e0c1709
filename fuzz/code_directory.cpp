// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <cstdint>
#include <cstdlib>

#include "host/linux/codesign/PageHashes.h"
#include "host/linux/codesign/SignedExecutable.h"

using namespace vantrell;
using namespace vantrell::host::codesign;

/// A signature on its own, and the file that it may be in.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const DataView input(data, size);
  if (const auto blobs = SuperBlob::parse(input)) {
    for (const SignatureBlob& blob : blobs->blobs()) {
      const auto directory = CodeDirectory::parse(blob.bytes);
      if (!directory) continue;
      if (directory->identifier().empty() || directory->digest().size() < kCdHashSize) std::abort();
      for (std::uint32_t slot = 0; slot <= directory->specialSlots(); ++slot) (void)directory->specialHash(slot);
      if (directory->codeLimit() <= size) {
        (void)firstAlteredPage(*directory, input.first(static_cast<std::size_t>(directory->codeLimit())));
      }
    }
  }
  if (const auto slices = machOSlices(input)) {
    for (const MachOSlice& slice : *slices) {
      const auto signature = ArchitectureSignature::read(slice);
      if (signature && signature->directories().empty()) std::abort();
    }
  }
  return 0;
}
