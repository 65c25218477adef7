#include "cli/commands/SyncCommands.h"

#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "app/sync/SyncExchange.h"
#include "app/sync/SyncSettings.h"
#include "app/sync/SyncSetup.h"
#include "app/sync/SyncStatus.h"
#include "app/sync/SyncWatch.h"
#include "app/text/Display.h"
#include "app/Refusal.h"
#include "cli/output/CommandRemedies.h"
#include "cli/output/Terminal.h"
#include "cli/output/TextTable.h"

namespace quillmont::SyncCommands {
namespace {

using SyncSettings::deviceLabel;

// A merged ledger that could not be written out is said first.
void warnDeferred(const SyncExchange::Result& result) {
  if (!result.deferredWrite.empty()) {
    Terminal::warning(result.deferredWrite + "; the merged ledger is written at the next exchange");
  }
}

// Report lines carry other machines' names and texts: shown escaped.
void printReport(const SyncExchange::Result& result) {
  warnDeferred(result);
  for (const auto& line : result.report) Terminal::print(Terminal::escaped(line));
}

std::string weekText(const WeekdayMinutes& week) {
  std::string text;
  for (const std::int64_t minutes : week) {
    text += (text.empty() ? "" : ",") + Display::duration(60.0 * static_cast<double>(minutes));
  }
  return text;
}

std::string quotedArgument(const std::string& text) {
  if (!text.empty() && text.find_first_of(" \t\n'\"\\$`!*?[]{}()<>|&;#~") == std::string::npos) return text;
  std::string quoted = "'";
  for (const char c : text) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return quoted + "'";
}

// Both sides of a conflict of settings, and how to choose.
[[noreturn]] void refuseConflict(const SyncSetup::SettingsConflict& refusal, const std::string& name) {
  const SyncJoin::Conflict& conflict = refusal.conflict();
  const Display display(Calendar::autoupdatingCurrent());
  TextTable table({{""}, {"This machine"}, {"The folder (" + Terminal::escaped(conflict.folderDeviceName) + ")"}});
  const auto row = [&](const std::string& label, const auto& text) {
    table.addRow({label, text(conflict.here), text(conflict.folder)});
  };
  row("Start", [&](const SyncJoin::Side& side) { return display.day(side.calculationStartDate); });
  row("Starting balance", [](const SyncJoin::Side& side) { return Display::amountOfMinutes(side.startingBalanceMinutes); });
  row("Week", [](const SyncJoin::Side& side) { return weekText(side.weekdayMinutes); });
  row("Balance now", [](const SyncJoin::Side& side) { return Display::amount(side.balanceSeconds); });
  Terminal::write(table.render());
  std::string command = "quillmont sync setup " + quotedArgument(refusal.folder().string());
  if (!name.empty()) command += " --name " + quotedArgument(name);
  throw Refusal(std::string(refusal.what()) + " Choose whose settings stay (the bookings of both are kept):\n  " +
                       command + " --adopt   # the folder's settings, here too\n  " + command +
                       " --keep    # this machine's settings, on every machine");
}

void setup(const SyncSetup::Request& request) {
  const UserDefaults defaults = SyncSettings::preferences();
  SyncSetup::Result result;
  try {
    result = SyncSetup::setup(defaults, request);
  } catch (const SyncSetup::SettingsConflict& conflict) {
    refuseConflict(conflict, request.name);
  }
  if (result.settled) {
    Terminal::print(*result.settled == SyncSetup::SettingsChoice::adopt
                        ? "This machine takes the folder's settings."
                        : "This machine's settings stay, on every machine.");
  }
  const SyncSettings::Configuration& configuration = result.configuration;
  Terminal::print(Terminal::escaped("This machine is " + deviceLabel(configuration.name, configuration.device) +
                                    "; it syncs through " + configuration.folder.string() + "."));
  printReport(SyncExchange::exchange(defaults, configuration));
}

void status() {
  const SyncStatus::Status status = SyncStatus::status(SyncSettings::preferences());
  const Display display(Calendar::autoupdatingCurrent());
  Terminal::print(Terminal::escaped("Sync folder   " + status.configuration.folder.string()));
  Terminal::print(Terminal::escaped("This machine  " +
                                    deviceLabel(status.configuration.name, status.configuration.device) +
                                    ", writes " + status.ownLedgerFile));
  if (!status.folderPresent) {
    Terminal::warning("the sync folder is missing (is the drive mounted?)");
    return;
  }
  if (!status.devices.empty()) Terminal::print("Devices:");
  for (const auto& device : status.devices) {
    std::string line = "  " + device.label;
    if (!device.read) {
      line += device.hasLedger ? ": not read yet" : ": its ledger has not arrived yet";
    } else {
      if (device.writtenAt) line += ", wrote " + display.dateTime(*device.writtenAt);
      line += ", read " + display.dateTime(device.readAt);
      if (!device.problem.empty()) line += "; " + device.problem;
      if (device.changedSince) line += "; changed since";
    }
    Terminal::print(Terminal::escaped(line));
  }
  if (status.devices.empty()) {
    Terminal::print("Devices:      none other yet; set up sync on another machine with the same folder");
  }
  if (status.lastExchangeAt) {
    Terminal::print("Last exchange " + display.dateTime(*status.lastExchangeAt) + ":");
    for (const auto& line : status.lastReport) Terminal::print("  " + Terminal::escaped(line));
  } else {
    Terminal::print("Last exchange never");
  }
  for (const auto& ignored : status.ignored) {
    Terminal::print(Terminal::escaped("Ignored       " + ignored.name + ": " + ignored.reason));
  }
}

void run(bool watch) {
  const UserDefaults defaults = SyncSettings::preferences();
  const SyncSettings::Configuration setup = SyncSettings::requiredConfiguration(defaults);
  if (!watch) {
    printReport(SyncExchange::exchange(defaults, setup));
    return;
  }
  SyncWatch::Callbacks callbacks;
  callbacks.watching = [&] {
    Terminal::print("Watching " + setup.folder.string() + " and this machine's store; Ctrl-C stops.");
    std::cout.flush();
  };
  callbacks.exchanged = [](const SyncExchange::Result& result) {
    warnDeferred(result);
    const Display display(Calendar::autoupdatingCurrent());
    for (const auto& line : result.report) Terminal::print(display.dateTime(Date::now()) + "  " + Terminal::escaped(line));
    std::cout.flush();  // a log read as it grows (journalctl, a terminal, a pipe)
  };
  callbacks.failed = [](const std::exception& error) {
    Terminal::warning(std::string("the exchange failed and is tried again at the next change: ") +
                      CommandRemedies::message(error));
  };
  SyncWatch::run(defaults, setup, callbacks);
}

}  // namespace

std::string summary() {
  const auto overview = SyncStatus::overview(SyncSettings::preferences());
  if (!overview) return "not set up (quillmont sync setup DIR shares the ledger through a folder)";
  std::string text = overview->configuration.folder.string() +
                     (overview->folderPresent ? "" : " (missing: is the drive mounted?)") + ", as " +
                     deviceLabel(overview->configuration.name, overview->configuration.device);
  std::string seen;
  for (const auto& label : overview->machinesSeen) seen += (seen.empty() ? "" : ", ") + label;
  text += seen.empty() ? "; no other machine seen yet" : "; machines seen: " + seen;
  if (overview->leftAside > 0) {
    text += "; files of " + std::to_string(overview->leftAside) + " left aside (see quillmont sync status)";
  }
  const Display display(Calendar::autoupdatingCurrent());
  text += overview->lastExchangeAt ? "; last exchange " + display.dateTime(*overview->lastExchangeAt) : "; never exchanged";
  return text;
}

void install(CommandSet& commands) {
  auto watch = std::make_shared<bool>(false);
  CLI::App* sync = commands.add(commands.root(), "sync", "Keep this ledger equal on every machine through a shared folder",
                                [watch] { run(*watch); });
  sync->add_flag("--watch", *watch, "Keep running and exchange at every change, here or in the folder");
  sync->footer(
      "Every machine writes its ledger into the folder that Syncthing, Nextcloud or a network share keeps equal, and "
      "merges the others': the later change wins, deletions travel, a timer runs on every machine.");

  auto folder = std::make_shared<std::string>();
  auto name = std::make_shared<std::string>();
  auto adopt = std::make_shared<bool>(false);
  auto keep = std::make_shared<bool>(false);
  CLI::App* setupCommand = commands.add(*sync, "setup", "Choose the shared folder and name this machine",
                                        [folder, name, adopt, keep] {
                                          setup({*folder, *name,
                                                 *adopt  ? SyncSetup::SettingsChoice::adopt
                                                 : *keep ? SyncSetup::SettingsChoice::keep
                                                         : SyncSetup::SettingsChoice::undecided});
                                        });
  setupCommand->add_option("DIR", *folder, "The folder the sync service shares (created when missing)")->required();
  setupCommand->add_option("--name", *name, "How other machines call this one (default: its host name)");
  CLI::Option* adoptOption = setupCommand->add_flag(
      "--adopt", *adopt, "When the folder's ledger has other settings than this machine's: take the folder's");
  setupCommand->add_flag("--keep", *keep, "When the folder's ledger has other settings: keep this machine's everywhere")
      ->excludes(adoptOption);
  commands.add(*sync, "status", "Show the folder, the devices seen and the last exchange", [] { status(); });
}

}  // namespace quillmont::SyncCommands
