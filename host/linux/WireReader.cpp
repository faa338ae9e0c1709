// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/WireReader.h"

namespace vantrell::host {

bool WireReader::Source::enterVariant(Signature& contents) {
  char type = 0;
  const char* contained = nullptr;
  if (sd_bus_message_peek_type(message, &type, &contained) <= 0 || type != 'v' || !contained) return false;
  contents = contained;
  return enter('v', contents.c_str());
}

bool WireReader::Source::boolean(bool& value) {
  int read = 0;
  if (!number('b', read)) return false;
  value = read != 0;
  return true;
}

bool WireReader::Source::text(std::string_view& text) {
  const char* read = nullptr;
  if (!number('s', read)) return false;
  text = read;
  return true;
}

bool WireReader::Source::data(DataView& bytes) {
  const void* read = nullptr;
  std::size_t size = 0;
  if (sd_bus_message_read_array(message, 'y', &read, &size) <= 0) return false;
  bytes = {static_cast<const std::uint8_t*>(read), size};
  return true;
}

bool WireReader::text(std::string& text) {
  std::string_view read;
  if (!source_.text(read)) return false;
  text = read;
  return true;
}

bool WireReader::data(Data& bytes) {
  DataView read;
  if (!source_.data(read)) return false;
  bytes.assign(read.begin(), read.end());
  return true;
}

}  // namespace vantrell::host
