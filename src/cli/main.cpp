// SPDX-License-Identifier: GPL-3.0-or-later
#include <algorithm>
#include <csignal>
#include <cstdio>
#include <exception>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "cli/Command.h"
#include "cli/Console.h"
#include "cli/FitCommand.h"
#include "cli/ImportCommand.h"
#include "cli/InfoCommand.h"
#include "cli/MeasureCommand.h"
#include "cli/PlotCommand.h"
#include "cli/RunCommand.h"
#include "cli/SimulateCommand.h"
#include "cli/TestSwitches.h"
#include "core/Version.h"

namespace {

using namespace lumo;

/// The arguments, last first as CLI11 takes them. "-.5" would be read as a short option; "-0.5" is not. After
/// "--prefix=" the next argument would be taken as the value; after "--prefix" and "" it is not.
std::vector<std::string> reversedArguments(int argc, char** argv) {
  std::vector<std::string> arguments;
  for (int i = 1; i < argc; ++i) {
    std::string argument = argv[i];
    if (argument.size() > 2 && argument.starts_with("-.") && argument[2] >= '0' && argument[2] <= '9')
      argument.insert(1, "0");
    const bool empty = argument.starts_with("--") && argument.find('=') == argument.size() - 1;
    if (empty) argument.pop_back();
    arguments.push_back(argument);
    if (empty) arguments.emplace_back();
  }
  return {arguments.rbegin(), arguments.rend()};
}

/// An empty value is a slip, an unset variable of a shell perhaps, for all options but the prefix.
void refuseEmptyValues(CLI::App& program) {
  const auto check = [](const std::string& value) {
    return value.empty() ? std::string("the value is empty") : std::string();
  };
  for (CLI::App* const command : program.get_subcommands({}))
    for (CLI::Option* const option : command->get_options())
      if (option->get_expected_max() > 0 && option->get_name() != "--prefix")
        option->check(CLI::Validator(check, "", "not empty"));
}

int runProgram(int argc, char** argv) {
  CLI::App program("Multi-frequency synthesis imaging without a window", "lumo-cli");
  program.set_version_flag("--version", programVersion());
  program.require_subcommand(1);

  std::vector<std::unique_ptr<Command>> commands;
  commands.push_back(std::make_unique<SimulateCommand>());
  commands.push_back(std::make_unique<ImportCommand>());
  commands.push_back(std::make_unique<InfoCommand>());
  commands.push_back(std::make_unique<RunCommand>());
  commands.push_back(std::make_unique<MeasureCommand>());
  commands.push_back(std::make_unique<FitCommand>());
  commands.push_back(std::make_unique<PlotCommand>());
  for (const auto& command : commands) command->declare(program);
  refuseEmptyValues(program);
  try {
    program.parse(reversedArguments(argc, argv));
  } catch (const CLI::ParseError& error) {
    // Help and version are "errors" of exit code 0.
    if (program.exit(error) == 0) return kExitDone;
    if (std::any_of(argv + 1, argv + argc,
                    [](const char* word) { return std::string_view(word) == "--json"; }))
      printJson({{"error", failureJson({StatusCode::kInvalidValue, error.what()})}});
    return kExitUsage;
  }
  if (const Status status = takeInstructionSet(); !status.ok()) {
    complain(status.text());
    return kExitUsage;
  }
  const auto subcommands = program.get_subcommands([](const CLI::App*) { return true; });
  for (std::size_t i = 0; i < commands.size(); ++i)
    if (subcommands[i]->parsed()) return commands[i]->run();
  return kExitUsage;
}

}  // namespace

int main(int argc, char** argv) {
  // Beyond a limit on file sizes a write then fails, and says so, like one to a full disk.
  std::signal(SIGXFSZ, SIG_IGN);
  try {
    const int status = runProgram(argc, argv);
    if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0) return status;
    lumo::complain("standard output could not be written");
  } catch (const std::bad_alloc&) {
    lumo::complain("out of memory");
  } catch (const std::exception& error) {
    lumo::complain(error.what());
  }
  return lumo::kExitFailed;
}
