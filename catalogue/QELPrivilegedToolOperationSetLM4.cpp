// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "catalogue/QELPrivilegedToolOperationSetLM4.h"

namespace vantrell {

namespace {

constexpr unsigned kMajorVersion = 2;
constexpr unsigned kMinorVersion = 5;

// Code, identifier, authorization policy, feedback, argument count, type codes, presentation. The first five are
// carried out by the service itself, the others by the implementor. The presentation strings are keys of the client's
// tables and stay as they are.
constexpr StaticOperationDescription kCatalogue[] = {
    // clang-format off
    {9998, "nop", 0, kNoFeedback, 0, nullptr, "perform an empty operation to contact its privileged component"},
    {9997, "discard-auth", 0, kNoFeedback, 0, nullptr, "enforce that future privileged commands require new authorization"},
    {9996, "delete-files", 1, kNoFeedback, kVariableArgumentCount, nullptr, "delete files of the privileged auxiliary program"},
    {9995, "perform-uninstall", 1, kNoFeedback, 3, "NSS", "uninstall the privileged auxiliary program"},
    {9994, "check-securitypolicy", 0, kNoFeedback, 0, "", "check the security policy of the operating system"},
    {0, "modify-systemfile", 1, kNoFeedback, 3, "SDN", "modify a file owned by the operating system"},
    {1, "create-fileobject", 1, kNoFeedback, 2, "SS", "create a file system object in a possibly protected folder"},
    {2, "rename-fileobject", 1, kNoFeedback, 2, "SS", "rename a file system object in a possibly protected folder"},
    {3, "delete-fileobjects", 1, kProgressFeedback, kVariableArgumentCount, nullptr, "delete file system objects independent of their permission settings"},
    {4, "delete-foldercontents", 1, kProgressFeedback, kVariableArgumentCount, nullptr, "delete the contents of one or more folders"},
    {5, "inspect-fileobject", 1, kNoFeedback, 1, "S", "check whether a file is present in a possibly protected folder"},
    {6, "touch-fileobject", 1, kNoFeedback, 1, "S", "set the modification time of a file in a possibly protected folder"},
    {7, "modify-protection", 1, kNoFeedback, 4, "SNNN", "modify the protection setting of a file system object"},
    {8, "modify-hfsattr", 1, kNoFeedback, 4, "SNNN", "modify the classic HFS attributes of a file system object"},
    {9, "create-link", 1, kNoFeedback, 3, "SSN", "create a file system link in a possibly protected folder"},
    {10, "search-agedfiles", 1, kProgressFeedback, 3, "SNN", "search for files of a certain age in a possibly protected folder"},
    {11, "search-filenames", 1, kProgressFeedback, 4, "SSSN", "search for files with a name pattern in a possible protected folder"},
    {12, "search-patterns", 1, kProgressFeedback, kVariableArgumentCount, nullptr, "search for files that match certain name patterns"},
    {13, "search-fileorphans", 1, kProgressFeedback, 2, "SN", "search for file system objects which have unknown owners"},
    {14, "inspect-storagesize", 1, kNoFeedback, 1, "S", "determine the storage size of a hierarchy of possible protected folders"},
    {15, "modify-kernelsetting", 1, kNoFeedback, 2, "SN", "change a setting in the running operating system kernel"},
    {16, "modify-nvram", 1, kNoFeedback, 2, "SS", "change a setting in non-volatile memory"},
    {17, "modify-preferences", 1, kNoFeedback, 5, "SSSSS", "change a preference value affecting a different user or all users"},
    {18, "modify-sysconf", 1, kNoFeedback, 4, "SSSS", "change a system configuration setting"},
    {19, "signal-process", 1, kNoFeedback, 2, "NN", "send a signal to a running process"},
    {20, "modify-acl", 1, kNoFeedback, 2, "SD", "change the Access Control List for a file system object"},
    {21, "prop-permissions", 1, kProgressFeedback, 3, "SNN", "propagate permission settings for a hierarchy of files and folders"},
    {22, "execute-utility", 1, kLiveOutputFeedback, kVariableArgumentCount, nullptr, "run a utility program of the operating system"},
    {23, "enable-ipvsix", 1, kNoFeedback, 3, "SSN", "control IPv6 support of a network interface"},
    {24, "rename-stashfolder", 1, kNoFeedback, 3, "SSN", "move a possibly protected folder"},
    {25, "create-installmedia", 1, kLiveOutputFeedback, 2, "SS", "let an Apple OS installer create install media"},
    {26, "erase-diskblocks", 1, kNoFeedback, 2, "SN", "erase blocks of a physical storage device"},
    {27, "write-smcvalue", 1, kNoFeedback, 2, "SD", "modify a value of the System Management Controller"},
    {kEndOfCatalogueCode, nullptr, 0, kNoFeedback, 0, nullptr, nullptr},
    // clang-format on
};

}  // namespace

QELPrivilegedToolOperationSetLM4::QELPrivilegedToolOperationSetLM4(host::SystemLog& systemLog) {
  implementationCode_ = "lm4";
  implementationVersion_ = std::to_string(kMajorVersion) + "." + std::to_string(kMinorVersion);
  enterOperations(kCatalogue, systemLog);
}

QELPrivilegedToolOperationSetLM4& QELPrivilegedToolOperationSetLM4::privilegedOperationSet(host::SystemLog& systemLog) {
  static QELPrivilegedToolOperationSetLM4 instance(systemLog);
  return instance;
}

std::string QELPrivilegedToolOperationSetLM4::fileNameForHelper() const {
  return "Vantrell-PrivilegedTool";
}

}  // namespace vantrell
