// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <string>

#include "foundation/PropertyList.h"
#include "tests/codesign/TestSigner.h"

namespace vantrell::tests {

inline Data fileContent(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return Data(std::istreambuf_iterator<char>(file), {});
}
inline void writeFile(const std::filesystem::path& path, DataView bytes) {
  std::filesystem::create_directories(path.parent_path());
  std::ofstream(path, std::ios::binary) << textOf(bytes);
}
inline void writeFile(const std::filesystem::path& path, std::string_view text) {
  writeFile(path, bytesOf(text));
}

/// Which versions of the list of sealed resources a test writes.
enum class SealVersions : std::uint8_t { Both, FirstOnly, SecondOnly };

/// An application's bundle, or a framework's: filled freely, then signed.
class TestBundle {
 public:
  /// `path` ends in .app, .bundle, … (Contents inside) or .framework (Versions/A inside).
  explicit TestBundle(std::string path, Dictionary information = {}) : path_(std::move(path)) {
    const bool isFramework = path_.ends_with(".framework");
    contents_ = path_ + (isFramework ? "/Versions/A" : "/Contents");
    executable_ = isFramework ? "Program" : "MacOS/Program";
    information.set("CFBundleExecutable", "Program");
    if (!information.contains("CFBundleIdentifier")) information.set("CFBundleIdentifier", "com.example.program");
    writeFile(contents_ + (isFramework ? "/Resources/Info.plist" : "/Info.plist"),
              xmlPropertyListFromValue(information).value());
    if (isFramework) {
      std::filesystem::create_symlink("A", path_ + "/Versions/Current");
      std::filesystem::create_symlink("Versions/Current/Program", path_ + "/Program");
    }
    informationFile_ = isFramework ? "Resources/Info.plist" : "Info.plist";
  }

  const std::string& path() const { return path_; }
  const std::string& contents() const { return contents_; }
  std::string executable() const { return contents_ + "/" + executable_; }
  std::string codeResources() const { return contents_ + "/_CodeSignature/CodeResources"; }

  TestBundle& file(const std::string& name, std::string_view text) {
    writeFile(contents_ + "/" + name, text);
    return *this;
  }
  TestBundle& link(const std::string& name, const std::string& target) {
    std::filesystem::create_directories(std::filesystem::path(contents_ + "/" + name).parent_path());
    std::filesystem::create_symlink(target, contents_ + "/" + name);
    return *this;
  }
  /// Code that was put at `name` already, to be sealed by this hash; as a rule cdHashOf its executable.
  TestBundle& nested(const std::string& name, Data cdHash, std::string requirement = "anchor apple generic") {
    nested_[name] = Dictionary{{"cdhash", std::move(cdHash)}, {"requirement", std::move(requirement)}};
    return *this;
  }
  /// Replaces or adds a rule of the second version.
  TestBundle& rule(const std::string& expression, Value value) {
    rules_.set(expression, std::move(value));
    return *this;
  }
  /// Puts something else in place of an entry that sealing finds, or beside them.
  TestBundle& entry(const std::string& name, Value value) {
    entries_.set(name, std::move(value));
    return *this;
  }

  /// Writes seal and executable.
  void sign(SigningOptions options, SealVersions versions = SealVersions::Both,
            const MachOBuilder& program = sampleProgram()) {
    writeFile(codeResources(), seal(versions));
    options.informationList = fileContent(contents_ + "/" + informationFile_);
    options.codeResources = fileContent(codeResources());
    writeFile(executable(), signedFile(program, options));
  }

 private:
  bool isNested(const std::string& name) const {
    for (const auto& [path, entry] : nested_) {
      if (name == path || name.starts_with(path + "/")) return true;
    }
    return false;
  }

  Data seal(SealVersions versions) const {
    Dictionary first;
    Dictionary second;
    for (const auto& [path, entry] : nested_) second.set(path, entry);
    for (const auto& item : std::filesystem::recursive_directory_iterator(contents_)) {
      const std::string name = item.path().string().substr(contents_.size() + 1);
      if (item.is_directory() && !item.is_symlink()) continue;
      if (name == executable_ || name == "Info.plist" || name == "PkgInfo" || name.starts_with("_CodeSignature") ||
          isNested(name))
        continue;
      if (item.is_symlink()) {
        second.set(name, Dictionary{{"symlink", std::filesystem::read_symlink(item.path()).string()}});
        continue;
      }
      const Data content = fileContent(item.path());
      const Data sha1 = host::codesign::digestOf("SHA1", content);
      second.set(name, Dictionary{{"hash", sha1}, {"hash2", host::codesign::digestOf("SHA256", content)}});
      if (name.starts_with("Resources/")) first.set(name, sha1);
    }
    for (const auto& [key, value] : entries_) second.set(key, value);
    Dictionary list;
    if (versions != SealVersions::SecondOnly) {
      list.set("files", first);
      list.set("rules", Dictionary{{"^Resources/", true}, {"^version.plist$", true}});
    }
    if (versions != SealVersions::FirstOnly) {
      list.set("files2", second);
      list.set("rules2", rules());
    }
    return xmlPropertyListFromValue(list).value();
  }

  /// Those that the platform's own tool writes.
  Dictionary rules() const {
    Dictionary rules{
        {".*\\.dSYM($|/)", Dictionary{{"weight", 11.0}}},
        {"^(.*/)?\\.DS_Store$", Dictionary{{"omit", true}, {"weight", 2000.0}}},
        {"^(Frameworks|SharedFrameworks|PlugIns|Plug-ins|XPCServices|Helpers|MacOS|Library/(Automator|Spotlight|"
         "LoginItems))/",
         Dictionary{{"nested", true}, {"weight", 10.0}}},
        {"^.*", true},
        {"^Info\\.plist$", Dictionary{{"omit", true}, {"weight", 20.0}}},
        {"^PkgInfo$", Dictionary{{"omit", true}, {"weight", 20.0}}},
        {"^Resources/", Dictionary{{"weight", 20.0}}},
        {"^Resources/.*\\.lproj/", Dictionary{{"optional", true}, {"weight", 1000.0}}},
        {"^Resources/.*\\.lproj/locversion.plist$", Dictionary{{"omit", true}, {"weight", 1100.0}}},
        {"^[^/]+$", Dictionary{{"nested", true}, {"weight", 10.0}}},
        {"^version\\.plist$", Dictionary{{"weight", 20.0}}},
    };
    for (const auto& [key, value] : rules_) rules.set(key, value);
    return rules;
  }

  std::string path_;
  std::string contents_;
  std::string executable_;
  std::string informationFile_;
  std::map<std::string, Dictionary> nested_;
  Dictionary rules_;
  Dictionary entries_;
};

}  // namespace vantrell::tests
