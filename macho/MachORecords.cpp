// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "macho/MachORecords.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace vantrell::macho {

static_assert(std::endian::native == std::endian::little, "records are stored in host order, which is little-endian");

namespace {

constexpr std::int8_t kName = -static_cast<std::int8_t>(kNameSize);

constexpr std::array<std::int8_t, 5> kFatArchLayout = {4, 4, 4, 4, 4};
constexpr std::array<std::int8_t, 7> kHeaderLayout32 = {4, 4, 4, 4, 4, 4, 4};
constexpr std::array<std::int8_t, 8> kHeaderLayout64 = {4, 4, 4, 4, 4, 4, 4, 4};
constexpr std::array<std::int8_t, 11> kSegmentLayout32 = {4, 4, kName, 4, 4, 4, 4, 4, 4, 4, 4};
constexpr std::array<std::int8_t, 11> kSegmentLayout64 = {4, 4, kName, 8, 8, 8, 8, 4, 4, 4, 4};
constexpr std::array<std::int8_t, 11> kSectionLayout32 = {kName, kName, 4, 4, 4, 4, 4, 4, 4, 4, 4};
// The last word, reserved3, is nobody's number: it stays as it is stored.
constexpr std::array<std::int8_t, 12> kSectionLayout64 = {kName, kName, 8, 8, 4, 4, 4, 4, 4, 4, 4, -4};

constexpr std::size_t lengthOf(std::span<const std::int8_t> layout) {
  std::size_t length = 0;
  for (const std::int8_t field : layout) length += static_cast<std::size_t>(field < 0 ? -field : field);
  return length;
}
static_assert(lengthOf(kFatArchLayout) == kFatArchSize);
static_assert(lengthOf(kHeaderLayout32) == kHeaderSize32 && lengthOf(kHeaderLayout64) == kHeaderSize64);
static_assert(lengthOf(kSegmentLayout32) == kSegmentSize32 && lengthOf(kSegmentLayout64) == kSegmentSize64);
static_assert(lengthOf(kSectionLayout32) == kSectionSize32 && lengthOf(kSectionLayout64) == kSectionSize64);

using Layout = std::span<const std::int8_t>;

Layout layoutFor(Width width, Layout layout32, Layout layout64) {
  return width == Width::Bits64 ? layout64 : layout32;
}

void swapNumbers(std::uint8_t* bytes, Layout layout) noexcept {
  for (const std::int8_t field : layout) {
    if (field > 0) std::reverse(bytes, bytes + field);
    bytes += field < 0 ? -field : field;
  }
}

}  // namespace

std::uint32_t readWord(DataView bytes, std::size_t offset, Swapped swapped) noexcept {
  std::uint32_t value;
  std::memcpy(&value, bytes.data() + offset, sizeof value);
  return swapped == Swapped::Yes ? __builtin_bswap32(value) : value;
}

template <std::size_t kCapacity>
Record<kCapacity>::Record(DataView source, Layout layout, Swapped swapped) noexcept : size_(lengthOf(layout)) {
  std::copy_n(source.begin(), std::min(source.size(), size_), storage_.begin());
  if (swapped == Swapped::Yes) swapNumbers(storage_.data(), layout);
}

template <std::size_t kCapacity>
std::uint32_t Record<kCapacity>::word(std::size_t offset) const noexcept {
  return readWord(storage_, offset);
}

template <std::size_t kCapacity>
std::uint64_t Record<kCapacity>::longWord(std::size_t offset) const noexcept {
  return word(offset) | std::uint64_t{word(offset + 4)} << 32;
}

template <std::size_t kCapacity>
std::optional<std::string> Record<kCapacity>::text(std::size_t offset) const {
  return stringFromCString(reinterpret_cast<const char*>(storage_.data() + offset), kNameSize);
}

template class Record<kFatArchSize>;
template class Record<kHeaderSize64>;
template class Record<kSegmentSize64>;
template class Record<kSectionSize64>;

FatArch::FatArch(DataView source, Swapped swapped) noexcept : Record(source, kFatArchLayout, swapped) {}

FatArch::FatArch(std::int32_t cputype, std::int32_t cpusubtype, std::uint32_t size) noexcept
    : FatArch(std::bit_cast<std::array<std::uint8_t, kFatArchSize>>(std::array<std::uint32_t, 5>{
                  static_cast<std::uint32_t>(cputype), static_cast<std::uint32_t>(cpusubtype), 0, size, 0}),
              Swapped::No) {}

MachHeader::MachHeader(DataView source, Width width, Swapped swapped) noexcept
    : Record(source, layoutFor(width, kHeaderLayout32, kHeaderLayout64), swapped) {}

Segment::Segment(DataView source, Width width, Swapped swapped) noexcept
    : Record(source, layoutFor(width, kSegmentLayout32, kSegmentLayout64), swapped) {}

std::uint64_t Segment::address(std::size_t index) const noexcept {
  return width() == Width::Bits64 ? longWord(24 + 8 * index) : word(24 + 4 * index);
}

std::uint32_t Segment::last(std::size_t index) const noexcept {
  return word((width() == Width::Bits64 ? 56 : 40) + 4 * index);
}

Section::Section(DataView source, Width width, Swapped swapped) noexcept
    : Record(source, layoutFor(width, kSectionLayout32, kSectionLayout64), swapped) {}

std::uint64_t Section::address(std::size_t index) const noexcept {
  return width() == Width::Bits64 ? longWord(32 + 8 * index) : word(32 + 4 * index);
}

std::uint32_t Section::rest(std::size_t index) const noexcept {
  return word((width() == Width::Bits64 ? 48 : 40) + 4 * index);
}

std::string keyForSection(const Section& section) {
  std::string key = section.segname().value_or(std::string(kMissingText));
  key += ',';
  key += section.sectname().value_or(std::string(kMissingText));
  return key;
}

}  // namespace vantrell::macho
