#include "cli/tree/CommandLine.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <functional>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <CLI/CLI.hpp>

#include "app/InvalidInput.h"
#include "app/session/StoreSession.h"
#include "cli/commands/ArchiveCommands.h"
#include "cli/output/CommandRemedies.h"
#include "cli/commands/BookingCommands.h"
#include "cli/tree/CommandSet.h"
#include "cli/tree/CommandSuggestion.h"
#include "cli/commands/HolidayCommands.h"
#include "cli/commands/SettleCommands.h"
#include "cli/commands/SyncCommands.h"
#include "cli/commands/HousekeepingCommands.h"
#include "cli/commands/OpenCommand.h"
#include "cli/commands/OverviewCommand.h"
#include "cli/commands/ReportCommands.h"
#include "cli/commands/SettingsCommands.h"
#include "cli/commands/ShellCommands.h"
#include "cli/output/Terminal.h"
#include "cli/input/UsageError.h"
#include "cli/commands/WidgetCommands.h"
#include "cli/commands/WorkCommands.h"
#include "platform/foundation/ProcessEntitlements.h"

#ifndef QUILLMONT_VERSION
#define QUILLMONT_VERSION "unknown"
#endif

namespace quillmont::CommandLine {
namespace {

constexpr const char* footer = R"(Durations: 90, -45, 1:30, -0:45, 1h30m, -2h, 45m.
Days: YYYY-MM-DD, today, yesterday. Times: "YYYY-MM-DD HH:MM" or HH:MM (today).

Environment:
  QUILLMONT_HOME          folder for Quillmont's data instead of $XDG_DATA_HOME/quillmont
  QUILLMONT_ENTITLEMENTS  a JSON file that replaces the program's own entitlements (tests)
  NO_COLOR                set to turn colour off

Exit status: 0 success, 1 the operation failed, 2 usage error.)";

// The command families and the top-level commands each adds. A run builds
// only the command it was given (building all of them costs more than a
// booking): its family installs, and a family with several commands skips
// those CommandSet::builds says no to; a command with subcommands builds
// only the one named next on the line (CommandSet::subcommands). Help
// before the command, help for all and words that name no command get them
// all, so a command missing from these lists is only slower. A command
// listed under the wrong family would be unknown:
// CommandLine.EveryCommandHasHelp runs each one. `generate` describes the
// whole tree, which it builds itself (everyCommand), so its own run stays
// small like every other.
struct Family {
  void (*install)(CommandSet&);
  std::initializer_list<std::string_view> commands;
};

const std::array<Family, 13>& families() {
  static const std::array<Family, 13> list{{
      {OverviewCommand::install, {"overview"}},
      {BookingCommands::install, {"book", "bookings"}},
      {WorkCommands::install, {"timer", "work"}},
      {ReportCommands::install, {"report", "csv"}},
      {SettingsCommands::install, {"setup", "settings", "schedule", "kinds", "category"}},
      {ArchiveCommands::install, {"export", "import", "import-legacy"}},
      {HolidayCommands::install, {"import-holidays"}},
      {SettleCommands::install, {"settle"}},
      {SyncCommands::install, {"sync"}},
      {OpenCommand::install, {"open"}},
      {WidgetCommands::install, {"widget"}},
      {HousekeepingCommands::install, {"erase", "undo", "doctor"}},
      {ShellCommands::install, {"complete", "generate"}},
  }};
  return list;
}

// The first word of the line that is not an option of the program itself
// (nothing when there is none), the word right after it, and whether help
// was asked for before it, or help for every command anywhere.
struct CommandWord {
  std::string_view word;
  std::string_view next;
  bool asksForHelp = false;
  bool asksForAll = false;
};

CommandWord commandWord(int argc, char** argv) {
  CommandWord found;
  for (int i = 1; i < argc; ++i) found.asksForAll = found.asksForAll || std::string_view(argv[i]) == "--help-all";
  for (int i = 1; i < argc; ++i) {
    const std::string_view argument = argv[i];
    if (argument == "--data-home") {
      ++i;  // its value
    } else if (argument == "-h" || argument.starts_with("--help")) {
      found.asksForHelp = true;
    } else if (argument == "--" || !argument.starts_with("-")) {
      if (argument == "--" && ++i == argc) break;
      found.word = argv[i];
      if (i + 1 < argc && !std::string_view(argv[i + 1]).starts_with("-")) found.next = argv[i + 1];
      break;
    }
  }
  return found;
}

void installCommands(CommandSet& commands, const CommandWord& given) {
  const auto& all = families();
  const std::string_view wanted = given.word.empty() && !given.asksForHelp ? "overview" : given.word;
  const auto family = std::find_if(all.begin(), all.end(), [&](const Family& candidate) {
    return std::find(candidate.commands.begin(), candidate.commands.end(), wanted) != candidate.commands.end();
  });
  if (family == all.end() || given.asksForAll) {
    for (const Family& each : all) each.install(commands);
    return;
  }
  commands.buildOnly(wanted, given.next);
  family->install(commands);
}

// Help shows arguments by name alone ("DURATION", not "DURATION TEXT").
void nameArgumentsPlainly(CLI::App& app) {
  for (CLI::Option* option : app.get_options()) {
    if (option->get_positional()) option->type_name("");
  }
  for (CLI::App* command : app.get_subcommands([](CLI::App*) { return true; })) nameArgumentsPlainly(*command);
}

// The command a word that names none probably meant (every family is built
// when the word names none).
std::optional<std::string> suggestion(CLI::App& app, std::string_view word) {
  if (word.empty() || word.starts_with('-')) return std::nullopt;
  std::vector<std::string> names;
  for (const CLI::App* command : app.get_subcommands([](CLI::App*) { return true; })) {
    if (command->get_name() == word) return std::nullopt;
    if (!command->get_group().empty()) names.push_back(command->get_name());  // not the hidden ones
  }
  return CommandSuggestion::closest(word, names);
}

void useDataHome(const std::string& folder) {
  std::error_code error;
  const auto absolute = std::filesystem::absolute(folder, error);
  setenv("QUILLMONT_HOME", (error ? std::filesystem::path(folder) : absolute).c_str(), 1);
}

void reportFailure(const std::string& text) {
  std::cout.flush();
  std::cerr << "quillmont: " << text << '\n';
}

// The program itself: its description, global options and help's layout.
std::unique_ptr<CLI::App> program(std::string& dataHome) {
  auto app = std::make_unique<CLI::App>("Quillmont: a personal time bank for flexible working hours.\n"
                                        "Without a command it shows the overview.",
                                        "quillmont");
  app->set_version_flag("--version", std::string("quillmont ") + QUILLMONT_VERSION, "Show the version and exit");
  app->set_help_all_flag("--help-all", "Show help for every command and exit");
  app->add_option("--data-home", dataHome, "Keep Quillmont's data in DIR (sets QUILLMONT_HOME)")->type_name("DIR");
  app->require_subcommand(0, 1);
  app->fallthrough();
  app->footer(footer);
  app->get_formatter()->column_width(34);
  app->get_formatter()->label("SUBCOMMAND", "COMMAND");
  app->get_formatter()->label("Positionals", "Arguments");
  return app;
}

}  // namespace

