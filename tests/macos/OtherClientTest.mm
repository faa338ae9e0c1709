// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <future>
#include <memory>
#include <thread>

#import <Foundation/Foundation.h>
#include <gmock/gmock.h>

#include "foundation/PosixCodes.h"
#include "host/macos/FoundationValues.h"
#include "host/macos/ListenerEndpoint.h"
#include "host/macos/SendBarrier.h"
#include "tests/macos/AnonymousWire.h"

/// The service as a client of another maker declares it.
@protocol OtherClientsToolProtocol
- (void)getVersionStringUsingReply:(void (^)(NSString*))reply;
- (void)registerClientWithPID:(pid_t)pid usingSaltReply:(void (^)(NSData*))reply;
- (void)unregisterClientWithPID:(pid_t)pid;
- (void)performPrivilegedOperation:(unsigned long long)code
                         withToken:(NSData*)token
                  feedbackEndpoint:(NSXPCListenerEndpoint*)endpoint
                         arguments:(NSArray*)arguments
                        usingReply:(void (^)(NSError*))reply;
- (void)cancelPrivilegedOperation:(unsigned long long)code
    previouslyAuthorizedWithToken:(NSData*)token
                        arguments:(NSArray*)arguments;
@end

@protocol OtherClientsFeedbackProtocol
- (void)processPrivilegedOperationFeedback:(NSDictionary*)feedback;
@end

/// Takes feedback as such a client does.
@interface OtherClientsFeedback : NSObject <NSXPCListenerDelegate, OtherClientsFeedbackProtocol>
@property(atomic, readonly) NSArray<NSDictionary*>* messages;
@end

@implementation OtherClientsFeedback {
  NSMutableArray* messages_;
}
- (instancetype)init {
  self = [super init];
  if (self) messages_ = [NSMutableArray array];
  return self;
}
- (BOOL)listener:(NSXPCListener*)listener shouldAcceptNewConnection:(NSXPCConnection*)connection {
  connection.exportedInterface = [NSXPCInterface interfaceWithProtocol:@protocol(OtherClientsFeedbackProtocol)];
  connection.exportedObject = self;
  [connection resume];
  return YES;
}
- (void)processPrivilegedOperationFeedback:(NSDictionary*)feedback {
  @synchronized(self) {
    [messages_ addObject:feedback];
  }
}
- (NSArray<NSDictionary*>*)messages {
  @synchronized(self) {
    return [messages_ copy];
  }
}
@end

// What a client that knows nothing of this project's own classes may rely on, and what a hostile one can't do.

namespace vantrell::tests {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;

class OtherClient : public testing::Test {
 protected:
  void SetUp() override {
    wire_.start();
    connection_ = connect([NSXPCInterface interfaceWithProtocol:@protocol(OtherClientsToolProtocol)]);
  }
  void TearDown() override { [connection_ invalidate]; }

  NSXPCConnection* connect(NSXPCInterface* interface) {
    const auto endpoint = wire_.endpoint();
    NSXPCConnection* const connection =
        [[NSXPCConnection alloc] initWithListenerEndpoint:static_cast<host::ListenerEndpoint*>(endpoint.get())->get()];
    connection.remoteObjectInterface = interface;
    [connection resume];
    return connection;
  }
  id<OtherClientsToolProtocol> service() {
    return [connection_ synchronousRemoteObjectProxyWithErrorHandler:^(NSError* error) {
      ADD_FAILURE() << error.description.UTF8String;
    }];
  }
  NSError* perform(NSArray* arguments, NSData* token = nil, NSXPCListenerEndpoint* endpoint = nil) {
    __block NSError* result = nil;
    [service() performPrivilegedOperation:12
                                withToken:token
                         feedbackEndpoint:endpoint
                                arguments:arguments
                               usingReply:^(NSError* error) {
                                 result = error;
                               }];
    return result;
  }
  void expectOthersAreServed() {
    const auto other = wire_.connect();
    ASSERT_TRUE(other);
    EXPECT_EQ(other->getVersionString().value(), "2.5");
  }

