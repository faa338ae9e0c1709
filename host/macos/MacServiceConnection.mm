// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/macos/MacServiceConnection.h"

#include <algorithm>
#include <string>

#include "foundation/PosixCodes.h"
#include "host/macos/FoundationValues.h"
#include "host/macos/MacFeedbackListener.h"
#include "host/macos/SendBarrier.h"
#include "host/posix/MessageLimits.h"
#include "host/posix/MessageSize.h"

namespace vantrell::host {

namespace {

/// How long the service has for its first answer, its start included.
constexpr std::chrono::seconds kFirstAnswerLimit{25};
/// Handlers of a connection's end and of its requests' failures are called in no order.
constexpr std::chrono::seconds kTimeAfterEnd{2};

/// Failures of a connection, which the platform reports in the Cocoa domain. Before the first answer, what can't be
/// connected to isn't there.
std::int64_t codeOfFailure(NSError* error, bool hadAnswer) {
  if (![error.domain isEqualToString:NSCocoaErrorDomain]) return posix::kProtocol;
  switch (error.code) {
    case NSXPCConnectionInterrupted:
      return posix::kConnectionReset;
    case NSXPCConnectionInvalid:
      return hadAnswer ? posix::kConnectionReset : posix::kNoEntry;
    default:
      return posix::kProtocol;
  }
}

/// The interface lets collections hold property-list types; another one would end the connection at the far end.
bool isPropertyList(const Value& value) {
  if (const auto* elements = value.asArray()) return std::ranges::all_of(*elements, isPropertyList);
  if (const auto* entries = value.asDictionary()) {
    return std::ranges::all_of(*entries, [](const DictionaryEntry& entry) { return isPropertyList(entry.value); });
  }
  return !value.isNull() && !value.asError();
}

Result<NSArray*> sendable(DataView token, const Array& arguments) {
  if (token.size() + heldBytes(arguments) > kMaximumMessageBytes) return posixFailure(posix::kMessageSize);
  NSArray* objects = nil;
  if (std::ranges::all_of(arguments, isPropertyList)) objects = arrayFrom(arguments, WithoutObject::Refuse);
  if (!objects) return posixFailure(posix::kInvalidArgument);
  return objects;
}

}  // namespace

template <class T>
Result<T> ConnectionWatch::wait(Outcome<T>& outcome, std::optional<std::chrono::milliseconds> limit) {
  const auto settled = [&outcome] { return outcome.has_value(); };
  const auto settledOrEnded = [&] { return outcome.has_value() || ended_; };
  std::unique_lock lock(mutex_);
  if (limit) {
    if (!changed_.wait_for(lock, *limit, settledOrEnded)) return posixFailure(posix::kTimedOut);
  } else {
    changed_.wait(lock, settledOrEnded);
  }
  if (!changed_.wait_for(lock, kTimeAfterEnd, settled)) return posixFailure(posix::kConnectionReset);
  return *outcome;
}

Result<std::unique_ptr<ServiceConnection>> MacServiceConnection::open(NSXPCConnection* connection) {
  auto opened = std::make_unique<MacServiceConnection>(connection);
  if (const auto version = opened->askVersion(kFirstAnswerLimit); !version) return failure(version.error());
  opened->hadAnswer_ = true;
  return opened;
}

MacServiceConnection::MacServiceConnection(NSXPCConnection* connection) : connection_(connection) {
  const auto watch = watch_;
  const auto ended = ^{
    watch->noteEnd();
  };
  connection_.remoteObjectInterface = interfaceForToolProtocol();
  connection_.interruptionHandler = ended;
  connection_.invalidationHandler = ended;
  [connection_ resume];
}

MacServiceConnection::~MacServiceConnection() {
  @autoreleasepool {
    [connection_ invalidate];
  }
}

template <class T, class Send>
Result<T> MacServiceConnection::request(Send send, Limit limit) {
  if (watch_->hasEnded()) return posixFailure(posix::kNotConnected);
  const auto watch = watch_;
  const bool hadAnswer = hadAnswer_;
  // Kept by the reply's handlers, which may be called long after a limit has passed.
  const auto outcome = std::make_shared<ConnectionWatch::Outcome<T>>();
  @autoreleasepool {
    @try {
      const Proxy proxy = [connection_ remoteObjectProxyWithErrorHandler:^(NSError* error) {
        watch->settle<T>(*outcome, posixFailure(codeOfFailure(error, hadAnswer)));
      }];
      send(proxy, [watch, outcome](Result<T> result) { watch->settle<T>(*outcome, std::move(result)); });
    } @catch (NSException*) {
      return posixFailure(posix::kInvalidArgument);
    }
  }
  return watch_->wait(*outcome, limit);
}

Result<std::string> MacServiceConnection::askVersion(Limit limit) {
  return request<std::string>(
      [](Proxy proxy, auto answer) {
        [proxy getVersionStringUsingReply:^(NSString* version) {
          answer(version ? Result<std::string>(textFrom(version)) : posixFailure(posix::kProtocol));
        }];
      },
      limit);
}

template <class Send>
ErrorOrNil MacServiceConnection::sendOneWay(Send send) {
  if (watch_->hasEnded()) return Error::posix(posix::kNotConnected);
  const auto watch = watch_;
  const auto outcome = std::make_shared<ConnectionWatch::Outcome<bool>>();
  @autoreleasepool {
    @try {
      send(static_cast<Proxy>(connection_.remoteObjectProxy));
    } @catch (NSException*) {
      return Error::posix(posix::kInvalidArgument);
    }
  }
  // A process that ends right after this would take the message with it. Where there are no barriers, nothing tells
  // when it has left.
  if (!hasSendBarriers()) return std::nullopt;
  raiseSendBarrier(connection_, ^{
    watch->settle<bool>(*outcome, true);
  });
  const Result<bool> left = watch_->wait(*outcome);
  return left ? std::nullopt : ErrorOrNil(left.error());
}

Result<std::string> MacServiceConnection::getVersionString() {
  return askVersion(std::nullopt);
}

Result<Data> MacServiceConnection::registerClientWithPID(std::int32_t pid) {
  return request<Data>([pid](Proxy proxy, auto answer) {
    [proxy registerClientWithPID:pid
                  usingSaltReply:^(NSData* salt) {
                    answer(salt ? Result<Data>(bytesFrom(salt)) : posixFailure(posix::kProtocol));
                  }];
  });
}

ErrorOrNil MacServiceConnection::unregisterClientWithPID(std::int32_t pid) {
  return sendOneWay([pid](Proxy proxy) { [proxy unregisterClientWithPID:pid]; });
}

Result<ErrorOrNil> MacServiceConnection::performPrivilegedOperation(std::uint64_t code, DataView token,
                                                                    FeedbackListener* feedback,
                                                                    const Array& arguments) {
  @autoreleasepool {
    auto* listener = dynamic_cast<MacFeedbackListener*>(feedback);
    NSXPCListenerEndpoint* const endpoint = listener ? listener->takeEndpoint() : nil;
    if (feedback && !endpoint) return posixFailure(posix::kInvalidArgument);
    const Result<NSArray*> objects = sendable(token, arguments);
    if (!objects) return failure(objects.error());
    auto result = request<ErrorOrNil>([&](Proxy proxy, auto answer) {
      [proxy performPrivilegedOperation:code
                              withToken:dataFrom(token)
                       feedbackEndpoint:endpoint
                              arguments:*objects
                             usingReply:^(NSError* error) {
                               answer(error ? ErrorOrNil(errorFrom(error)) : ErrorOrNil());
                             }];
    });
    if (listener) listener->inbox()->requestAnswered();
    return result;
  }
}

ErrorOrNil MacServiceConnection::cancelPrivilegedOperation(std::uint64_t code, DataView token, const Array& arguments) {
  @autoreleasepool {
    const Result<NSArray*> objects = sendable(token, arguments);
    if (!objects) return objects.error();
    return sendOneWay([&](Proxy proxy) {
      [proxy cancelPrivilegedOperation:code previouslyAuthorizedWithToken:dataFrom(token) arguments:*objects];
    });
  }
}

}  // namespace vantrell::host
