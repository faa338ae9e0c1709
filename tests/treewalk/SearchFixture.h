// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>

#include "foundation/Date.h"
#include "tests/support/FakeIdentities.h"
#include "tests/treewalk/WalkFixture.h"
#include "treewalk/SearchOperations.h"

namespace vantrell::tests {

inline constexpr std::uint32_t kKnownUser = 7001;
inline constexpr std::uint32_t kNobodys = 7099;

class SearchFeedback final : public QELPrivilegedOperationFeedbackProtocol {
 public:
  void processPrivilegedOperationFeedback(const Dictionary& message) override {
    messages.push_back(message);
    if (onMessage) onMessage(message);
  }

  /// "0" for a message that is a fraction alone, "0:3" for one with as many records, "final".
  Texts summary() const {
    Texts texts;
    for (const auto& message : messages) {
      std::string text;
      if (const auto* fraction = message.find("ProgressFraction")) text += fraction->asNumber()->description();
      if (const auto* records = message.find("FileObjectInfo"))
        text += ":" + std::to_string(records->asArray()->size());
      if (message == Dictionary{{"FinalFeedbackMessage", true}}) text += "final";
      texts.push_back(text);
    }
    return texts;
  }
  Array records() const {
    Array all;
    for (const auto& message : messages) {
      const auto* records = message.find("FileObjectInfo");
      if (records) all.insert(all.end(), records->asArray()->begin(), records->asArray()->end());
    }
    return all;
  }

  std::vector<Dictionary> messages;
  std::function<void(const Dictionary&)> onMessage;
};

/// The operations on a real tree. Base is the fixture to build on.
template <class Base>
class Searches : public Base {
 protected:
  using Operation = ErrorOrNil (SearchOperations::*)(const Array&, SearchOperations::Feedback*,
                                                     const SearchOperations::IsCancelled&);

  ErrorOrNil run(Operation operation, const Array& arguments) {
    feedback_.messages.clear();
    looks_ = 0;
    return (operations_.*operation)(arguments, &feedback_, [this] { return ++looks_ > looksUntilCancelled_; });
  }
  /// Runs an operation that has to succeed; the paths that it tells of, without the folder's own, in order.
  Texts hits(Operation operation, const Array& arguments) {
    EXPECT_EQ(run(operation, arguments), std::nullopt);
    return hitPaths();
  }
  Texts hitPaths() {
    Texts paths;
    for (const auto& record : feedback_.records()) {
      const auto& path = *record.asDictionary()->find("Path")->asString();
      const auto prefix = top() + "/";
      EXPECT_TRUE(path.starts_with(prefix)) << path;
      paths.push_back(path.substr(prefix.size()));
    }
    return inOrder(paths);
  }
  std::string top() { return this->fileManager_.stringByResolvingSymlinksInPath(this->folder_.path()); }

  void setAge(const std::string& path, double days) {
    const auto seconds = Date::now().seconds - static_cast<std::int64_t>(days * 86400);
    const timespec times[2] = {{seconds, 0}, {seconds, 0}};
    ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), times, AT_SYMLINK_NOFOLLOW), 0) << path;
  }
  void makeFiles(int count, const std::string& prefix = "file ") {
    for (int i = 0; i < count; ++i) this->folder_.makeFile(prefix + std::to_string(i), "");
  }
  void give(const std::string& name, std::uint32_t owner) {
    ASSERT_EQ(lchown(this->folder_.path(name).c_str(), owner, owner), 0) << name;
  }

  FakeIdentities identities_{{0, kKnownUser}};
  SearchOperations operations_{this->fileSystem_, this->fileManager_, identities_, this->log_};
  SearchFeedback feedback_;
  int looks_ = 0;
  int looksUntilCancelled_ = 1'000'000;
};

}  // namespace vantrell::tests
