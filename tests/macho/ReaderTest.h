// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "foundation/Exception.h"
#include "host/linux/LinuxFileSystem.h"
#include "host/linux/NettleCryptography.h"
#include "macho/QELMachOProcessor.h"
#include "tests/macho/MachOBuilder.h"
#include "tests/support/RecordingLog.h"

namespace vantrell::tests {

/// Reads files with the host's own cryptography and file system and keeps what is logged.
class ReaderTest : public testing::Test {
 protected:
  std::unique_ptr<QELMachOProcessor> read(DataView file) {
    return QELMachOProcessor::initForContents(file, cryptography_, log_);
  }
  std::unique_ptr<QELMachOProcessor> readFile(const std::string& path) {
    return QELMachOProcessor::initForFileAtPath(path, fileSystem_, cryptography_, log_);
  }

  /// The descriptor of a thin file, "" where the reading fails.
  std::string descriptorOf(DataView file) {
    const auto reader = read(file);
    return reader ? reader->descriptorsForRelevantSectionsPerFilePart().at(0) : "";
  }

  std::string sha1(std::string_view text) {
    const host::Sha1Digest digest = cryptography_.sha1(bytesOf(text)).value();
    std::string digits;
    for (const std::uint8_t byte : digest) digits += fmt::format("{:02x}", byte);
    return digits;
  }

  /// Expects that the file yields nothing, and that this is logged as one error of the default log.
  void expectFailure(DataView file, std::string_view message) {
    log_.clear();
    EXPECT_EQ(read(file), nullptr);
    EXPECT_THAT(log_.messages(), testing::ElementsAre(std::string(message)));
    for (const RecordingLog::Entry& entry : log_.entries()) {
      EXPECT_EQ(entry.level, host::LogLevel::Error);
      EXPECT_EQ(entry.subsystem + entry.category, "");
    }
  }

  /// Expects that reading the file raises for want of a descriptor, having logged why.
  void expectException(DataView file) {
    log_.clear();
    try {
      read(file);
      ADD_FAILURE() << "nothing was raised";
    } catch (const Exception& exception) {
      EXPECT_EQ(exception.name(), NSInvalidArgumentException);
    }
    EXPECT_THAT(log_.messages(),
                testing::ElementsAre("QELMachOProcessor: found section referring to invalid data in mach-o file!"));
  }

  RecordingLog log_;
  host::NettleCryptography cryptography_;
  host::LinuxFileSystem fileSystem_;
};

}  // namespace vantrell::tests
