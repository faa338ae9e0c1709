// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdint>

#import <Foundation/Foundation.h>

// What travels between client and helper, as Objective-C: selectors and argument types are the contract with clients
// that know nothing of this project. For Objective-C++ sources only.

/// What the service offers (see the C++ class of this name). Reply blocks are called once.
@protocol QELPrivilegedToolProtocol
- (void)getVersionStringUsingReply:(void (^_Nonnull)(NSString* _Nullable version))reply;
- (void)registerClientWithPID:(std::int32_t)pid usingSaltReply:(void (^_Nonnull)(NSData* _Nullable salt))reply;
- (void)unregisterClientWithPID:(std::int32_t)pid;
- (void)performPrivilegedOperation:(std::uint64_t)code
                         withToken:(nullable NSData*)token
                  feedbackEndpoint:(nullable NSXPCListenerEndpoint*)endpoint
                         arguments:(nullable NSArray*)arguments
                        usingReply:(void (^_Nonnull)(NSError* _Nullable result))reply;
- (void)cancelPrivilegedOperation:(std::uint64_t)code
    previouslyAuthorizedWithToken:(nullable NSData*)token
                        arguments:(nullable NSArray*)arguments;
@end

/// What a client offers for the length of one operation.
@protocol QELPrivilegedOperationFeedbackProtocol
- (void)processPrivilegedOperationFeedback:(nonnull NSDictionary*)feedback;
@end

namespace vantrell::host {

/// Made from the protocols as they stand: without classes of their own, arrays and dictionaries may hold property-list
/// types, which is what both sides send. A message with an object of any other class does not decode: the platform
/// drops it before it reaches the exported object, and may end the connection.
NSXPCInterface* _Nonnull interfaceForToolProtocol();
NSXPCInterface* _Nonnull interfaceForFeedbackProtocol();

}  // namespace vantrell::host
