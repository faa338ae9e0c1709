// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/LinuxConfigurationSession.h"

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <utility>

#include <net/if.h>

#include "foundation/PosixCodes.h"
#include "foundation/PropertyList.h"
#include "host/linux/FolderChain.h"
#include "host/linux/LinuxKernelSettings.h"

namespace vantrell::host {
namespace {

constexpr const char* kFolders[] = {"Library", "Preferences", "SystemConfiguration"};
constexpr char kServices[] = "NetworkServices";
constexpr char kIpv6[] = "IPv6";
constexpr char kInactive[] = "__INACTIVE__";

Dictionary* dictionaryIn(Dictionary* dictionary, std::string_view key) {
  auto* value = dictionary ? dictionary->find(key) : nullptr;
  return value ? value->asDictionary() : nullptr;
}

Dictionary* serviceIn(Dictionary& contents, std::string_view identifier) {
  return dictionaryIn(dictionaryIn(&contents, kServices), identifier);
}

/// The name of the service's network device, empty where it has none.
std::string deviceOf(Dictionary& service) {
  const auto* interface = dictionaryIn(&service, "Interface");
  const auto* name = interface ? interface->find("DeviceName") : nullptr;
  const auto* text = name ? name->asString() : nullptr;
  return text ? *text : std::string();
}

// The kernel's own rule, without the two folders beside those of the devices, which stand for every device.
bool isDeviceName(std::string_view name) {
  if (name.empty() || name.size() >= IFNAMSIZ || name == "." || name == ".." || name == "all" || name == "default")
    return false;
  return std::ranges::none_of(name, [](unsigned char c) { return c == '/' || c == ':' || c == 0 || std::isspace(c); });
}

class Ipv6Protocol final : public NetworkProtocol {
 public:
  Ipv6Protocol(LinuxConfigurationSession& session, std::string service)
      : session_(session), service_(std::move(service)) {}
  bool setEnabled(bool enabled) override { return session_.setIpv6Enabled(service_, enabled); }

 private:
  LinuxConfigurationSession& session_;
  std::string service_;
};

class ConfiguredService final : public NetworkService {
 public:
  ConfiguredService(LinuxConfigurationSession& session, std::string identifier)
      : session_(session), identifier_(std::move(identifier)) {}
  std::unique_ptr<NetworkProtocol> ipv6Protocol() override {
    if (!session_.ipv6Of(identifier_)) return nullptr;
    return std::make_unique<Ipv6Protocol>(session_, identifier_);
  }

 private:
  LinuxConfigurationSession& session_;
  std::string identifier_;
};

}  // namespace

LinuxConfigurationSession::LinuxConfigurationSession(std::string root, std::string fileName,
                                                     std::string kernelVariables)
    : root_(std::move(root)), fileName_(std::move(fileName)), kernelVariables_(std::move(kernelVariables)) {}

bool LinuxConfigurationSession::openFolder(bool create) {
  if (folder_) return true;
  auto folder = openFolderChain({root_ + "/", kFolders, true, 0755},
                                create ? MissingFolders::AreCreated : MissingFolders::AreErrors);
  if (folder) folder_ = *std::move(folder);
  return static_cast<bool>(folder_);
}

bool LinuxConfigurationSession::access() {
  if (original_) return true;
  if (!openFolder(true)) return false;
  auto file = readPropertyListFile(folder_.get(), fileName_);
  if (!file) return false;
  original_.emplace();
  if (*file) {
    contents_ = std::move((*file)->contents);
    original_ =
        ConfigurationOriginal{(*file)->signature, (*file)->permissions, std::pair((*file)->owner, (*file)->group)};
  }
  return true;
}

bool LinuxConfigurationSession::isStale() const {
  if (!original_) return false;
  const auto now = signatureOfFile(folder_.get(), fileName_);
  return !now || *now != original_->signature;
}

bool LinuxConfigurationSession::lock(bool wait) {
  if (lock_ || !openFolder(true)) return false;
  auto lock = ConfigurationLock::acquire(folder_.get(), fileName_ + kLockSuffix, wait);
  if (!lock || isStale()) return false;
  lock_.emplace(std::move(*lock));
  return true;
}

bool LinuxConfigurationSession::unlock() {
  const bool isReleased = lock_ && lock_->release();
  lock_.reset();
  return isReleased;
}

bool LinuxConfigurationSession::setValue(std::string key, Value value) {
  if (!access()) return false;
  contents_.set(std::move(key), std::move(value));
  isChanged_ = true;
  return true;
}

bool LinuxConfigurationSession::removeValue(std::string_view key) {
  if (!access() || !contents_.remove(key)) return false;
  isChanged_ = true;
  return true;
}

std::unique_ptr<NetworkService> LinuxConfigurationSession::networkService(std::string_view identifier) {
  if (!access() || !serviceIn(contents_, identifier)) return nullptr;
  return std::make_unique<ConfiguredService>(*this, std::string(identifier));
}

Dictionary* LinuxConfigurationSession::ipv6Of(std::string_view service) {
  return access() ? dictionaryIn(serviceIn(contents_, service), kIpv6) : nullptr;
}

bool LinuxConfigurationSession::setIpv6Enabled(const std::string& service, bool enabled) {
  auto* protocol = ipv6Of(service);
  if (!protocol) return false;
  if (enabled) {
    isChanged_ = protocol->remove(kInactive) || isChanged_;
  } else {
    protocol->set(kInactive, true);
    isChanged_ = true;
  }
  const auto device = deviceOf(*serviceIn(contents_, service));
  if (!device.empty()) switches_.insert_or_assign(device, enabled);
  return true;
}

// A device that is not there (unplugged, or IPv6 is not part of the kernel) has nothing to be switched.
bool LinuxConfigurationSession::switchIpv6(const std::string& device, bool enabled) const {
  if (!isDeviceName(device)) return false;
  const auto error =
      writeKernelVariable(kernelVariables_ + "/net/ipv6/conf/" + device + "/disable_ipv6", enabled ? 0 : 1);
  return !error || error->isPosix(posix::kNoEntry);
}

bool LinuxConfigurationSession::applyChanges() {
  while (!switches_.empty()) {
    const auto& [device, enabled] = *switches_.begin();
    if (!switchIpv6(device, enabled)) return false;
    switches_.erase(switches_.begin());
  }
  return true;
}

bool LinuxConfigurationSession::commitChanges() {
  if (!lock_ || isStale()) return false;
  if (!isChanged_) return true;
  const auto content = xmlPropertyListFromValue(Value(contents_));
  if (!content) return false;
  const FileReplacement replacement{fileName_ + kNewFileSuffix, original_->permissions, original_->owner};
  if (replaceFile(folder_.get(), fileName_, *content, replacement)) return false;
  const auto signature = signatureOfFile(folder_.get(), fileName_);
  if (!signature) return false;
  original_->signature = *signature;
  isChanged_ = false;
  return true;
}

}  // namespace vantrell::host
