// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/codesign/PageHashes.h"

#include <algorithm>
#include <atomic>
#include <system_error>
#include <thread>

namespace vantrell::host::codesign {
namespace {

// Below this a second thread costs more than it saves.
constexpr std::size_t kSmallestSharedCode = std::size_t{1} << 20;
// Pages that a thread takes at a time: a thread that has to wait for a processor leaves the rest to the other one.
constexpr std::uint32_t kShare = 64;

/// Takes shares of the pages, in ascending order, until none are left or one is altered.
std::optional<std::uint32_t> checkShares(const CodeDirectory& directory, DataView code,
                                         std::atomic<std::uint32_t>& nextShare) {
  CodeDigest digest(digestName(directory.hashType()));
  const std::uint64_t pageSize = directory.pageSize() == 0 ? code.size() : directory.pageSize();
  for (;;) {
    const std::uint64_t first = std::uint64_t{nextShare.fetch_add(1)} * kShare;
    if (first >= directory.codeSlots()) return std::nullopt;
    const std::uint64_t end = std::min<std::uint64_t>(first + kShare, directory.codeSlots());
    for (std::uint64_t page = first; page < end; ++page) {
      const std::uint64_t start = page * pageSize;
      const std::uint64_t length = std::min<std::uint64_t>(pageSize, code.size() - start);
      const auto number = static_cast<std::uint32_t>(page);
      if (!digest.matches(code.subspan(start, length), directory.codeHash(number))) return number;
    }
  }
}

}  // namespace

std::optional<std::uint32_t> firstAlteredPage(const CodeDirectory& directory, DataView code) {
  std::atomic<std::uint32_t> nextShare = 0;
  std::optional<std::uint32_t> others;
  std::thread second;
  if (code.size() >= kSmallestSharedCode && directory.codeSlots() > kShare) {
    try {
      second = std::thread([&] { others = checkShares(directory, code, nextShare); });
    } catch (const std::system_error&) {  // no thread to be had: this one does it all
    }
  }
  const auto own = checkShares(directory, code, nextShare);
  if (second.joinable()) second.join();
  if (own && others) return std::min(*own, *others);
  return own ? own : others;
}

}  // namespace vantrell::host::codesign
