#include "cli/SettingsCommands.h"

#include <algorithm>
#include <cstdlib>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "cli/CommandFailure.h"
#include "cli/CommandInput.h"
#include "app/text/Display.h"
#include "cli/JsonOutput.h"
#include "app/records/RecordLookup.h"
#include "app/session/StoreSession.h"
#include "cli/Terminal.h"
#include "cli/TextTable.h"
#include "cli/UsageError.h"
#include "core/engine/DataStoreMaintenance.h"
#include "core/engine/ManualLedgerMigration.h"
#include "core/ledger/AdjustmentKindConfiguration.h"
#include "core/ledger/BalanceAdjustment.h"
#include "core/ledger/BalanceAdjustmentKind.h"
#include "core/ledger/CustomAdjustmentCategory.h"
#include "core/ledger/CustomAdjustmentCategoryConfiguration.h"
#include "core/ledger/QuickActionConfiguration.h"
#include "core/ledger/WeekdayMinutes.h"
#include "core/ledger/WorkSchedule.h"
#include "platform/foundation/Text.h"

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

WeekdayMinutes weekdayMinutes(const std::string& text, std::string_view option) {
  const auto values = CommandInput::minutesList(text, option, 7);
  WeekdayMinutes week{};
  for (std::size_t i = 0; i < week.size(); ++i) {
    if (values[i] < 0 || values[i] > maximumDailyMinutes) {
      throw UsageError(std::string(option) + ": a day's expected time lies between 0:00 and 24:00");
    }
    week[i] = values[i];
  }
  return week;
}

std::string weekText(const WeekdayMinutes& week) {
  std::string text;
  for (const std::int64_t minutes : week) {
    if (!text.empty()) text += "  ";
    text += Display::duration(static_cast<double>(minutes) * 60.0);
  }
  return text;
}

