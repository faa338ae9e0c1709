// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/codesign/CodeLocation.h"

#include <utility>

#include "foundation/PathUtilities.h"
#include "foundation/PosixCodes.h"
#include "foundation/PropertyList.h"
#include "host/linux/codesign/Findings.h"
#include "host/linux/codesign/ResourceSeal.h"

namespace vantrell::host::codesign {
namespace {

constexpr std::uint64_t kLargestInformationList = std::uint64_t{16} << 20;
constexpr std::size_t kMaximumUnsealed = 100;

std::unexpected<Error> malformed(const char* text) {
  return codeSigningFailure(code_signing_error::kBadObject, text);
}

bool isPlainName(std::string_view name) {
  return !name.empty() && name != "." && name != ".." && name.find('/') == std::string_view::npos &&
         name.find('\0') == std::string_view::npos;
}

/// Finds the parts of one bundle.
class BundleReader {
 public:
  BundleReader(FileSystem& fileSystem, const std::string& path) : fileSystem_(fileSystem) {
    location_.path = path;
    location_.isBundle = true;
  }

  Result<CodeLocation> read() {
    if (auto error = findLayout()) return failure(*std::move(error));
    const auto name = executableName();
    if (!name) return failure(name.error());
    location_.executable = executableFolder_ + "/" + *name;
    if (!hasType(location_.executable, FileType::Regular)) return malformed("The bundle's executable is missing.");
    location_.exclusions = {"_CodeSignature", "CodeResources", "_MASReceipt",
                            location_.executable.substr(location_.sealedFolder.size() + 1)};
    if (auto error = readSeal()) return failure(*std::move(error));
    return std::move(location_);
  }

 private:
  bool hasType(const std::string& path, FileType type) {
    const auto status = fileSystem_.status(path, FollowLinks::No);
    return status && status->type == type;
  }

  Result<Data> contentOf(const std::string& path, std::uint64_t maximumSize) {
    const auto contents = fileSystem_.loadFile(path, maximumSize);
    if (!contents) return failure(contents.error());
    const DataView bytes = (*contents)->bytes();
    return Data(bytes.begin(), bytes.end());
  }

  ErrorOrNil findLayout() {
    const std::string& path = location_.path;
    if (hasType(path + "/Contents", FileType::Directory)) {
      use(path + "/Contents", path + "/Contents/MacOS", path + "/Contents/Info.plist");
      if (!hasType(executableFolder_, FileType::Directory)) {
        return codeSigningError(code_signing_error::kUnsupported, "The bundle has no executable.");
      }
      noteUnsealed(path, {"Contents"});
    } else if (hasType(path + "/Versions", FileType::Directory)) {
      return useCurrentVersion();
    } else if (hasType(path + "/Resources/Info.plist", FileType::Regular)) {
      use(path, path, path + "/Resources/Info.plist");
    } else {
      use(path, path, path + "/Info.plist");
    }
    return std::nullopt;
  }

  void use(std::string sealedFolder, std::string executableFolder, std::string informationList) {
    location_.sealedFolder = std::move(sealedFolder);
    executableFolder_ = std::move(executableFolder);
    informationListPath_ = std::move(informationList);
  }

  ErrorOrNil useCurrentVersion() {
    const std::string versions = location_.path + "/Versions";
    const auto current = fileSystem_.readLink(versions + "/Current");
    const std::string version = versions + "/" + (current ? *current : "");
    if (!current || !isPlainName(*current) || !hasType(version, FileType::Directory)) {
      return codeSigningError(code_signing_error::kBadObject, "The framework has no current version.");
    }
    use(version, version, version + "/Resources/Info.plist");
    noteUnsealed(location_.path, {"Versions"});
    noteUnsealed(versions, {"Current", *current});
    return std::nullopt;
  }

  /// Beside the sealed folder lie links into it, and what the Finder leaves behind.
  void noteUnsealed(const std::string& folderPath, const std::set<std::string, std::less<>>& expected) {
    const auto folder = fileSystem_.openDirectory(folderPath, FollowLinks::Yes);
    if (!folder) return location_.unsealed.push_back(folderPath);
    while (location_.unsealed.size() < kMaximumUnsealed) {
      const auto entry = (*folder)->next();
      if (!entry) return location_.unsealed.push_back(folderPath);
      if (!*entry) return;
      const std::string name((*entry)->name);
      if (expected.contains(name) || name == ".DS_Store" || name == "Icon\r") continue;
      const std::string path = folderPath + "/" + name;
      if (expected.contains("Versions") && hasType(path, FileType::SymbolicLink)) continue;
      location_.unsealed.push_back(path);
    }
  }

  Result<std::string> executableName() {
    if (!hasType(informationListPath_, FileType::Regular)) return malformed("The bundle has no information list.");
    auto content = contentOf(informationListPath_, kLargestInformationList);
    if (!content) return failure(content.error());
    location_.informationList = *std::move(content);
    const auto list = propertyListFromData(*location_.informationList);
    const Dictionary* dictionary = list ? list->root.asDictionary() : nullptr;
    if (dictionary == nullptr) return malformed("The bundle's information list can't be read.");
    const Value* name = dictionary->find("CFBundleExecutable");
    if (name == nullptr) {
      return codeSigningFailure(code_signing_error::kUnsupported, "The bundle's information list names no executable.");
    }
    if (name->asString() == nullptr || !isPlainName(*name->asString())) {
      return malformed("The bundle's information list names no executable of its own.");
    }
    return *name->asString();
  }

  ErrorOrNil readSeal() {
    const std::string folder = location_.sealedFolder + "/_CodeSignature";
    const std::string path = folder + "/CodeResources";
    if (!hasType(folder, FileType::Directory) || !hasType(path, FileType::Regular)) return std::nullopt;
    auto content = contentOf(path, ResourceSeal::kMaximumSize);
    if (!content) return content.error();
    location_.codeResources = *std::move(content);
    return std::nullopt;
  }

  FileSystem& fileSystem_;
  CodeLocation location_;
  std::string executableFolder_;
  std::string informationListPath_;
};

/// The application whose main executable `path` may be.
std::optional<std::string> applicationAround(const std::string& path) {
  const std::string folder = stringByDeletingLastPathComponent(path);
  const std::string contents = stringByDeletingLastPathComponent(folder);
  if (lastPathComponent(folder) != "MacOS" || lastPathComponent(contents) != "Contents") return std::nullopt;
  return stringByDeletingLastPathComponent(contents);
}

}  // namespace

Result<CodeLocation> locateCode(FileSystem& fileSystem, const std::string& path) {
  const std::string plain(pathWithoutTrailingSlashes(path));
  const auto status = fileSystem.status(plain, FollowLinks::Yes);
  if (!status) return failure(status.error());
  if (status->isDirectory()) return BundleReader(fileSystem, plain).read();
  if (status->type != FileType::Regular) return malformed("This is neither a file nor a bundle.");
  if (const auto application = applicationAround(plain)) {
    auto bundle = BundleReader(fileSystem, *application).read();
    if (bundle && bundle->executable == plain) return bundle;
  }
  CodeLocation location;
  location.path = plain;
  location.executable = plain;
  return location;
}

}  // namespace vantrell::host::codesign
