// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/macos/CodeSigningObjection.h"

#include <array>
#include <cstdint>
#include <utility>

#import <Security/Security.h>

#include "foundation/Value.h"
#include "host/CodeSignatures.h"
#include "host/macos/FoundationValues.h"

namespace vantrell::host {
namespace {

constexpr NSUInteger kMaximumPaths = 10'000;

/// A list of resources in the platform's error and in ours.
struct ResourceList {
  NSString* key;
  const char* name;
  const char* sentence;
};

std::array<ResourceList, 3> resourceLists() {
  return {{{(__bridge NSString*)kSecCFErrorResourceAdded, SecCSResourceAdded, "Not sealed, but there"},
           {(__bridge NSString*)kSecCFErrorResourceAltered, SecCSResourceAltered, "Not as it was sealed"},
           {(__bridge NSString*)kSecCFErrorResourceMissing, SecCSResourceMissing, "Sealed, but missing"}}};
}

/// Declared as URLs, but texts occur as well; locations may be relative to the bundle's.
std::string pathFrom(id location) {
  if ([location isKindOfClass:NSURL.class]) {
    NSURL* const url = location;
    return textFrom(url.absoluteURL.path);
  }
  return textFrom([location description]);
}

/// Declared as one location, but a full report has lists of them.
std::vector<std::string> pathsFrom(id locations) {
  NSArray* const list = [locations isKindOfClass:NSArray.class] ? locations : @[ locations ];
  std::vector<std::string> paths;
  for (id location in list) {
    if (paths.size() == kMaximumPaths) break;
    paths.push_back(pathFrom(location));
  }
  return paths;
}

void addSentences(const ResourceList& list, const std::vector<std::string>& paths,
                  std::vector<std::string>& sentences) {
  for (const auto& path : paths) sentences.push_back(std::string(list.sentence) + ": " + path);
  if (paths.size() == kMaximumPaths) sentences.emplace_back("There may be more; the list ends here.");
}

std::string sentenceFor(OSStatus status) {
  NSString* const sentence = CFBridgingRelease(SecCopyErrorMessageString(status, nullptr));
  return sentence.length != 0 ? textFrom(sentence) : "OSStatus " + std::to_string(status);
}

/// The platform's sentence, and where it applies as far as that is known.
std::string sentenceFor(OSStatus status, NSDictionary* details) {
  std::string sentence = sentenceFor(status);
  for (const CFStringRef key : {kSecCFErrorPath, kSecCFErrorArchitecture, kSecCFErrorRequirementSyntax}) {
    const id place = details[(__bridge NSString*)key];
    if (place != nil) sentence += " (" + pathFrom(place) + ")";
  }
  return sentence;
}

Error describedError(OSStatus status, std::string sentence) {
  return Error(kCodeSigningErrorDomain, status, {{NSLocalizedDescriptionKey, std::move(sentence)}});
}

}  // namespace

CodeSigningObjection objectionFrom(OSStatus status, NSError* details) {
  NSDictionary* const info = details.userInfo;
  Dictionary lists;
  std::vector<std::string> sentences;
  NSUInteger found = 0;
  for (const auto& list : resourceLists()) {
    const id locations = info[list.key];
    if (locations == nil) continue;
    ++found;
    const auto paths = pathsFrom(locations);
    addSentences(list, paths, sentences);
    if (!paths.empty()) lists.set(list.name, Array(paths.begin(), paths.end()));
  }
  // Anything beside the lists, such as the place of nested code that they belong to, says that more is wrong than they
  // tell.
  if (status == errSecCSBadResource && lists.size() != 0 && found == info.count) {
    return {Error(kCodeSigningErrorDomain, status, std::move(lists)), std::move(sentences)};
  }
  auto sentence = sentenceFor(status, info);
  sentences.insert(sentences.begin(), sentence);
  return {describedError(status, std::move(sentence)), std::move(sentences)};
}

Error codeSigningError(OSStatus status) {
  return describedError(status, sentenceFor(status));
}

}  // namespace vantrell::host
