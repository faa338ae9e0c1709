// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <gtest/gtest.h>

#include "catalogue/QELPrivilegedToolOperationSetLM4.h"
#include "core/ProcessEntry.h"
#include "tests/support/FakeHostParts.h"
#include "tests/support/RecordingLog.h"

namespace vantrell {
namespace {

constexpr char kInformation[] = R"(<plist version="1.0"><dict>
<key>CFBundleIdentifier</key><string>com.example.helper</string>
<key>CFBundleShortVersionString</key><string>%VERSION%</string>
<key>CFBundleVersion</key><string>200203</string>
<key>NSPrincipalClass</key><string>%CLASS%</string>
</dict></plist>)";

std::string information(const std::string& version, const std::string& principalClass) {
  std::string text = kInformation;
  text.replace(text.find("%VERSION%"), 9, version);
  text.replace(text.find("%CLASS%"), 7, principalClass);
  return text;
}

class ProcessEntry : public testing::Test {
 protected:
  ProcessEntry() : host_(host::makeHost()) {
    auto log = std::make_unique<tests::RecordingLog>();
    log_ = log.get();
    host_.systemLog = std::move(log);
    auto process = std::make_unique<tests::FakeCurrentProcess>(std::move(host_.currentProcess));
    process_ = process.get();
    host_.currentProcess = std::move(process);
    classes_.addPrincipalClass(QELPrivilegedToolOperationSetLM4::kClassName,
                               [this](host::SystemLog&) -> const QELPrivilegedToolOperationSet& { return set_; });
    setInformation(information("2.5", QELPrivilegedToolOperationSetLM4::kClassName));
  }

  void setInformation(std::optional<std::string> list) {
    host_.mainBundle = std::make_unique<tests::FakeMainBundle>("/proc/self/exe", std::move(list));
  }

  int run(std::vector<const char*> arguments = {}) {
    arguments.insert(arguments.begin(), "helper");
    return runPrivilegedTool(
        static_cast<int>(arguments.size()), arguments.data(), host_, classes_,
        {[this](std::string_view text) { output_ += text; }, [this](std::string_view text) { error_ += text; }});
  }

  host::Host host_;
  tests::RecordingLog* log_;
  tests::FakeCurrentProcess* process_;
  tests::RecordingLog setLog_;
  QELPrivilegedToolOperationSetLM4 set_{setLog_};
  ClassRegistry classes_;
  std::string output_;
  std::string error_;
};

TEST_F(ProcessEntry, MoreThanOneArgumentEndsSilentlyWith1) {
  setInformation(std::nullopt);
  EXPECT_EQ(run({"version", "more"}), 1);
  EXPECT_EQ(output_ + error_, "");
  EXPECT_TRUE(log_->entries().empty());
}

TEST_F(ProcessEntry, AnyWordBeginningWithVPrintsTheVersionLine) {
  process_->setUserID(1000);
  for (const char* word : {"v", "version", "vx"}) {
    output_.clear();
    EXPECT_EQ(run({word}), 0);
    EXPECT_EQ(output_, "2.5 (Build 200203)\n");
  }
  EXPECT_EQ(error_, "");
  EXPECT_TRUE(log_->entries().empty());
}

TEST_F(ProcessEntry, AnyOtherSingleArgumentEndsSilentlyWith1) {
  for (const char* word : {"", "-v", "Version", "help"}) {
    EXPECT_EQ(run({word}), 1);
  }
  EXPECT_EQ(output_ + error_, "");
  EXPECT_TRUE(log_->entries().empty());
}

TEST_F(ProcessEntry, WithoutPrincipalClassItSaysSo) {
  const auto expectRefusal = [this] {
    error_.clear();
    EXPECT_EQ(run({"version"}), 1);
    EXPECT_EQ(error_, "Internal implementation error: The principal class is either not set or not implemented.\n");
    EXPECT_EQ(output_, "");
  };
  setInformation(information("2.5", "NoSuchClass"));
  expectRefusal();
  setInformation("<plist><dict/></plist>");
  expectRefusal();
  setInformation("no property list \x01");
  expectRefusal();
  setInformation(std::nullopt);
  expectRefusal();
}

TEST_F(ProcessEntry, WithoutRootItSaysSoWithoutANewline) {
  process_->setUserID(1000);
  EXPECT_EQ(run(), 1);
  EXPECT_EQ(error_, "This program needs root privileges.");
  EXPECT_EQ(error_.size(), 35u);
  EXPECT_EQ(log_->entries(),
            (std::vector<tests::RecordingLog::Entry>{
                {host::LogLevel::Error, "com.example.helper", "standard", "This program needs root privileges."},
                {host::LogLevel::Default, "com.example.helper", "standard", "Privileged helper is shutting down."}}));
}

TEST_F(ProcessEntry, AVersionMismatchIsAFaultAndNothingIsServed) {
  setInformation(information("2.4", QELPrivilegedToolOperationSetLM4::kClassName));
  EXPECT_EQ(run(), 1);
  EXPECT_EQ(output_ + error_, "");
  EXPECT_EQ(log_->entries(),
            (std::vector<tests::RecordingLog::Entry>{
                {host::LogLevel::Fault, "com.example.helper", "standard",
                 "Executable version (2.4) does not match implementation version of privileged command set (2.5)."},
                {host::LogLevel::Default, "com.example.helper", "standard", "Privileged helper is shutting down."}}));
}

TEST_F(ProcessEntry, TheMismatchIsLoggedBeforeTheCheckForRoot) {
  setInformation(information("2.4", QELPrivilegedToolOperationSetLM4::kClassName));
  process_->setUserID(1000);
  EXPECT_EQ(run(), 1);
  ASSERT_EQ(log_->entries().size(), 3u);
  EXPECT_EQ(log_->entries()[0].level, host::LogLevel::Fault);
  EXPECT_EQ(log_->entries()[1].message, "This program needs root privileges.");
}

TEST_F(ProcessEntry, WithoutImplementorItEndsWith0) {
  EXPECT_EQ(run(), 0);
  EXPECT_EQ(error_, "");
  EXPECT_EQ(log_->entries(),
            (std::vector<tests::RecordingLog::Entry>{
                {host::LogLevel::Error, "com.example.helper", "standard",
                 "Fatal error in privileged tool: no implementor found for operation set (lm4)!"},
                {host::LogLevel::Default, "com.example.helper", "standard", "Privileged helper is shutting down."}}));
}

TEST_F(ProcessEntry, AnImplementorThatCannotBeMadeCountsAsNone) {
  classes_.addImplementorClass(set_.nameOfImplementationClass(), [](auto*, auto*) { return nullptr; });
  EXPECT_EQ(run(), 0);
  EXPECT_TRUE(log_->contains("Fatal error in privileged tool: no implementor found for operation set (lm4)!"));
}

}  // namespace
}  // namespace vantrell
