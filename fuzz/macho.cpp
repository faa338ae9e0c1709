// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "foundation/Exception.h"
#include "host/SystemLog.h"
#include "host/linux/NettleCryptography.h"
#include "macho/MachOReport.h"
#include "macho/QELMachOProcessor.h"

namespace {

using namespace vantrell;

/// Takes the messages, so that they are formatted, and forgets them.
class ForgetfulLog final : public host::SystemLog {
 public:
  bool isRecording() const noexcept override { return true; }
  void write(std::string_view, std::string_view, host::LogLevel, std::string_view) noexcept override {}
};

void require(bool condition) {
  if (!condition) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  ForgetfulLog log;
  host::NettleCryptography cryptography;
  try {
    const auto reader = QELMachOProcessor::initForContents({data, size}, cryptography, log);
    if (!reader) return 0;
    const std::size_t parts = reader->countOfFatFileParts();
    require(reader->machHeaders().size() == parts && reader->byteOrderFlags().size() == parts &&
            reader->segmentsPerPart().size() == parts && reader->sectionsByName().size() == parts &&
            reader->partDescriptors().size() == parts);
    for (const std::string& descriptor : reader->partDescriptors()) require(descriptor.size() == 40);
    require(!machOReport(*reader).empty());
  } catch (const Exception&) {  // a section beyond the file
  }
  return 0;
}
