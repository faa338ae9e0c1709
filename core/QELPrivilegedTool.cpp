// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "core/QELPrivilegedTool.h"

#include <array>
#include <bit>
#include <utility>

namespace vantrell {

std::unique_ptr<QELPrivilegedTool> QELPrivilegedTool::initForOperationSet(
    const QELPrivilegedToolOperationSet* operationSet, const Log* usingSubsystemLog, host::Host& host,
    const ClassRegistry& classes) {
  if (!operationSet || !usingSubsystemLog) return nullptr;
  std::unique_ptr<QELPrivilegedTool> tool(new QELPrivilegedTool(*operationSet, *usingSubsystemLog, host, classes));
  // A probe only; each request gets an implementor of its own.
  if (!tool->makeImplementor()) {
    usingSubsystemLog->error("Fatal error in privileged tool: no implementor found for operation set ({})!",
                             operationSet->implementationCode());
    return nullptr;
  }
  tool->prepareToListen();
  return tool;
}

QELPrivilegedTool::QELPrivilegedTool(const QELPrivilegedToolOperationSet& operationSet, const Log& sysLog,
                                     host::Host& host, const ClassRegistry& classes)
    : sysLog_(sysLog),
      operationSet_(operationSet),
      host_(host),
      classes_(classes),
      processInfo_(*host.fileSystem, *host.processTable),
      smcController_(*host.smcDriver, *host.systemLog) {}

void QELPrivilegedTool::prepareToListen() {
  if (auto listener = host_.transport->makeListener(operationSet_.serviceIdentifierForHelper())) {
    listener_ = std::move(*listener);
    listener_->setDelegate(this);
  } else {
    listenerError_ = listener.error();
  }
  // Without a prefix no client gets a key, and every request fails the token check.
  if (const auto path = host_.mainBundle->executablePath()) {
    keyPrefix_ = operationSet_.keyPrefixBasedOnPath(*path, host_);
  }
  operationQueue_ = std::make_unique<OperationQueue>();
}

QELPrivilegedTool::~QELPrivilegedTool() = default;

std::unique_ptr<QELPrivilegedOperationSetImplementor> QELPrivilegedTool::makeImplementor() {
  const auto* make = classes_.implementorClass(operationSet_.nameOfImplementationClass());
  return make ? (*make)(&operationSet_, this) : nullptr;
}

ErrorOrNil QELPrivilegedTool::startListening() {
  return listener_ ? listener_->resume() : listenerError_;
}

ErrorOrNil QELPrivilegedTool::run() {
  if (auto error = startListening()) return error;
  host_.currentProcess->runMainLoop();
  return std::nullopt;
}

void QELPrivilegedTool::terminatePrivilegedHelper() {
  sysLog_.info("Terminating privileged tool.");
  if (listener_) {
    listener_->suspend();
    listener_->invalidate();
  }
  host_.currentProcess->exit(0);
}

bool QELPrivilegedTool::listenerShouldAcceptNewConnection(host::Listener& listener, host::Connection& newConnection) {
  if (&listener != listener_.get()) {
    sysLog_.error("{}: received bad XPC connection request. Ignoring ...\n", kClassName);
    return false;
  }
  newConnection.setExportedObject(*this);
  newConnection.resume();
  return true;
}

void QELPrivilegedTool::getVersionStringUsingReply(Reply<std::string> reply) {
  reply(operationSet_.implementationVersion());
}

void QELPrivilegedTool::registerClientWithPID(std::int32_t pid, Reply<Data> saltReply) {
  sysLog_.info("Beginning work for client {}.", pid);
  Data salt(QELPrivilegedToolOperationSet::kSaltSize);
  // Without randomness there is no secret, and so no entry: requests will be refused as not registered.
  const bool isRandom = !host_.cryptography->randomBytes(salt);
  clients_.setKeyForClient(pid, keyPrefix_ && isRandom ? operationSet_.keyForPrefix(*keyPrefix_, salt) : std::nullopt);
  saltReply(std::move(salt));
}

void QELPrivilegedTool::unregisterClientWithPID(std::int32_t pid) {
  sysLog_.info("Finishing work for client {}.", pid);
  const auto remaining = clients_.removeClient(pid);
  sysLog_.info("{} clients remaining.", remaining);
  if (remaining == 0) terminatePrivilegedHelper();
}

}  // namespace vantrell
