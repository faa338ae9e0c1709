// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "macho/MachOReport.h"

#include <iterator>
#include <string_view>

#include <fmt/format.h>

namespace vantrell {

namespace {

/// Names come from the file and must reach a terminal neither as commands nor as lines of their own: the control
/// characters U+0000 to U+001F, U+007F and U+0080 to U+009F are written out.
std::string printable(std::string_view text) {
  std::string result;
  for (std::size_t index = 0; index < text.size(); ++index) {
    const auto byte = static_cast<std::uint8_t>(text[index]);
    const auto next = static_cast<std::uint8_t>(index + 1 < text.size() ? text[index + 1] : '\0');
    if (byte == 0xC2 && next >= 0x80 && next < 0xA0) {
      fmt::format_to(std::back_inserter(result), "\\x{:02x}", next);
      ++index;
    } else if (byte < 0x20 || byte == 0x7F) {
      fmt::format_to(std::back_inserter(result), "\\x{:02x}", byte);
    } else {
      result += text[index];
    }
  }
  return result;
}

void addLine(std::string& report, std::string_view indent, std::string_view line) {
  report.append(indent).append(printable(line)).append("\n");
}

/// A segment's description has two lines. The one break between them is the last that is not at the end: a name that
/// holds more of them stands before it.
void addSegment(std::string& report, const macho::Segment& segment) {
  const std::string text = QELMachOProcessor::descriptionForSegment(segment.bytes());
  const std::string_view lines = std::string_view(text).substr(0, text.size() - 1);
  const std::size_t lineBreak = lines.rfind('\n');
  addLine(report, "  ", lines.substr(0, lineBreak));
  addLine(report, "  ", lines.substr(lineBreak + 1));
}

void addPart(std::string& report, const QELMachOProcessor& processor, std::size_t index) {
  const auto& arch = *processor.fatFileHeaderAtIndex(index);
  const auto& header = *processor.machHeaderForPartAtIndex(index);
  addLine(report, "",
          fmt::format("part {}: CPU type {}-{}, offset {}, size {}, alignment {}", index, arch.cputype(),
                      arch.cpusubtype(), arch.offset(), arch.partSize(), arch.align()));
  addLine(report, "  ",
          fmt::format("header ({} bit{}): {}, {} load commands of {} bytes, flags: {}",
                      header.size() == macho::kHeaderSize64 ? 64 : 32,
                      processor.byteOrderFlags()[index] ? ", opposite byte order" : "",
                      QELMachOProcessor::descriptionForMachOFileType(header.filetype()), header.ncmds(),
                      header.sizeofcmds(), QELMachOProcessor::descriptionForMachOFlags(header.flags())));
  for (const auto& segment : *processor.segmentsForPartAtIndex(index)) {
    addSegment(report, segment);
  }
  for (const auto& [name, section] : *processor.sectionsByNameForPartAtIndex(index)) {
    addLine(report, "  ", QELMachOProcessor::descriptionForSection(section.bytes()));
  }
  addLine(report, "  ", fmt::format("descriptor: {}", processor.partDescriptors()[index]));
}

}  // namespace

std::string machOReport(const QELMachOProcessor& processor) {
  std::string report;
  for (std::size_t index = 0; index < processor.countOfFatFileParts(); ++index) addPart(report, processor, index);
  for (std::size_t index = 0; const Data& signature : processor.signaturesPerPart()) {
    addLine(report, "", fmt::format("signature {}: {} bytes", index++, signature.size()));
  }
  return report;
}

}  // namespace vantrell
