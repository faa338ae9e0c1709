// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/macos/ToolExport.h"

#include <cstddef>
#include <optional>
#include <string>
#include <utility>

#include "foundation/PosixCodes.h"
#include "host/macos/FoundationValues.h"
#include "host/macos/ListenerEndpoint.h"
#include "host/posix/MessageLimits.h"
#include "host/posix/MessageSize.h"

namespace vantrell::host {

namespace {

using ClientPointer = std::shared_ptr<ToolClient>;
using Charge = RequestAccount::Charge;

NSString* objectOf(const std::string& version) {
  return stringFrom(version);
}

NSData* objectOf(const Data& salt) {
  return dataFrom(salt);
}

// An answer that no message holds says so in its place.
NSError* objectOf(const ErrorOrNil& result) {
  if (!result) return nil;
  if (heldBytes(result->userInfo()) > kMaximumMessageBytes) return errorFrom(Error::posix(posix::kMessageSize));
  return errorFrom(*result);
}

/// Answers once, and nobody who has gone. Unused it lets go of the block: XPC then fails the client's request.
template <class T, class Block>
Reply<T> replyTo(const ClientPointer& client, Block block, Charge charge = {}) {
  return [client, block = static_cast<Block>([block copy]), charge = std::move(charge)](const T& answer) mutable {
    const Block once = std::exchange(block, nil);
    charge.settle();
    if (!once || client->isDismissed || client->isGone) return;
    @autoreleasepool {
      @try {
        once(objectOf(answer));
      } @catch (NSException*) {
        // A connection that ends at this moment takes no answer.
      }
    }
  };
}

/// Calls the client's object, unless the connection has ended. What runs out of memory ends this one connection.
template <class Call>
void deliver(const ClientPointer& client, Call call) noexcept {
  const CallGate::Pass pass = client->gate->enter();
  if (!pass || client->isDismissed) return;
  try {
    call(*client->object);
  } catch (...) {
    [[NSXPCConnection currentConnection] invalidate];
  }
}

using ResultBlock = void (^)(NSError*);

void refuse(ResultBlock reply, std::int64_t code) {
  if (reply) reply(errorFrom(Error::posix(code)));
}

/// Nothing for nil; false where the array has no value.
bool read(NSArray* objects, std::optional<Array>& arguments) {
  if (!objects) return true;
  arguments = arrayFrom(objects);
  return arguments.has_value();
}

void perform(const ClientPointer& client, std::uint64_t code, NSData* token, NSXPCListenerEndpoint* feedback,
             NSArray* objects, ResultBlock reply) {
  if (token.length > kMaximumMessageBytes) return refuse(reply, posix::kInvalidArgument);
  std::optional<Array> arguments;
  if (!read(objects, arguments)) return refuse(reply, posix::kInvalidArgument);
  Charge charge = RequestAccount::charge(client->account, token.length + (arguments ? heldBytes(*arguments) : 0));
  if (!charge) return refuse(reply, posix::kNoBufferSpace);
  std::unique_ptr<Endpoint> endpoint;
  if (feedback) endpoint = std::make_unique<ListenerEndpoint>(feedback);
  deliver(client, [&](QELPrivilegedToolProtocol& object) {
    object.performPrivilegedOperation(code, bytesFrom(token), std::move(endpoint), std::move(arguments),
                                      replyTo<ErrorOrNil>(client, reply, std::move(charge)));
  });
}

}  // namespace

}  // namespace vantrell::host

using vantrell::Data;
using vantrell::host::ToolClient;

@implementation QELToolExport {
  std::shared_ptr<ToolClient> client_;
}

- (instancetype)initWithClient:(std::shared_ptr<ToolClient>)client {
  self = [super init];
  if (self) client_ = std::move(client);
  return self;
}

- (void)getVersionStringUsingReply:(void (^)(NSString*))reply {
  vantrell::host::deliver(client_, [&](vantrell::QELPrivilegedToolProtocol& object) {
    object.getVersionStringUsingReply(vantrell::host::replyTo<std::string>(client_, reply));
  });
}

- (void)registerClientWithPID:(std::int32_t)pid usingSaltReply:(void (^)(NSData*))reply {
  vantrell::host::deliver(client_, [&](vantrell::QELPrivilegedToolProtocol& object) {
    object.registerClientWithPID(pid, vantrell::host::replyTo<Data>(client_, reply));
  });
}

- (void)unregisterClientWithPID:(std::int32_t)pid {
  vantrell::host::deliver(client_,
                          [pid](vantrell::QELPrivilegedToolProtocol& object) { object.unregisterClientWithPID(pid); });
}

- (void)performPrivilegedOperation:(std::uint64_t)code
                         withToken:(NSData*)token
                  feedbackEndpoint:(NSXPCListenerEndpoint*)endpoint
                         arguments:(NSArray*)arguments
                        usingReply:(void (^)(NSError*))reply {
  try {
    vantrell::host::perform(client_, code, token, endpoint, arguments, reply);
  } catch (...) {
    [[NSXPCConnection currentConnection] invalidate];
  }
}

- (void)cancelPrivilegedOperation:(std::uint64_t)code
    previouslyAuthorizedWithToken:(NSData*)token
                        arguments:(NSArray*)objects {
  vantrell::host::deliver(client_, [&](vantrell::QELPrivilegedToolProtocol& object) {
    std::optional<vantrell::Array> arguments;
    if (token.length > vantrell::host::kMaximumMessageBytes || !vantrell::host::read(objects, arguments)) return;
    object.cancelPrivilegedOperation(code, vantrell::host::bytesFrom(token), std::move(arguments));
  });
}

@end
