// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "client/CommandLine.h"

#include <ostream>

#include <CLI/CLI.hpp>

namespace vantrell {

namespace {

constexpr char kRunHelp[] =
    R"(Perform an operation: register, perform, show feedback as it comes, unregister.
Usage: vantrellctl [OPTIONS] run IDENTIFIER [ARGUMENT...]

The command "list" shows the identifiers and the types of their arguments:
  S     text, as it stands
  N     a number: decimal, 0x and hexadecimal digits, or real with a decimal point
  D     data: @FILE for the content of a file, or hex: and hexadecimal digits
  S...  any number of texts
All words after IDENTIFIER are arguments, those that begin with a hyphen included; "--" right after it is left out.
Options stand before "run".
)";

struct Parser {
  CLI::App app{"Talks to the privileged helper."};
  CommandLine line;
  CLI::App* list = nullptr;
  CLI::App* version = nullptr;
  CLI::App* run = nullptr;
  CLI::App* machO = nullptr;
  CLI::App* bundle = nullptr;
  CLI::App* signature = nullptr;
  CLI::App* smc = nullptr;

  Parser() {
    app.name("vantrellctl");
    addOptions();
    addCommands();
    app.footer(
        "Exit status: 0 success, 1 the operation failed, 2 usage, 3 no connection or not authorised.\n"
        "Ctrl-C cancels an operation and waits for its answer; a second one ends the command at once.");
  }

  void addOptions() {
    auto& connection = line.connection;
    auto* address =
        app.add_option("--address", connection.address, "Where the service listens")->type_name("unix:path=PATH");
    auto* bus = app.add_flag("--bus", connection.bus, "Reach the service through the system bus");
    auto* spawn = app.add_option("--spawn", connection.spawn, "Start this helper for this one command");
    spawn->type_name("HELPER");
    address->excludes(bus)->excludes(spawn);
    bus->excludes(spawn);
    app.add_option("--helper", connection.helper, "The executable that the service runs")->type_name("PATH");
    app.add_flag("--json", line.json, "One JSON object a line");
    app.add_flag_callback(
        "--no-progress", [this] { line.progress = false; }, "No progress bar");
  }

  void addCommands() {
    app.require_subcommand(1);
    list = app.add_subcommand("list", "Show the operations");
    version = app.add_subcommand("version", "Show the helper's version, over the wire");
    run = app.add_subcommand("run", "Perform an operation: run IDENTIFIER [ARGUMENT...]");
    run->prefix_command();  // from the first word on, nothing is an option of ours
    run->formatter_fn([](const CLI::App* command, const std::string& name, CLI::AppFormatMode mode) -> std::string {
      if (mode != CLI::AppFormatMode::Normal) return CLI::Formatter().make_help(command, name, mode);
      return kRunHelp;
    });
    machO = app.add_subcommand("macho", "Show parts, segments, sections and descriptors of an executable");
    machO->add_option("FILE", line.file)->required();
    bundle = app.add_subcommand("bundle", "Show what kind of software a package is, and what it says of itself");
    bundle->add_option("PATH", line.file)->required();
    signature = app.add_subcommand("signature", "Show who signed a file or bundle, and verify the signature");
    signature->add_option("PATH", line.file)->required();
    smc = app.add_subcommand("smc", "Show the keys of the System Management Controller with their values");
    smc->add_flag("--simulated", line.simulated, "Show a simulated controller instead of this computer's");
  }

  /// The identifier and the arguments, from the words that "run" was left with.
  void takeRunWords() {
    auto words = run->remaining();
    if (words.empty()) throw CLI::RequiredError("IDENTIFIER");
    line.identifier = std::move(words.front());
    if (line.identifier.starts_with('-')) throw CLI::ExtrasError("run", {line.identifier});
    words.erase(words.begin());
    if (!words.empty() && words.front() == "--") words.erase(words.begin());
    line.arguments = std::move(words);
  }

  void parse(int count, const char* const* words) {
    app.parse(count, words);
    if (run->parsed()) takeRunWords();
    line.command = list->parsed()        ? CommandLine::Command::List
                   : version->parsed()   ? CommandLine::Command::Version
                   : run->parsed()       ? CommandLine::Command::Run
                   : bundle->parsed()    ? CommandLine::Command::Bundle
                   : signature->parsed() ? CommandLine::Command::Signature
                   : smc->parsed()       ? CommandLine::Command::Smc
                                         : CommandLine::Command::MachO;
  }
};

}  // namespace

std::variant<CommandLine, ExitStatus> parseCommandLine(int count, const char* const* words, std::ostream& out,
                                                       std::ostream& err) {
  Parser parser;
  try {
    parser.parse(count, words);
  } catch (const CLI::ParseError& error) {
    return parser.app.exit(error, out, err) == 0 ? ExitStatus::Success : ExitStatus::Usage;
  }
  return std::move(parser.line);
}

}  // namespace vantrell
