// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <iosfwd>
#include <string>

#include "catalogue/QELPrivilegedOperation.h"
#include "catalogue/QELPrivilegedToolOperationSet.h"
#include "client/JsonOutput.h"

namespace vantrell {

/// The rule's short name: "allow", "default", "authenticate-admin".
std::string ruleName(const QELPrivilegedOperation& operation);

/// Every operation in ascending order of codes, one a line beneath a line of headings: code, identifier, rule,
/// feedback, arguments, presentation.
void printCatalogueTable(std::ostream& out, const QELPrivilegedToolOperationSet& operations);

/// The same as one JSON object a line: {"code", "identifier", "rule", "feedback" ("progress", "output" or null),
/// "arguments" (type codes, or null for any number of texts), "presentation"}.
void printCatalogueJson(std::ostream& out, const QELPrivilegedToolOperationSet& operations);

}  // namespace vantrell
