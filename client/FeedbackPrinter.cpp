// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "client/FeedbackPrinter.h"

#include <ostream>
#include <string_view>

#include <fmt/core.h>
#include <nlohmann/json.hpp>

#include "catalogue/FeedbackMessages.h"
#include "client/DateText.h"
#include "client/JsonOutput.h"
#include "client/TerminalText.h"

namespace vantrell {

namespace {

constexpr char kFileObjectInfo[] = "FileObjectInfo";

const Number* numberUnder(const Dictionary& dictionary, const char* key) {
  const auto* value = dictionary.find(key);
  return value ? value->asNumber() : nullptr;
}

std::string_view textUnder(const Dictionary& dictionary, const char* key) {
  const auto* value = dictionary.find(key);
  const auto* text = value ? value->asString() : nullptr;
  return text ? std::string_view(*text) : std::string_view();
}

/// The first letter of a mode as ls(1) shows it.
char typeLetter(std::string_view type) {
  constexpr std::pair<std::string_view, char> kLetters[] = {
      {"NSFileTypeRegular", '-'},          {"NSFileTypeDirectory", 'd'},    {"NSFileTypeSymbolicLink", 'l'},
      {"NSFileTypeCharacterSpecial", 'c'}, {"NSFileTypeBlockSpecial", 'b'}, {"NSFileTypeSocket", 's'},
  };
  for (const auto& [name, letter] : kLetters) {
    if (type == name) return letter;
  }
  return '?';
}

std::string modeText(std::string_view type, std::uint64_t mode) {
  std::string text(1, typeLetter(type));
  for (const unsigned shift : {6U, 3U, 0U}) {
    const auto bits = mode >> shift;
    text += bits & 4 ? 'r' : '-';
    text += bits & 2 ? 'w' : '-';
    text += bits & 1 ? 'x' : '-';
  }
  constexpr std::uint64_t kSetUserID = 04000;
  constexpr std::uint64_t kSetGroupID = 02000;
  constexpr std::uint64_t kSticky = 01000;
  if (mode & kSetUserID) text[3] = text[3] == 'x' ? 's' : 'S';
  if (mode & kSetGroupID) text[6] = text[6] == 'x' ? 's' : 'S';
  if (mode & kSticky) text[9] = text[9] == 'x' ? 't' : 'T';
  return text;
}

}  // namespace

FeedbackPrinter::FeedbackPrinter(std::ostream& out, std::ostream& err, const host::Terminal& terminal, Options options)
    : out_(out),
      err_(err),
      json_(options.json),
      escape_(terminal.isTerminal(host::StandardStream::Output)),
      sequence_([this](OutputStream stream, DataView chunk) { writeChunk(stream, chunk); }) {
  if (!json_ && options.progress && terminal.isTerminal(host::StandardStream::Error)) bar_.emplace(err, terminal);
}

void FeedbackPrinter::print(const Dictionary& message) {
  const std::lock_guard guard(lock_);
  if (json_) {
    out_ << jsonLine(jsonFromDictionary(message)) << '\n' << std::flush;
  } else {
    printMessage(message);
  }
  noteFailures();
}

void FeedbackPrinter::printMessage(const Dictionary& message) {
  const auto* hits = message.find(kFileObjectInfo);
  if (hits && hits->asArray() && !hits->asArray()->empty()) printHits(*hits->asArray());
  printOutput(message, feedback_key::kOutputData, OutputStream::Output);
  printOutput(message, feedback_key::kErrorData, OutputStream::Error);
  const auto* fraction = numberUnder(message, feedback_key::kProgressFraction);
  if (fraction && bar_) bar_->show(fraction->doubleValue());
}

void FeedbackPrinter::printHits(const Array& records) {
  if (bar_) bar_->hide();
  for (const auto& record : records) {
    if (const auto* dictionary = record.asDictionary()) printHit(*dictionary);
  }
  out_ << std::flush;
  if (bar_) bar_->redraw();
}

void FeedbackPrinter::printHit(const Dictionary& record) {
  const auto* mode = numberUnder(record, "Mode");
  const auto* size = numberUnder(record, "Size");
  const auto* value = record.find("ModificationDate");
  const auto* modified = value ? value->asDate() : nullptr;
  const auto path = textUnder(record, "Path");
  // Whole seconds, so that the columns stand.
  out_ << fmt::format("{} {:>12}  {}  ", modeText(textUnder(record, "Type"), mode ? mode->unsignedValue() : 0),
                      size ? size->description() : "?",
                      modified ? textOfDate({modified->seconds, 0}) : std::string(20, '?'))
       << (escape_ ? terminalSafe(path) : std::string(path)) << '\n';
}

void FeedbackPrinter::printOutput(const Dictionary& message, const char* key, OutputStream stream) {
  const auto* value = message.find(key);
  const auto* chunk = value ? value->asData() : nullptr;
  if (!chunk) return;
  if (const auto* number = numberUnder(message, feedback_key::kSequenceNumber)) {
    sequence_.add(number->unsignedValue(), stream, *chunk);
  } else {
    writeChunk(stream, *chunk);
  }
}

void FeedbackPrinter::writeChunk(OutputStream stream, DataView chunk) {
  if (chunk.empty()) return;
  auto& target = stream == OutputStream::Error ? err_ : out_;
  target.write(reinterpret_cast<const char*>(chunk.data()), static_cast<std::streamsize>(chunk.size()));
  target.flush();
}

void FeedbackPrinter::finish() {
  const std::lock_guard guard(lock_);
  sequence_.flush();
  if (bar_) bar_->hide();
  noteFailures();
}

void FeedbackPrinter::noteFailures() {
  if (!out_ || !err_) failed_.store(true);
}

}  // namespace vantrell
