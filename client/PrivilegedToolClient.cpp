// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "client/PrivilegedToolClient.h"

#include <utility>

#include "client/ErrorText.h"
#include "client/FeedbackReception.h"
#include "client/RequestToken.h"
#include "foundation/PosixCodes.h"

namespace vantrell {

namespace {

using namespace std::chrono_literals;

// A helper that has lost its last client needs this long at most to be gone, and to be started again.
constexpr int kRegistrationAttempts = 8;
constexpr unsigned kPauseBetweenAttempts = 25;  // milliseconds, times the attempt's number
constexpr std::chrono::milliseconds kPatienceForEnd = 250ms;

bool isEndOfConnection(const Error& error) {
  return error.isPosix(posix::kConnectionReset) || error.isPosix(posix::kNotConnected) ||
         error.isPosix(posix::kBrokenPipe);
}

Error withTexts(std::int64_t code, std::string description, std::string suggestion) {
  return {std::string(kPosixErrorDomain), code,
          Dictionary{{NSLocalizedDescriptionKey, std::move(description)},
                     {NSLocalizedRecoverySuggestionErrorKey, std::move(suggestion)}}};
}

/// The bare error of a connection says neither where to nor what for.
Error unreachable(const HelperLocation& location, const Error& error) {
  const auto reason = textOfError(error).description;
  if (location.way == HelperLocation::Way::Spawn) {
    return withTexts(error.code(), "The helper \"" + location.target + "\" can't be started: " + reason, "");
  }
  return withTexts(
      error.code(), "The service can't be reached at " + location.target + ": " + reason,
      error.isPosix(posix::kAccessDenied) ? "Only root and the members of the socket's group may connect." : "");
}

}  // namespace

Result<std::unique_ptr<PrivilegedToolClient>> PrivilegedToolClient::connect(
    HelperLocation location, const QELPrivilegedToolOperationSet& operations, host::Host& host) {
  std::unique_ptr<PrivilegedToolClient> client(new PrivilegedToolClient(std::move(location), operations, host));
  if (client->location_.way == HelperLocation::Way::Spawn) {
    auto spawned = host.clientTransport->spawnService(client->location_.target);
    if (!spawned) return failure(unreachable(client->location_, spawned.error()));
    client->spawned_ = std::move(*spawned);
  }
  auto connection = client->openConnection();
  if (!connection) return failure(unreachable(client->location_, connection.error()));
  client->connection_ = std::move(*connection);
  return client;
}

PrivilegedToolClient::PrivilegedToolClient(HelperLocation location, const QELPrivilegedToolOperationSet& operations,
                                           host::Host& host)
    : location_(std::move(location)), operations_(operations), host_(host) {}

PrivilegedToolClient::~PrivilegedToolClient() {
  // Nobody is left to hear of a failure.
  static_cast<void>(unregisterClient());
}

Result<std::unique_ptr<host::ServiceConnection>> PrivilegedToolClient::openConnection() {
  switch (location_.way) {
    case HelperLocation::Way::Bus:
      return host_.clientTransport->connectToServiceOnBus(location_.target);
    case HelperLocation::Way::Spawn:
      return host_.clientTransport->connectToAddress(spawned_->address());
    default:
      return host_.clientTransport->connectToAddress(location_.target);
  }
}

Result<std::string> PrivilegedToolClient::versionString() {
  return connection()->getVersionString();
}

ErrorOrNil PrivilegedToolClient::registerClient() {
  const auto prefix = operations_.keyPrefixBasedOnPath(location_.executable, host_);
  if (!prefix) {
    return withTexts(posix::kWrongFormat,
                     "No key can be derived from \"" + location_.executable + "\": it can't be read as an executable.",
                     "Name the executable that the service runs with --helper.");
  }
  auto salt = registerAtService();
  if (!salt) return salt.error();
  auto key = operations_.keyForPrefix(*prefix, *salt);
  if (!key) return Error::posix(posix::kProtocol);
  const std::lock_guard guard(lock_);
  key_ = std::move(*key);
  return std::nullopt;
}

Result<Data> PrivilegedToolClient::registerAtService() {
  const auto pid = host_.currentProcess->identifier();
  for (int attempt = 1;; ++attempt) {
    auto salt = connection()->registerClientWithPID(pid);
    const bool again = !salt && isEndOfConnection(salt.error()) && location_.way != HelperLocation::Way::Spawn &&
                       attempt < kRegistrationAttempts;
    if (!again) return salt;
    host_.currentProcess->sleepForMilliseconds(kPauseBetweenAttempts * static_cast<unsigned>(attempt));
    auto fresh = openConnection();
    if (!fresh) return failure(fresh.error());
    const std::lock_guard guard(lock_);
    connection_ = std::move(*fresh);
  }
}

Result<ErrorOrNil> PrivilegedToolClient::perform(std::uint64_t code, const Array& arguments,
                                                 const FeedbackHandler& handler, OperationCancellation* cancellation) {
  if (cancellation && cancellation->isRequested()) return ErrorOrNil(Error::posix(posix::kCanceled));
  const auto envelope = operations_.standaloneDataForConcretePrivilegedOperation(code, arguments, host_);
  if (!envelope) return posixFailure(posix::kInvalidArgument);
  const auto token = tokenFor(*envelope);
  if (!token) return failure(token.error());

  const auto operation = operations_.operationWithCode(code);
  FeedbackReception reception;
  if (handler && operation && operation->isSupportingFeedback()) {
    if (auto error = reception.open(*host_.clientTransport, handler)) return failure(std::move(*error));
  }
  std::optional<CancellationSender> sender;
  if (cancellation) sender.emplace(*cancellation, [&] { sendCancellation(code, *envelope, arguments); });

  auto answer = connection()->performPrivilegedOperation(code, *token, reception.listener(), arguments);
  sender.reset();
  reception.waitForRest(kFeedbackPatience);
  return answer;
}

Result<Data> PrivilegedToolClient::tokenFor(DataView envelope) const {
  std::optional<Data> key;
  {
    const std::lock_guard guard(lock_);
    key = key_;
  }
  if (!key) return posixFailure(posix::kNotConnected);
  // Sign-extended, as the service reads its clients' process identifiers.
  const auto pid = static_cast<std::uint64_t>(std::int64_t{host_.currentProcess->identifier()});
  return makeRequestToken(pid, *key, envelope, *host_.cryptography);
}

void PrivilegedToolClient::sendCancellation(std::uint64_t code, DataView envelope, const Array& arguments) const {
  const auto renewed = renewedEnvelope(envelope);
  if (!renewed) return;
  const auto token = tokenFor(*renewed);
  if (!token) return;
  // Where the connection has ended, the request itself ends with an error.
  static_cast<void>(connection()->cancelPrivilegedOperation(code, *token, arguments));
}

ErrorOrNil PrivilegedToolClient::unregisterClient() {
  {
    const std::lock_guard guard(lock_);
    if (!std::exchange(key_, std::nullopt)) return std::nullopt;
  }
  const auto service = connection();
  auto error = service->unregisterClientWithPID(host_.currentProcess->identifier());
  // A service that ends now would still take in this user's next command, and drop it.
  if (!error) service->waitUntilClosed(kPatienceForEnd);
  return error;
}

void PrivilegedToolClient::abandon() {
  static_cast<void>(unregisterClient());
  std::shared_ptr<host::SpawnedService> ended;
  const std::lock_guard guard(lock_);
  ended.swap(spawned_);
}

std::optional<int> PrivilegedToolClient::waitForHelperExit(std::chrono::milliseconds limit) {
  const auto service = spawned();
  return service ? service->waitForExit(limit) : std::nullopt;
}

std::shared_ptr<host::ServiceConnection> PrivilegedToolClient::connection() const {
  const std::lock_guard guard(lock_);
  return connection_;
}

std::shared_ptr<host::SpawnedService> PrivilegedToolClient::spawned() const {
  const std::lock_guard guard(lock_);
  return spawned_;
}

}  // namespace vantrell
