// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "core/ProcessEntry.h"

#include <string>

#include "core/QELPrivilegedTool.h"
#include "foundation/Log.h"
#include "foundation/PropertyList.h"

namespace vantrell {

namespace {

constexpr char kNoPrincipalClass[] =
    "Internal implementation error: The principal class is either not set or not implemented.\n";
// Deliberately without a newline.
constexpr char kNotRoot[] = "This program needs root privileges.";
constexpr char kLogCategory[] = "standard";

Dictionary informationDictionary(host::MainBundle& bundle) {
  const auto data = bundle.informationPropertyList();
  if (!data) return {};
  const auto list = propertyListFromData(*data);
  const auto* dictionary = list ? list->root.asDictionary() : nullptr;
  return dictionary ? *dictionary : Dictionary();
}

std::string textIn(const Dictionary& dictionary, std::string_view key) {
  const auto* value = dictionary.find(key);
  const auto* text = value ? value->asString() : nullptr;
  return text ? *text : "(null)";
}

int answerArgument(std::string_view argument, const Dictionary& information, const StandardStreams& streams) {
  if (!argument.starts_with('v')) return 1;
  streams.output(textIn(information, "CFBundleShortVersionString") + " (Build " +
                 textIn(information, "CFBundleVersion") + ")\n");
  return 0;
}

int serve(const QELPrivilegedToolOperationSet& operationSet, const Log& sysLog, host::Host& host,
          const ClassRegistry& classes) {
  const auto tool = QELPrivilegedTool::initForOperationSet(&operationSet, &sysLog, host, classes);
  // A missing implementor is in the log; there is nothing to run then, which counts as an orderly end.
  if (!tool) return 0;
  if (const auto error = tool->run()) {
    sysLog.error("The service could not begin to listen (error {}).", error->code());
    return 1;
  }
  return 0;
}

}  // namespace

int runPrivilegedTool(int argumentCount, const char* const* arguments, host::Host& host, const ClassRegistry& classes,
                      const StandardStreams& streams) {
  if (argumentCount > 2) return 1;

  const auto information = informationDictionary(*host.mainBundle);
  const auto* principalClass = classes.principalClass(textIn(information, "NSPrincipalClass"));
  if (!principalClass) {
    streams.error(kNoPrincipalClass);
    return 1;
  }
  const auto& operationSet = (*principalClass)(*host.systemLog);
  const auto version = textIn(information, "CFBundleShortVersionString");

  if (argumentCount == 2) return answerArgument(arguments[1], information, streams);

  const Log sysLog(*host.systemLog, textIn(information, "CFBundleIdentifier"), kLogCategory);
  const bool isVersionMatching = version == operationSet.implementationVersion();
  if (!isVersionMatching) {
    sysLog.fault("Executable version ({}) does not match implementation version of privileged command set ({}).",
                 version, operationSet.implementationVersion());
  }
  int status = 1;
  if (host.currentProcess->realUserID() != 0) {
    streams.error(kNotRoot);
    sysLog.error("{}", kNotRoot);
  } else if (isVersionMatching) {
    status = serve(operationSet, sysLog, host, classes);
  }
  sysLog.notice("Privileged helper is shutting down.");
  return status;
}

}  // namespace vantrell
