// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "client/BundleCommand.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <ostream>
#include <string_view>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "bundles/QELBundle.h"
#include "client/DateText.h"
#include "client/JsonOutput.h"
#include "client/TerminalText.h"

namespace vantrell {

namespace {

constexpr int kWidthOfNames = 26;

std::optional<std::string> dateText(const std::optional<Date>& date) {
  return date ? std::optional(textOfDate(*date)) : std::nullopt;
}

Json jsonFrom(const std::optional<std::string>& text) {
  return text ? Json(*text) : Json(nullptr);
}

Json jsonFrom(const QELBundle& bundle) {
  auto object = Json::object();
  object["path"] = jsonFrom(bundle.bundlePath());
  object["packageStyle"] = static_cast<std::uint64_t>(bundle.packageStyle());
  object["softwareType"] = static_cast<std::uint64_t>(bundle.softwareType());
  object["softwareTypeName"] = nameOfSoftwareType(bundle.softwareType());
  object["version"] = jsonFrom(bundle.versionString());
  object["identifier"] = jsonFrom(bundle.bundleIdentifier());
  object["lastUsed"] = jsonFrom(dateText(bundle.dateLastUsed()));
  object["name"] = bundle.nonLocalizedName();
  object["informationFile"] = jsonFrom(bundle.infoDictionaryPath());
  object["contents"] = bundle.contentsPath();
  object["resources"] = bundle.resourcesPath();
  object["executable"] = jsonFrom(bundle.executablePath());
  object["developmentLocalization"] = jsonFrom(bundle.developmentLocalization());
  object["localizations"] = bundle.namesOfActiveLocalizations();
  object["services"] = jsonFromValue(bundle.servicesEntries());
  object["isCodesigned"] = bundle.isCodesigned();
  object["isMRJApplication"] = bundle.isMRJApplication();
  object["isRevolutionApplication"] = bundle.isRevolutionApplication();
  return object;
}

/// Lines of a name and a value each. Every value comes from the package, so none may reach a terminal as it is.
class Lines {
 public:
  explicit Lines(std::ostream& out) : out_(out) {}

  void add(std::string_view name, const std::optional<std::string>& value) {
    out_ << fmt::format("{:<{}}{}\n", fmt::format("{}:", name), kWidthOfNames, terminalSafe(value.value_or("none")));
  }
  void addAnswer(std::string_view name, bool value) { add(name, value ? "yes" : "no"); }

 private:
  std::ostream& out_;
};

std::string joined(const std::vector<std::string>& names) {
  return names.empty() ? "none" : fmt::format("{}", fmt::join(names, ", "));
}

void printText(std::ostream& out, const QELBundle& bundle) {
  Lines lines(out);
  lines.add("Path", bundle.bundlePath());
  lines.add("Kind", fmt::format("{} ({})", nameOfSoftwareType(bundle.softwareType()),
                                static_cast<std::uint64_t>(bundle.softwareType())));
  lines.add("Package style", std::to_string(static_cast<std::uint64_t>(bundle.packageStyle())));
  lines.add("Version", bundle.versionString());
  lines.add("Identifier", bundle.bundleIdentifier());
  lines.add("Last used", dateText(bundle.dateLastUsed()));
  lines.add("Information file", bundle.infoDictionaryPath());
  lines.add("Executable", bundle.executablePath());
  lines.add("Resources", bundle.resourcesPath());
  lines.add("Development language", bundle.developmentLocalization());
  lines.add("Languages", joined(bundle.namesOfActiveLocalizations()));
  lines.add("Services", std::to_string(bundle.servicesEntries().size()));
  lines.addAnswer("Sealed by a signature", bundle.isCodesigned());
  lines.addAnswer("MRJ application", bundle.isMRJApplication());
  lines.addAnswer("Revolution application", bundle.isRevolutionApplication());
}

}  // namespace

ExitStatus describeBundle(const CommandContext& context, const std::string& path) {
  const auto bundle = QELBundle::initWithPath(path, *context.host.fileSystem, *context.host.applications);
  if (!bundle) {
    context.complain("\"" + path + "\" is no software package.");
    return ExitStatus::Failure;
  }
  if (context.json) {
    context.out << jsonLine(jsonFrom(*bundle)) << '\n';
  } else {
    printText(context.out, *bundle);
  }
  context.out.flush();
  return context.out ? ExitStatus::Success : ExitStatus::Failure;
}

}  // namespace vantrell