std::string version() { return QUILLMONT_VERSION; }

void everyCommand(const std::function<void(const CLI::App&, const CommandSet&)>& use) {
  std::string dataHome;
  const auto app = program(dataHome);
  CommandSet commands(*app);
  for (const Family& family : families()) family.install(commands);
  nameArgumentsPlainly(*app);
  use(*app, commands);
}

int run(int argc, char** argv) {
  // The version alone needs no command tree, and no parser that reports it
  // by throwing: an exception's first throw is a tenth of a bare start.
  if (argc == 2 && std::string_view(argv[1]) == "--version") {
    std::cout << "quillmont " << QUILLMONT_VERSION << '\n';
    return 0;
  }
  std::string dataHome;
  const auto application = program(dataHome);
  CLI::App& app = *application;

  CommandSet commands(app);
  const CommandWord word = commandWord(argc, argv);
  installCommands(commands, word);
  nameArgumentsPlainly(app);

  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    if (error.get_exit_code() == 0) return app.exit(error);  // --help, --version
    // Usage errors speak like every other message of the program.
    reportFailure(error.what());
    if (const auto meant = suggestion(app, word.word)) {
      std::cerr << "Did you mean `quillmont " << *meant << "`?\n";
    }
    std::string command = "quillmont";
    for (CLI::App* given = &app; !given->get_subcommands().empty();) {
      given = given->get_subcommands().front();
      command += " " + given->get_name();
    }
    std::cerr << "Run `" << command << " --help` for more information.\n";
    return 2;
  }

  if (!dataHome.empty()) useDataHome(dataHome);
  StoreSession::setWarningHandler([](const std::string& text) { reportFailure(text); });
  // A damaged override must not quietly leave this program without the
  // group, which would show it another, empty store.
  if (const auto problem = ProcessEntitlements::overrideProblem()) {
    reportFailure(*problem);
    return 1;
  }
  try {
    commands.chosen(OverviewCommand::run)();
    std::cout.flush();
    if (!std::cout) {
      reportFailure("cannot write to standard output");
      return 1;
    }
    return 0;
  } catch (const UsageError& error) {
    reportFailure(error.what());
    return 2;
  } catch (const InvalidInput& error) {
    const std::string reason = CommandRemedies::message(error);
    reportFailure(error.field().empty() ? reason : "--" + error.field() + ": " + reason);
    return 2;
  } catch (const std::exception& error) {
    reportFailure(CommandRemedies::message(error));
    return 1;
  }
}

}  // namespace quillmont::CommandLine
