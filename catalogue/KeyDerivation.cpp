// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <algorithm>
#include <utility>

#include "catalogue/QELPrivilegedToolOperationSet.h"
#include "foundation/Exception.h"
#include "macho/QELMachOProcessor.h"

namespace vantrell {

namespace {

constexpr std::size_t kDescriptorLength = 2 * QELPrivilegedToolOperationSet::kKeyPrefixSize;

/// The first part's descriptor: of a Mach-O file, else of a file in the host's own format.
std::optional<std::string> firstDescriptor(const std::string& path, host::Host& host) {
  try {
    if (const auto reader =
            QELMachOProcessor::initForFileAtPath(path, *host.fileSystem, *host.cryptography, *host.systemLog)) {
      const auto& descriptors = reader->descriptorsForRelevantSectionsPerFilePart();
      if (descriptors.empty()) return std::nullopt;
      return descriptors.front();
    }
  } catch (const Exception&) {
    // A section points beyond the file; the reader has logged it.
    return std::nullopt;
  }
  const auto descriptors = host.executableDescriptor->descriptorsForFileAtPath(path);
  if (!descriptors || descriptors->empty()) return std::nullopt;
  return descriptors->front();
}

// Of either case.
std::uint8_t highNibble(char digit) {
  const auto value = static_cast<std::uint8_t>(digit);
  return digit > '9' ? static_cast<std::uint8_t>((value + 9) & 0x0F) : static_cast<std::uint8_t>(value & 0x0F);
}

// Right for lower-case letters only, which is all that descriptors contain; both sides of the protocol do it like this.
std::uint8_t lowNibble(char digit) {
  const auto value = static_cast<std::uint8_t>(digit);
  return digit > '9' ? static_cast<std::uint8_t>(value - 87) : static_cast<std::uint8_t>(value - 48);
}

}  // namespace

std::optional<Data> QELPrivilegedToolOperationSet::keyPrefixBasedOnPath(const std::string& path,
                                                                        host::Host& host) const {
  if (path.empty()) return std::nullopt;
  const auto descriptor = firstDescriptor(path, host);
  return descriptor ? keyPrefixFromDescriptor(*descriptor) : std::nullopt;
}

std::optional<Data> QELPrivilegedToolOperationSet::keyPrefixFromDescriptor(std::string_view descriptor) {
  if (descriptor.size() != kDescriptorLength) return std::nullopt;
  Data prefix;
  prefix.reserve(kKeyPrefixSize);
  for (std::size_t i = 0; i < kDescriptorLength; i += 2) {
    prefix.push_back(static_cast<std::uint8_t>(highNibble(descriptor[i]) << 4 | lowNibble(descriptor[i + 1])));
  }
  return prefix;
}

std::optional<Data> QELPrivilegedToolOperationSet::keyForPrefix(DataView prefix, DataView salt) const {
  if (prefix.size() != kKeyPrefixSize || salt.size() != kSaltSize) return std::nullopt;
  Data key;
  key.reserve(kKeyPrefixSize + kSaltSize);
  std::ranges::copy(prefix, std::back_inserter(key));
  std::ranges::copy(salt, std::back_inserter(key));
  return key;
}

}  // namespace vantrell
