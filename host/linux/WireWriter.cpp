// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/WireWriter.h"

#include <algorithm>
#include <string>

#include "host/linux/WireText.h"

namespace vantrell::host {

WireWriter::Sink::Mark WireWriter::Sink::open(char type, const char* contents) {
  if (status == 0) note(sd_bus_message_open_container(message, type, contents));
  return {};
}

void WireWriter::Sink::close(char, Mark) {
  if (status == 0) note(sd_bus_message_close_container(message));
}

void WireWriter::Sink::basic(char type, const void* value, std::size_t size) {
  if (status == 0) note(sd_bus_message_append_basic(message, type, value));
  bytes += size;
}

void WireWriter::Sink::text(std::string_view text) {
  std::string replaced;
  if (!isSendableText(text)) {
    replaced = sendableText(text);
    text = replaced;
  }
  char* space = nullptr;
  if (status == 0) note(sd_bus_message_append_string_space(message, text.size(), &space));
  if (status == 0) std::ranges::copy(text, space);
  bytes += text.size() + 8;
}

void WireWriter::Sink::data(DataView content) {
  if (status == 0) note(sd_bus_message_append_array(message, 'y', content.data(), content.size()));
  bytes += content.size() + 8;
}

void WireWriter::descriptors(int descriptor) {
  const Sink::Mark list = sink_.open('a', "h");
  if (descriptor >= 0) sink_.basic('h', &descriptor, 4);
  sink_.close('a', list);
}

}  // namespace vantrell::host
