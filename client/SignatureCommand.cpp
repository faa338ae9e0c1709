// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "client/SignatureCommand.h"

#include <algorithm>
#include <optional>
#include <ostream>
#include <vector>

#include <nlohmann/json.hpp>

#include "client/ErrorText.h"
#include "client/JsonOutput.h"
#include "client/TerminalText.h"
#include "host/CodeSignatures.h"

namespace vantrell {

namespace {

struct Report {
  std::int64_t code = 0;
  std::optional<host::CodeSigningInformation> information;
  std::vector<std::string> findings;
};

Report reportOn(host::StaticCode& code) {
  constexpr host::CodeValidityOptions kEverything{
      .checkAllArchitectures = true, .checkNestedCode = true, .enforceRevocationChecks = true};
  Report report;
  if (auto information = code.signingInformation()) report.information = *std::move(information);
  const auto error = code.checkValidity(kEverything, host::kAnchorAppleGeneric);
  report.findings = code.findings();
  if (!error) return report;
  report.code = error->code();
  if (report.findings.empty()) report.findings.push_back(textOfError(*error).description);
  // A signature that nobody vouches for is looked into no further; whether the code is whole is of interest all the
  // same.
  if (report.information && report.information->isAdHoc && code.checkValidity(kEverything, "")) {
    for (std::string& finding : code.findings()) {
      if (std::ranges::find(report.findings, finding) == report.findings.end()) {
        report.findings.push_back(std::move(finding));
      }
    }
  }
  return report;
}

Json jsonOf(const std::string& path, const Report& report) {
  auto object = Json::object();
  object["path"] = path;
  object["valid"] = report.code == 0;
  object["code"] = report.code;
  const auto& information = report.information;
  object["identifier"] = information ? Json(information->identifier) : Json(nullptr);
  object["team"] = information && information->teamIdentifier ? Json(*information->teamIdentifier) : Json(nullptr);
  object["adHoc"] = information ? Json(information->isAdHoc) : Json(nullptr);
  object["authorities"] = information ? Json(information->authorities) : Json(nullptr);
  object["findings"] = report.findings;
  return object;
}

// Everything comes from the file, so that nothing reaches a terminal as it stands.
void printText(std::ostream& out, const Report& report) {
  if (const auto& information = report.information) {
    out << "Identifier: " << terminalSafe(information->identifier) << '\n';
    out << "Team: " << terminalSafe(information->teamIdentifier.value_or("none")) << '\n';
    for (const auto& authority : information->authorities) out << "Authority: " << terminalSafe(authority) << '\n';
    if (information->isAdHoc) out << "Authority: none (ad-hoc signature)\n";
  }
  for (const auto& finding : report.findings) out << "Finding: " << terminalSafe(finding) << '\n';
  out << (report.code == 0 ? "The signature is valid.\n" : "The signature is not valid.\n");
}

}  // namespace

ExitStatus describeSignature(const CommandContext& context, const std::string& path) {
  const auto code = context.host.codeSignatures->staticCodeAtPath(path);
  if (!code) {
    context.complain(code.error());
    return ExitStatus::Failure;
  }
  const Report report = reportOn(**code);
  if (context.json) {
    context.out << jsonLine(jsonOf(path, report)) << '\n';
  } else {
    printText(context.out, report);
  }
  context.out.flush();
  return report.code == 0 && context.out ? ExitStatus::Success : ExitStatus::Failure;
}

}  // namespace vantrell
