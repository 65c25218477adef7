#include "cli/commands/SettingsCommands.h"

#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "app/InvalidInput.h"
#include "app/session/StoreSession.h"
#include "app/settings/OfferedKinds.h"
#include "app/settings/OwnCategories.h"
#include "app/settings/Schedules.h"
#include "app/settings/Settings.h"
#include "app/text/Display.h"
#include "cli/input/CommandInput.h"
#include "cli/output/JsonOutput.h"
#include "cli/output/Terminal.h"
#include "cli/output/TextTable.h"
#include "cli/input/UsageError.h"
#include "core/ledger/AdjustmentKindConfiguration.h"
#include "core/ledger/BalanceAdjustmentKind.h"
#include "core/ledger/QuickActionConfiguration.h"
#include "core/ledger/WeekdayMinutes.h"
#include "core/ledger/WorkSchedule.h"

namespace quillmont::SettingsCommands {
namespace {

constexpr const char* weekdayNames[] = {"Mon", "Tue", "Wed", "Thu", "Fri", "Sat", "Sun"};

struct SettingsOptions {
  std::string start;
  std::string balance;
  std::string week;
  std::string quick;

  bool empty() const { return start.empty() && balance.empty() && week.empty() && quick.empty(); }
};

void addSettingsOptions(CLI::App& command, SettingsOptions& options) {
  command.add_option("--start", options.start, "Day from which worked time counts (YYYY-MM-DD)")->type_name("DAY");
  command.add_option("--balance", options.balance, "Starting balance of the bank, e.g. 12:30 or -2h")
      ->type_name("DURATION");
  command.add_option("--week", options.week, "Expected time Monday to Sunday, e.g. 8h,8h,8h,8h,6h,0,0")
      ->type_name("LIST");
  command.add_option("--quick", options.quick, "The four quick-action amounts, e.g. 15,30,1h,2h")->type_name("LIST");
}

/// A week typed as seven durations; `option` is how the command spells it.
WeekdayMinutes weekdayMinutes(const std::string& text, std::string_view option) {
  const auto values = CommandInput::minutesList(text, option, 7);
  try {
    return Settings::week(values, "week");
  } catch (const InvalidInput& error) {
    throw UsageError(std::string(option) + ": " + error.reason());
  }
}

std::string weekText(const WeekdayMinutes& week) {
  std::string text;
  for (const std::int64_t minutes : week) {
    if (!text.empty()) text += "  ";
    text += Display::duration(static_cast<double>(minutes) * 60.0);
  }
  return text;
}

// Reads the options given, in order, before anything changes.
Settings::Change change(StoreSession& session, const SettingsOptions& options) {
  Settings::Change change;
  if (!options.start.empty()) change.start = CommandInput::day(options.start, session.today(), "--start");
  if (!options.balance.empty()) {
    change.balanceMinutes = Settings::startingBalance(CommandInput::minutes(options.balance, "--balance"));
  }
  if (!options.week.empty()) change.week = weekdayMinutes(options.week, "--week");
  if (!options.quick.empty()) change.quickActionMinutes = CommandInput::minutesList(options.quick, "--quick", 4);
  return change;
}

void warnAbout(const Settings::Applied& applied) {
  if (applied.quickActionsMoved) {
    Terminal::warning("quick actions take one of the amounts 5, 10, 15, 20, 30, 45 min, 1, 1.5, 2, 3, 4, 6 or 8 hrs; "
                      "the nearest were kept");
  }
}

std::string quickActionsText(const TimeBankSettings& settings) {
  std::string text;
  for (const std::int64_t minutes : settings.quickActionMinutes()) {
    if (!text.empty()) text += ", ";
    text += QuickActionConfiguration::displayName(minutes);
  }
  return text;
}

std::string kindsText(std::string_view rawValue) {
  std::string text;
  for (const BalanceAdjustmentKind kind : AdjustmentKindConfiguration::kinds(rawValue)) {
    if (!text.empty()) text += ", ";
    text += kind.title();
  }
  return text.empty() ? "none" : text;
}

// ---- setup and settings ----

void setup(const SettingsOptions& options) {
  StoreSession session;
  warnAbout(Settings::setup(session, change(session, options)));
  Terminal::message("Set-up complete.");
  show(session);
}

void settings(const SettingsOptions& options) {
  StoreSession session;
  if (!options.empty()) {
    warnAbout(Settings::change(session, change(session, options)));
    Terminal::message("Settings saved.");
  }
  show(session);
}

// ---- schedules ----

void addSchedule(const std::string& from, const std::string& week) {
  StoreSession session;
  const DateInput::Day first = CommandInput::day(from, session.today(), "DAY");
  const auto schedule = Schedules::add(session, {first, weekdayMinutes(week, "WEEK"), from});
  Terminal::message("Added schedule " + Display::shortIdentifier(schedule->id()) + " from " +
                    Display(session.calendar()).day(schedule->effectiveFrom()) + ".");
}

void listSchedules(bool json) {
  StoreSession session;
  const Display display(session.calendar());
  const auto schedules = Schedules::list(session);
  if (json) {
    JsonOutput::print([&](JsonWriter& writer) {
      writer.beginArray();
      for (const auto& schedule : schedules) {
        writer.beginObject();
        writer.key("id");
        writer.string(schedule->id().uuidString());
        writer.key("from");
        writer.string(display.day(schedule->effectiveFrom()));
        writer.key("weekSeconds");
        writer.beginArray();
        for (const std::int64_t minutes : schedule->weekdayMinutes()) {
          writer.number(static_cast<double>(clampedDailyMinutes(minutes)) * 60.0);
        }
        writer.endArray();
        writer.key("week");
        writer.beginArray();
        for (const std::int64_t minutes : schedule->weekdayMinutes()) {
          writer.string(Display::duration(static_cast<double>(clampedDailyMinutes(minutes)) * 60.0));
        }
        writer.endArray();
        writer.endObject();
      }
      writer.endArray();
    });
    return;
  }
  std::vector<TextTable::Column> columns{{"ID"}, {"From"}};
  for (const char* name : weekdayNames) columns.push_back({name, TextTable::Alignment::right});
  TextTable table(columns);
  for (const auto& schedule : schedules) {
    std::vector<TextTable::Cell> row{Display::shortIdentifier(schedule->id()), display.day(schedule->effectiveFrom())};
    for (const std::int64_t minutes : schedule->weekdayMinutes()) {
      row.emplace_back(Display::duration(static_cast<double>(clampedDailyMinutes(minutes)) * 60.0));
    }
    table.addRow(std::move(row));
  }
  if (table.empty()) {
    Terminal::message("No schedules: every week follows the settings (" + weekText(session.settings().weekdayMinutes()) +
                      ").");
    return;
  }
  Terminal::write(table.render());
}

void removeSchedule(const std::string& identifier) {
  StoreSession session;
  const auto removed = Schedules::remove(session, identifier);
  Terminal::message("Removed schedule " + Display::shortIdentifier(removed->id()) + ".");
}

// ---- kinds ----

void showKinds(StoreSession& session) {
  const auto offered = OfferedKinds::offered(session);
  TextTable table({{"Offered"}, {"Kind"}, {"Title"}});
  for (const BalanceAdjustmentKind kind : AdjustmentKindConfiguration::configurableKinds) {
    table.addRow({offered.contains(kind) ? "yes" : "no", std::string(kind.rawValue()), std::string(kind.title())});
  }
  Terminal::write(table.render());
}

void setKinds(const std::vector<std::string>& names, bool none) {
  if (none != names.empty()) throw UsageError("kinds: name the kinds to offer, or give --none");
  AdjustmentKindConfiguration::KindSet kinds;
  for (const std::string& name : names) kinds.insert(OfferedKinds::kind(name));
  StoreSession session;
  const auto offered = OfferedKinds::offer(session, kinds);
  Terminal::message("Offered kinds: " + kindsText(AdjustmentKindConfiguration::rawValue(offered)) + ".");
}

// ---- categories ----

void addCategory(const std::string& title) {
  CommandInput::text(title, "TITLE");
  StoreSession session;
  const auto added = OwnCategories::add(session, title);
  Terminal::message("Added category \"" + added.title() + "\".");
}

void renameCategory(const std::string& from, const std::string& to) {
  CommandInput::text(to, "TITLE");
  StoreSession session;
  const auto renamed = OwnCategories::rename(session, from, to);
  const std::size_t moved = renamed.bookingsMoved;
  Terminal::message("Renamed category \"" + renamed.previous.title() + "\" to \"" + renamed.renamed.title() + "\" (" +
                    std::to_string(moved) + (moved == 1 ? " booking" : " bookings") + " moved).");
}

void removeCategory(const std::string& title) {
  StoreSession session;
  const auto removed = OwnCategories::remove(session, title);
  Terminal::message("Removed category \"" + removed.title() + "\"; its bookings keep it.");
}

void listCategories(bool json) {
  StoreSession session;
  const auto list = OwnCategories::list(session.settings());
  if (json) {
    JsonOutput::print([&](JsonWriter& writer) {
      writer.beginArray();
      for (const auto& category : list) {
        writer.beginObject();
        writer.key("title");
        writer.string(category.title());
        writer.key("category");
        writer.string(category.rawValue());
        writer.endObject();
      }
      writer.endArray();
    });
    return;
  }
  if (list.empty()) {
    Terminal::message("No categories of your own yet (add one with `quillmont category add TITLE`).");
    return;
  }
  for (const auto& category : list) Terminal::print(category.title());
}

}  // namespace

void show(StoreSession& session) {
  const TimeBankSettings& settings = session.settings();
  const Display display(session.calendar());
  const auto row = [](std::string_view label, const std::string& value) {
    Terminal::print(Terminal::styled(label, Terminal::Style::dim) + std::string(20 - label.size(), ' ') + value);
  };
  row("Set-up", settings.hasCompletedOnboarding() ? "complete" : "not complete");
  row("Calculation start", display.day(settings.calculationStartDate()));
  row("Starting balance", Display::amountOfMinutes(settings.startingBalanceMinutes()));
  row("Week (Mon-Sun)", weekText(settings.weekdayMinutes()));
  row("Quick actions", quickActionsText(settings));
  row("Offered kinds", kindsText(settings.visibleAdjustmentKindsRawValue()));
  std::string own;
  for (const auto& category : OwnCategories::list(settings)) own += (own.empty() ? "" : ", ") + category.title();
  row("Own categories", own.empty() ? "none" : own);
  row("Schedules", std::to_string(Schedules::list(session).size()));
}

void install(CommandSet& commands) {
  CLI::App& root = commands.root();

  auto setupOptions = std::make_shared<SettingsOptions>();
  CLI::App* setupCommand =
      commands.add(root, "setup", "Complete the set-up: calculation start, starting balance, week and quick actions",
                   [setupOptions] { setup(*setupOptions); });
  addSettingsOptions(*setupCommand, *setupOptions);
  setupCommand->footer("Values not given keep their current settings. Example:\n"
                       "  quillmont setup --start 2026-01-01 --balance 12:30 --week 8h,8h,8h,8h,6h,0,0");

  auto settingsOptions = std::make_shared<SettingsOptions>();
  CLI::App* settingsCommand = commands.add(root, "settings", "Show the settings, or change those given",
                                           [settingsOptions] { settings(*settingsOptions); });
  addSettingsOptions(*settingsCommand, *settingsOptions);

  CLI::App* schedule = commands.addGroup(root, "schedule", "Weekly schedules: expected time from a day on");
  auto scheduleDay = std::make_shared<std::string>();
  auto scheduleWeek = std::make_shared<std::string>();
  CLI::App* add = commands.add(*schedule, "add", "Expect the given week from DAY on",
                               [scheduleDay, scheduleWeek] { addSchedule(*scheduleDay, *scheduleWeek); });
  add->add_option("DAY", *scheduleDay, "First day the schedule applies (YYYY-MM-DD)")->required();
  add->add_option("WEEK", *scheduleWeek, "Expected time Monday to Sunday, e.g. 8h,8h,8h,8h,6h,0,0")->required();
  auto schedulesJSON = std::make_shared<bool>(false);
  commands.add(*schedule, "list", "List the schedules", [schedulesJSON] { listSchedules(*schedulesJSON); })
      ->add_flag("--json", *schedulesJSON, "Print a JSON array instead of a table");
  auto scheduleID = std::make_shared<std::string>();
  CLI::App* remove =
      commands.add(*schedule, "remove", "Remove a schedule", [scheduleID] { removeSchedule(*scheduleID); });
  remove
      ->add_option("ID", *scheduleID,
                   "The schedule's identifier (a unique prefix is enough), or @1 (also: last) for the newest "
                   "schedule, @2 for the one before")
      ->required();
  remove->footer(
      "The newest schedule is the one made last (by when it was made; among schedules made at once, the later "
      "first day).");

  auto kindNames = std::make_shared<std::vector<std::string>>();
  auto noKinds = std::make_shared<bool>(false);
  CLI::App* kinds = commands.add(root, "kinds", "Show or choose the built-in kinds offered for bookings",
                                 [kindNames, noKinds] {
                                   if (kindNames->empty() && !*noKinds) {
                                     StoreSession session;
                                     showKinds(session);
                                   } else {
                                     setKinds(*kindNames, *noKinds);
                                   }
                                 });
  CommandSet::Values configurable;
  for (const BalanceAdjustmentKind kind : AdjustmentKindConfiguration::configurableKinds) {
    configurable.words.emplace_back(kind.rawValue());
  }
  commands.offer(kinds->add_option("KIND", *kindNames, "Kinds to offer: appointment, personalErrands, longLunch, other"),
                 std::move(configurable));
  kinds->add_flag("--none", *noKinds, "Offer none of them");

  CLI::App* category = commands.addGroup(root, "category", "Your own categories of bookings");
  auto title = std::make_shared<std::string>();
  auto newTitle = std::make_shared<std::string>();
  CLI::App* categoryAdd =
      commands.add(*category, "add", "Add a category", [title] { addCategory(*title); });
  categoryAdd->add_option("TITLE", *title, "Its title (at most 40 characters)")->required();
  CLI::App* categoryRename = commands.add(*category, "rename", "Rename a category and move its bookings along",
                                          [title, newTitle] { renameCategory(*title, *newTitle); });
  categoryRename->add_option("TITLE", *title, "The current title (any letter case)")->required();
  categoryRename->add_option("NEW", *newTitle, "The new title")->required();
  CLI::App* categoryRemove = commands.add(*category, "remove", "Remove a category (its bookings keep it)",
                                          [title] { removeCategory(*title); });
  categoryRemove->add_option("TITLE", *title, "The title (any letter case)")->required();
  auto categoriesJSON = std::make_shared<bool>(false);
  commands.add(*category, "list", "List your categories", [categoriesJSON] { listCategories(*categoriesJSON); })
      ->add_flag("--json", *categoriesJSON, "Print a JSON array instead of lines");
}

}  // namespace quillmont::SettingsCommands