  AnonymousWire wire_;
  NSXPCConnection* connection_ = nil;
};

TEST_F(OtherClient, IsServed) {
  __block NSString* version = nil;
  [service() getVersionStringUsingReply:^(NSString* reply) {
    version = reply;
  }];
  EXPECT_TRUE([version isEqualToString:@"2.5"]);
  __block NSData* salt = nil;
  [service() registerClientWithPID:7
                    usingSaltReply:^(NSData* reply) {
                      salt = reply;
                    }];
  EXPECT_EQ(host::bytesFrom(salt), (Data{1, 2, 3, 7}));
  [connection_.remoteObjectProxy unregisterClientWithPID:7];
  [connection_.remoteObjectProxy cancelPrivilegedOperation:3 previouslyAuthorizedWithToken:nil arguments:@[]];
  EXPECT_TRUE(wire_.service.waitForEvent("cancel 3"));
  EXPECT_THAT(wire_.service.events(), ElementsAre("register 7", "unregister 7", "cancel 3"));
}

TEST_F(OtherClient, ItsArgumentsAndItsAnswerArriveAsTheyAre) {
  TestService::Performed seen{};
  wire_.service.onPerform = [&](TestService::Performed call) {
    seen.code = call.code;
    seen.token = call.token;
    seen.arguments = call.arguments;
    call.reply(Error("com.vantrell.Test", 4, {{"NSLocalizedDescription", "text"}, {"count", 3}, {"flag", true}}));
  };
  NSError* const result =
      perform(@[ @"text", @5, @YES, [NSData dataWithBytes:"ab" length:2] ], [NSData dataWithBytes:"t" length:1]);
  EXPECT_EQ(seen.code, 12U);
  EXPECT_EQ(seen.token, Data{'t'});
  ASSERT_TRUE(seen.arguments);
  EXPECT_THAT(*seen.arguments, ElementsAre(Value("text"), Value(5), Value(true), Value(Data{'a', 'b'})));
  EXPECT_EQ(seen.arguments->at(1).asNumber()->kind(), Number::Kind::Signed);
  EXPECT_EQ(seen.arguments->at(2).asNumber()->kind(), Number::Kind::Boolean);
  EXPECT_TRUE([result.domain isEqualToString:@"com.vantrell.Test"]);
  EXPECT_EQ(result.code, 4);
  EXPECT_TRUE([result.localizedDescription isEqualToString:@"text"]);
  EXPECT_TRUE([result.userInfo[@"count"] isEqual:@3]);
}

TEST_F(OtherClient, ANilArrayIsToldFromAnEmptyOne) {
  std::vector<bool> given;
  wire_.service.onPerform = [&](TestService::Performed call) {
    given.push_back(call.arguments.has_value());
    call.reply(std::nullopt);
  };
  EXPECT_EQ(perform(nil), nil);
  EXPECT_EQ(perform(@[]), nil);
  EXPECT_THAT(given, ElementsAre(false, true));
}

TEST_F(OtherClient, ReceivesFeedback) {
  wire_.service.onPerform = [&](TestService::Performed call) {
    auto feedback = wire_.transport.connectionToEndpoint(std::move(call.endpoint));
    ASSERT_TRUE(feedback.has_value());
    (*feedback)->resume();
    (*feedback)->processPrivilegedOperationFeedback({{"ProgressFraction", 0.0}});
    (*feedback)->processPrivilegedOperationFeedback({{"FinalFeedbackMessage", true}});
    std::thread([feedback = *feedback, reply = std::move(call.reply)]() mutable {
      std::this_thread::sleep_for(250ms);
      feedback->suspend();
      feedback->invalidate();
      reply(std::nullopt);
    }).detach();
  };
  NSXPCListener* const listener = [NSXPCListener anonymousListener];
  OtherClientsFeedback* const feedback = [[OtherClientsFeedback alloc] init];
  listener.delegate = feedback;
  [listener resume];
  EXPECT_EQ(perform(@[], nil, listener.endpoint), nil);
  EXPECT_TRUE([feedback.messages isEqual:(@[ @{@"ProgressFraction" : @0.0}, @{@"FinalFeedbackMessage" : @YES} ])]);
  [listener invalidate];
}

TEST_F(OtherClient, ArgumentsThatAreTooDeepAreRefusedAndTheConnectionLivesOn) {
  NSArray* deep = @[];
  for (int level = 0; level < 40; ++level) deep = @[ deep ];
  NSError* const refusal = perform(deep);
  EXPECT_EQ(host::errorFrom(refusal), Error::posix(posix::kInvalidArgument));
  EXPECT_TRUE(wire_.service.events().empty());
  EXPECT_EQ(perform(@[]), nil);
}

TEST_F(OtherClient, ObjectsOfOtherClassesNeverReachTheService) {
  NSXPCInterface* const permissive = [NSXPCInterface interfaceWithProtocol:@protocol(OtherClientsToolProtocol)];
  [permissive setClasses:[NSSet setWithObjects:[NSArray class], [NSString class], [NSURL class], nil]
             forSelector:@selector(performPrivilegedOperation:withToken:feedbackEndpoint:arguments:usingReply:)
           argumentIndex:3
                 ofReply:NO];
  NSXPCConnection* const hostile = connect(permissive);
  const auto failed = std::make_shared<std::promise<void>>();
  [[hostile remoteObjectProxyWithErrorHandler:^(NSError*) {
    failed->set_value();
  }] performPrivilegedOperation:12
                      withToken:nil
               feedbackEndpoint:nil
                      arguments:@[ [NSURL URLWithString:@"https://example.com"] ]
                     usingReply:^(NSError*) {
                       ADD_FAILURE() << "it was answered";
                     }];
  EXPECT_EQ(failed->get_future().wait_for(kPatience), std::future_status::ready);
  EXPECT_TRUE(wire_.service.events().empty());
  expectOthersAreServed();
  [hostile invalidate];
}

TEST_F(OtherClient, WhatItSentBeforeItLeftIsDelivered) {
  if (!host::hasSendBarriers()) GTEST_SKIP() << "needs macOS 10.15";
  for (int i = 0; i < 50; ++i) {
    NSXPCConnection* const brief = connect([NSXPCInterface interfaceWithProtocol:@protocol(OtherClientsToolProtocol)]);
    [brief.remoteObjectProxy unregisterClientWithPID:i];
    const auto sent = std::make_shared<std::promise<void>>();
    host::raiseSendBarrier(brief, ^{
      sent->set_value();
    });
    ASSERT_EQ(sent->get_future().wait_for(kPatience), std::future_status::ready);
    [brief invalidate];
    EXPECT_TRUE(wire_.service.waitForEvent("unregister " + std::to_string(i)));
  }
}

}  // namespace
}  // namespace vantrell::tests
