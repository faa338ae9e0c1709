// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "catalogue/OperationArguments.h"
#include "foundation/PosixCodes.h"
#include "system/SettingErrors.h"
#include "system/SystemSettingOperations.h"
#include "system/ValueText.h"

namespace vantrell {
namespace {

using host::SystemConfigurationSession;

/// Gives the lock back at the end of the scope. Nobody could do anything about a failure of that, least of all at a
/// time when the changes are stored.
class Unlocking {
 public:
  explicit Unlocking(SystemConfigurationSession& session) : session_(session) {}
  Unlocking(const Unlocking&) = delete;
  Unlocking& operator=(const Unlocking&) = delete;
  ~Unlocking() { static_cast<void>(session_.unlock()); }

 private:
  SystemConfigurationSession& session_;
};

// In this order: clients know the running system to follow first.
bool applyAndCommit(SystemConfigurationSession& session) {
  return session.applyChanges() && session.commitChanges();
}

ErrorOrNil switchIpv6(SystemConfigurationSession& session, const std::string& serviceIdentifier, bool enable,
                      const Log& sysLog) {
  const auto service = session.networkService(serviceIdentifier);
  if (!service) {
    sysLog.error("Network service with identifier '{}' doesn't exist.", serviceIdentifier);
    return setting_error::preferencesNotUpdated();
  }
  const auto protocol = service->ipv6Protocol();
  if (!protocol) {
    sysLog.error("IPv6 protocol is not supported by selected network service.");
    return setting_error::preferencesNotUpdated();
  }
  if (!protocol->setEnabled(enable) || !applyAndCommit(session)) return setting_error::preferencesNotUpdated();
  return std::nullopt;
}

}  // namespace

ErrorOrNil modifySysconf(const Array& arguments, host::SystemConfiguration& systemConfiguration) {
  const auto* clientName = nameAt(arguments, 0);
  const auto* identifier = textAt(arguments, 1);
  const auto* key = nameAt(arguments, 2);
  const auto* text = textAt(arguments, 3);
  if (!clientName || !identifier || !key || !text) return Error::posix(posix::kInvalidArgument);
  auto value = propertyListValueFromText(*text);
  if (!value) return value.error();

  const auto session = systemConfiguration.open(*clientName, *identifier);
  if (!session) return setting_error::systemConfigurationNotUpdated();
  if (!session->lock(true)) return Error::posix(posix::kBusy);
  const Unlocking unlocking(*session);
  const bool isChanged = *value ? session->setValue(*key, **std::move(value)) : session->removeValue(*key);
  if (!isChanged || !applyAndCommit(*session)) return setting_error::systemConfigurationNotUpdated();
  return std::nullopt;
}

ErrorOrNil enableIpvsix(const Array& arguments, host::SystemConfiguration& systemConfiguration, const Log& sysLog) {
  const auto* clientName = textAt(arguments, 0);
  const auto* service = textAt(arguments, 1);
  const auto* enable = numberAt(arguments, 2);
  if (!clientName || !service || !enable) return Error::posix(posix::kInvalidArgument);

  const auto session = systemConfiguration.open(*clientName, {});
  if (!session) return setting_error::preferencesNotUpdated();
  if (!session->lock(true)) {
    sysLog.error("Network preferences locked by other application.");
    return Error::posix(posix::kBusy);
  }
  const Unlocking unlocking(*session);
  return switchIpv6(*session, *service, enable->boolValue(), sysLog);
}

}  // namespace vantrell
