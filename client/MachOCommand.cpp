// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "client/MachOCommand.h"

#include <memory>
#include <ostream>
#include <vector>

#include <nlohmann/json.hpp>

#include "client/JsonOutput.h"
#include "client/StreamLog.h"
#include "client/TerminalText.h"
#include "foundation/Exception.h"
#include "macho/MachOReport.h"
#include "macho/QELMachOProcessor.h"

namespace vantrell {

namespace {

/// Null when the file is in another format, or inconsistent, which the reader has said in `log`.
std::unique_ptr<QELMachOProcessor> readMachO(const CommandContext& context, const std::string& path,
                                             host::SystemLog& log) {
  try {
    return QELMachOProcessor::initForFileAtPath(path, *context.host.fileSystem, *context.host.cryptography, log);
  } catch (const Exception& exception) {
    context.complain(exception.reason());
    return nullptr;
  }
}

void printJson(const CommandContext& context, const std::string& path, const char* format,
               const std::vector<std::string>& descriptors, const std::string* report) {
  auto object = Json::object();
  object["file"] = path;
  object["format"] = format;
  object["descriptors"] = descriptors;
  if (report) object["report"] = *report;
  context.out << jsonLine(object) << std::endl;
}

void printMachO(const CommandContext& context, const std::string& path, const QELMachOProcessor& reader) {
  const auto report = machOReport(reader);
  if (context.json) {
    printJson(context, path, "mach-o", reader.descriptorsForRelevantSectionsPerFilePart(), &report);
    return;
  }
  const bool escape = context.terminal.isTerminal(host::StandardStream::Output);
  context.out << (escape ? terminalSafe(report, LineBreaks::Keep) : report);
  if (!report.ends_with('\n')) context.out << '\n';
  context.out << std::flush;
}

bool printHostExecutable(const CommandContext& context, const std::string& path) {
  const auto descriptors = context.host.executableDescriptor->descriptorsForFileAtPath(path);
  if (!descriptors || descriptors->empty()) return false;
  if (context.json) {
    printJson(context, path, "host", *descriptors, nullptr);
    return true;
  }
  context.out << "No Mach-O file, but an executable in this system's own format.\n";
  for (const auto& descriptor : *descriptors) context.out << "Descriptor: " << descriptor << '\n';
  context.out << std::flush;
  return true;
}

}  // namespace

ExitStatus describeExecutable(const CommandContext& context, const std::string& path) {
  StreamLog log(context.err, context.terminal.isTerminal(host::StandardStream::Error));
  if (const auto reader = readMachO(context, path, log)) {
    printMachO(context, path, *reader);
    return ExitStatus::Success;
  }
  if (printHostExecutable(context, path)) return ExitStatus::Success;
  context.complain("\"" + path + "\" can't be read as an executable.");
  return ExitStatus::Failure;
}

}  // namespace vantrell
