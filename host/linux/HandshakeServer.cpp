// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/HandshakeServer.h"

#include <algorithm>

namespace vantrell::host {

namespace {

constexpr std::string_view kEndOfLine = "\r\n";

bool isHexadecimal(std::string_view text) noexcept {
  return text.size() % 2 == 0 && text.find_first_not_of("0123456789abcdefABCDEF") == std::string_view::npos;
}

// The first word, which is taken off together with the space behind it.
std::string_view takeWord(std::string_view& text) noexcept {
  const std::string_view word = text.substr(0, text.find(' '));
  text.remove_prefix(std::min(text.size(), word.size() + 1));
  return word;
}

}  // namespace

HandshakeServer::Outcome HandshakeServer::take(std::string_view& bytes, std::string& answers) {
  if (state_ == State::BeforeFirstByte && !bytes.empty()) {
    if (bytes[0] != '\0') return Outcome::Broken;
    bytes.remove_prefix(1);
    state_ = State::Unauthenticated;
  }
  while (state_ != State::Begun) {
    const std::size_t length = bytes.find(kEndOfLine);
    if (length == std::string_view::npos) {
      return taken_ + bytes.size() > kMaximumBytes ? Outcome::Broken : Outcome::GoesOn;
    }
    taken_ += length + kEndOfLine.size();
    if (taken_ > kMaximumBytes || takeLine(bytes.substr(0, length), answers) == Outcome::Broken) return Outcome::Broken;
    bytes.remove_prefix(length + kEndOfLine.size());
  }
  return Outcome::Done;
}

HandshakeServer::Outcome HandshakeServer::takeLine(std::string_view line, std::string& answers) {
  const std::string_view command = takeWord(line);
  if (command == "BEGIN") {
    if (state_ != State::Authenticated) return Outcome::Broken;
    state_ = State::Begun;
    return Outcome::Done;
  }
  answers += answerTo(command, line);
  answers += kEndOfLine;
  return Outcome::GoesOn;
}

std::string HandshakeServer::answerTo(std::string_view command, std::string_view argument) {
  if (command == "AUTH" && state_ != State::Authenticated) return authenticate(argument);
  if (command == "DATA" && state_ == State::AwaitingIdentity) return accept(argument);
  if (command == "CANCEL" || command == "ERROR") return reject();
  // There are none to pass in feedback, but helpers ask.
  if (command == "NEGOTIATE_UNIX_FD" && state_ == State::Authenticated) return "AGREE_UNIX_FD";
  return "ERROR";
}

std::string HandshakeServer::authenticate(std::string_view mechanismAndIdentity) {
  if (takeWord(mechanismAndIdentity) != "EXTERNAL") return reject();
  if (!mechanismAndIdentity.empty()) return accept(mechanismAndIdentity);
  state_ = State::AwaitingIdentity;
  return "DATA";
}

std::string HandshakeServer::accept(std::string_view identity) {
  if (!isHexadecimal(identity)) return reject();
  state_ = State::Authenticated;
  return "OK " + identifier_;
}

std::string HandshakeServer::reject() {
  state_ = State::Unauthenticated;
  return "REJECTED EXTERNAL";
}

}  // namespace vantrell::host