// Applies the options given; values are read first, so a bad one changes nothing.
void apply(StoreSession& session, const SettingsOptions& options) {
  TimeBankSettings& settings = session.settings();
  std::optional<Date> start;
  std::optional<std::int64_t> balance;
  std::optional<WeekdayMinutes> week;
  std::optional<std::vector<std::int64_t>> quick;
  if (!options.start.empty()) {
    start = DateInput::startOfDay(CommandInput::day(options.start, session.today(), "--start"), session.calendar());
  }
  if (!options.balance.empty()) {
    balance = CommandInput::minutes(options.balance, "--balance");
    if (std::abs(*balance) > DataStoreMaintenance::maximumBalanceMinutes) {
      throw UsageError("--balance: the starting balance lies between " +
                       Display::amountOfMinutes(-DataStoreMaintenance::maximumBalanceMinutes) + " and " +
                       Display::amountOfMinutes(DataStoreMaintenance::maximumBalanceMinutes));
    }
  }
  if (!options.week.empty()) week = weekdayMinutes(options.week, "--week");
  if (!options.quick.empty()) quick = CommandInput::minutesList(options.quick, "--quick", 4);

  if (start) settings.setCalculationStartDate(*start);
  if (balance) settings.setStartingBalanceMinutes(*balance);
  if (week) settings.setWeekdayMinutes(*week);
  if (quick) {
    settings.setQuickActionMinutes(*quick);
    const auto stored = settings.quickActionMinutes();
    if (!std::equal(stored.begin(), stored.end(), quick->begin())) {
      Terminal::warning("quick actions take one of the amounts 5, 10, 15, 20, 30, 45 min, 1, 1.5, 2, 3, 4, 6 or 8 hrs; "
                        "the nearest were kept");
    }
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

std::vector<CustomAdjustmentCategory> categories(const TimeBankSettings& settings) {
  return CustomAdjustmentCategoryConfiguration::categories(settings.customAdjustmentCategoriesRawValue());
}

// ---- setup and settings ----

void setup(const SettingsOptions& options) {
  StoreSession session;
  session.journal("setup");
  apply(session, options);
  session.settings().setHasCompletedOnboarding(true);
  // A bank set up here starts the manual ledger from the balance stated.
  ManualLedgerMigration::beginLedger(session.context(), session.now(), false);
  session.saveSettings();
  Terminal::message("Set-up complete.");
  show(session);
}

void settings(const SettingsOptions& options) {
  StoreSession session;
  session.journal("settings");
  if (!options.empty()) {
    apply(session, options);
    session.saveSettings();
    Terminal::message("Settings saved.");
  }
  show(session);
}

// ---- schedules ----

std::vector<std::shared_ptr<WorkSchedule>> schedules(StoreSession& session) {
  return session.context().fetch<WorkSchedule>({{}, {{&WorkSchedule::effectiveFrom}, {&WorkSchedule::modifiedAt}}});
}

void addSchedule(const std::string& from, const std::string& week) {
  StoreSession session;
  session.journal("schedule add " + from);
  const Date effectiveFrom = DateInput::startOfDay(CommandInput::day(from, session.today(), "DAY"), session.calendar());
  const WeekdayMinutes minutes = weekdayMinutes(week, "WEEK");
  auto schedule = std::make_shared<WorkSchedule>(UUID::random(), effectiveFrom, minutes, session.now(), session.now());
  session.context().insert(schedule);
  session.context().save();
  Terminal::message("Added schedule " + Display::shortIdentifier(schedule->id()) + " from " +
                    Display(session.calendar()).day(effectiveFrom) + ".");
}

void listSchedules(bool json) {
  StoreSession session;
  const Display display(session.calendar());
  if (json) {
    JsonOutput::print([&](JsonWriter& writer) {
      writer.beginArray();
      for (const auto& schedule : schedules(session)) {
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
  for (const auto& schedule : schedules(session)) {
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

/// Newest first: the schedule made last (createdAt), then the later first
/// day, then the greater identifier.
bool madeLater(const WorkSchedule& a, const WorkSchedule& b) {
  using RecordLookup::recency;
  if (recency(a.createdAt()) != recency(b.createdAt())) return recency(a.createdAt()) > recency(b.createdAt());
  if (recency(a.effectiveFrom()) != recency(b.effectiveFrom())) {
    return recency(a.effectiveFrom()) > recency(b.effectiveFrom());
  }
  return a.id() > b.id();
}

void removeSchedule(const std::string& identifier) {
  StoreSession session;
  const auto found = RecordLookup::find(schedules(session), identifier, "schedule", madeLater);
  session.journal("schedule remove " +
                  (RecordLookup::recentPlace(identifier) ? Display::shortIdentifier(found.front()->id()) : identifier));
  for (const auto& schedule : found) session.context().deleteRecord(schedule);
  session.context().save();
  Terminal::message("Removed schedule " + Display::shortIdentifier(found.front()->id()) + ".");
}

// ---- kinds ----

void showKinds(StoreSession& session) {
  const auto offered = AdjustmentKindConfiguration::kinds(session.settings().visibleAdjustmentKindsRawValue());
  TextTable table({{"Offered"}, {"Kind"}, {"Title"}});
  for (const BalanceAdjustmentKind kind : AdjustmentKindConfiguration::configurableKinds) {
    table.addRow({offered.contains(kind) ? "yes" : "no", std::string(kind.rawValue()), std::string(kind.title())});
  }
  Terminal::write(table.render());
}

BalanceAdjustmentKind configurableKind(const std::string& text) {
  const std::string wanted = Text::lowercased(text);
  for (const BalanceAdjustmentKind kind : AdjustmentKindConfiguration::configurableKinds) {
    if (Text::lowercased(kind.rawValue()) == wanted || Text::lowercased(kind.title()) == wanted) return kind;
  }
  std::string choices;
  for (const BalanceAdjustmentKind kind : AdjustmentKindConfiguration::configurableKinds) {
    choices += choices.empty() ? "" : ", ";
    choices += kind.rawValue();
  }
  throw UsageError("'" + text + "' is not a kind that can be offered (choose from " + choices + ")");
}

void setKinds(const std::vector<std::string>& names, bool none) {
  if (none != names.empty()) throw UsageError("kinds: name the kinds to offer, or give --none");
  AdjustmentKindConfiguration::KindSet kinds;
  for (const std::string& name : names) kinds.insert(configurableKind(name));
  StoreSession session;
  session.journal("kinds");
  session.settings().setVisibleAdjustmentKindsRawValue(AdjustmentKindConfiguration::rawValue(kinds));
  session.saveSettings();
  Terminal::message("Offered kinds: " + kindsText(session.settings().visibleAdjustmentKindsRawValue()) + ".");
}

// ---- categories ----

// The position of the category whose title equals `title` ignoring case.
std::optional<std::size_t> categoryIndex(const std::vector<CustomAdjustmentCategory>& list, std::string_view title) {
  const auto wanted = CustomAdjustmentCategory::fromTitle(title);
  if (!wanted) return std::nullopt;
  const std::string key = Text::lowercased(wanted->title());
  for (std::size_t i = 0; i < list.size(); ++i) {
    if (Text::lowercased(list[i].title()) == key) return i;
  }
  return std::nullopt;
}

CustomAdjustmentCategory newCategory(const std::string& title) {
  auto category = CustomAdjustmentCategory::fromTitle(CommandInput::text(title, "TITLE"));
  if (!category) throw UsageError("a category needs a title that is not blank");
  return *category;
}

// Stores the list when the settings keep every category of it (at most
// maximumCount, titles unique ignoring case); refuses otherwise.
void storeCategories(StoreSession& session, const std::vector<CustomAdjustmentCategory>& list,
                     const CustomAdjustmentCategory& added) {
  const std::string rawValue = CustomAdjustmentCategoryConfiguration::rawValue(list);
  if (CustomAdjustmentCategoryConfiguration::categories(rawValue).size() != list.size()) {
    if (list.size() > CustomAdjustmentCategory::maximumCount) {
      throw CommandFailure("You can keep at most " + std::to_string(CustomAdjustmentCategory::maximumCount) +
                           " categories of your own.");
    }
    throw CommandFailure("A category called \"" + added.title() + "\" exists already.");
  }
  session.settings().setCustomAdjustmentCategoriesRawValue(rawValue);
}

void addCategory(const std::string& title) {
  const CustomAdjustmentCategory category = newCategory(title);
  StoreSession session;
  session.journal("category add " + title);
  auto list = categories(session.settings());
  list.push_back(category);
  storeCategories(session, list, category);
  session.saveSettings();
  Terminal::message("Added category \"" + category.title() + "\".");
}

std::size_t existingCategory(const std::vector<CustomAdjustmentCategory>& list, const std::string& title) {
  const auto index = categoryIndex(list, title);
  if (!index) throw CommandFailure("There is no category called \"" + title + "\".");
  return *index;
}

void renameCategory(const std::string& from, const std::string& to) {
  const CustomAdjustmentCategory renamed = newCategory(to);
  StoreSession session;
  session.journal("category rename " + from + " to " + to);
  auto list = categories(session.settings());
  const std::size_t index = existingCategory(list, from);
  const CustomAdjustmentCategory previous = list[index];
  list[index] = renamed;
  storeCategories(session, list, renamed);
  // Bookings follow their category to its new title.
  std::size_t moved = 0;
  if (previous.rawValue() != renamed.rawValue()) {
    for (const auto& adjustment : session.context().fetch<BalanceAdjustment>()) {
      if (adjustment->kindRawValue() != previous.rawValue()) continue;
      adjustment->setKindRawValue(renamed.rawValue());
      adjustment->setModifiedAt(session.now());
      ++moved;
    }
  }
  session.saveSettings();
  Terminal::message("Renamed category \"" + previous.title() + "\" to \"" + renamed.title() + "\" (" +
                    std::to_string(moved) + (moved == 1 ? " booking" : " bookings") + " moved).");
}

void removeCategory(const std::string& title) {
  StoreSession session;
  session.journal("category remove " + title);
  auto list = categories(session.settings());
  const std::size_t index = existingCategory(list, title);
  const CustomAdjustmentCategory removed = list[index];
  list.erase(list.begin() + static_cast<std::ptrdiff_t>(index));
  session.settings().setCustomAdjustmentCategoriesRawValue(CustomAdjustmentCategoryConfiguration::rawValue(list));
  session.saveSettings();
  Terminal::message("Removed category \"" + removed.title() + "\"; its bookings keep it.");
}

void listCategories(bool json) {
  StoreSession session;
  const auto list = categories(session.settings());
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
  for (const auto& category : categories(settings)) own += (own.empty() ? "" : ", ") + category.title();
  row("Own categories", own.empty() ? "none" : own);
  row("Schedules", std::to_string(session.context().fetch<WorkSchedule>().size()));
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
