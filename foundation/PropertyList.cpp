// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "foundation/PropertyList.h"

#include <array>
#include <optional>
#include <string_view>

#include "foundation/BinaryPropertyListReader.h"
#include "foundation/OlderTextPropertyListReader.h"
#include "foundation/PropertyListErrors.h"
#include "foundation/XmlPropertyListReader.h"

namespace vantrell {

namespace {

// What the XML form may begin with, behind white space. A comment is among them: in the older text form nothing begins
// like that.
constexpr std::array<std::string_view, 4> kXmlStarts = {"<?xml", "<!DOCTYPE", "<!--", "<plist"};

/// The units of a text whose encoding is known no better than by its first bytes.
struct Units {
  DataView data;
  std::size_t width = 1;
  bool bigEndian = false;

  // The unit at this byte position, 0 where there is none.
  unsigned at(std::size_t position) const noexcept {
    if (position + width > data.size()) return 0;
    if (width == 1) return data[position];
    return bigEndian ? data[position] << 8u | data[position + 1] : data[position + 1] << 8u | data[position];
  }

  bool has(std::size_t position, std::string_view ascii) const noexcept {
    for (const char character : ascii) {
      if (at(position) != static_cast<unsigned>(character)) return false;
      position += width;
    }
    return true;
  }
};

/// Where the XML behind byte-order mark and white space begins (Expat knows UTF-16 by its "<", too), or nothing.
std::optional<std::size_t> startOfXml(DataView data) noexcept {
  const auto text = textOf(data);
  Units units{data};
  std::size_t at = 0;
  if (text.starts_with("\uFEFF")) {
    at = 3;
  } else if (text.starts_with("\xFE\xFF") || text.starts_with("\xFF\xFE")) {
    units = {data, 2, text.front() == '\xFE'};
    at = 2;
  } else if (data.size() >= 2 && (data[0] == 0) != (data[1] == 0)) {
    units = {data, 2, data[0] == 0};
  }
  const auto isSpace = [](unsigned unit) { return unit == ' ' || unit == '\t' || unit == '\r' || unit == '\n'; };
  while (isSpace(units.at(at))) at += units.width;
  for (const auto start : kXmlStarts) {
    if (units.has(at, start)) return at;
  }
  return std::nullopt;
}

Result<PropertyList> listOf(Result<Value> root, PropertyListFormat format) {
  if (!root) return failure(root.error());
  return PropertyList{*std::move(root), format};
}

}  // namespace

Result<PropertyList> propertyListFromData(DataView data, const PropertyListLimits& limits) {
  if (data.size() > limits.maximumSize) return failure(corruptPropertyList("larger than allowed"));
  if (textOf(data).starts_with("bplist")) {
    return listOf(valueFromBinaryPropertyList(data, limits), PropertyListFormat::Binary);
  }
  if (const auto start = startOfXml(data)) {
    return listOf(valueFromXmlPropertyList(data.subspan(*start), limits), PropertyListFormat::Xml);
  }
  return listOf(valueFromOlderTextPropertyList(data, limits), PropertyListFormat::OlderText);
}

}  // namespace vantrell
