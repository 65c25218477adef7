#include "cli/WorkCommands.h"

#include "cli/CommandFailure.h"

#include <string>

#include <CLI/CLI.hpp>

#include "cli/BookingCommands.h"
#include "cli/CommandInput.h"
#include "cli/Display.h"
#include "cli/RecordLookup.h"
#include "cli/StoreSession.h"
#include "cli/Terminal.h"
#include "cli/TextTable.h"
#include "cli/UsageError.h"
#include "core/engine/DataStoreMaintenance.h"
#include "core/engine/TimerSessionController.h"
#include "core/ledger/NoteValidation.h"
#include "core/ledger/WorkEntry.h"

namespace quillmont::WorkCommands {
namespace {

struct EntryOptions {
  std::string identifier;
  std::string start;
  std::string end;
  std::string breakTime;
  std::optional<std::string> note;
};

struct ListOptions {
  std::string from;
  std::string to;
  bool all = false;
};

// ---- timer ----

void timerStatus(StoreSession& session) {
  const auto running = TimerSessionController::runningEntry(session.context(), session.now());
  if (!running) {
    Terminal::print("not running");
    return;
  }
  Terminal::print("running since " + Display(session.calendar()).dateTime(running->startedAt()) + " (" +
                  Display::duration(session.now() - running->startedAt()) + ")");
}

void reportStop(StoreSession& session, const std::shared_ptr<WorkEntry>& entry) {
  Terminal::message("Timer stopped at " + Display(session.calendar()).time(session.now()) + " after " +
                    Display::duration(entry->workedSeconds(session.now())) + ".");
}

void timerStart() {
  StoreSession session;
  if (!TimerSessionController::start(session.context(), session.now())) {
    Terminal::message("The timer is running already.");
    timerStatus(session);
    return;
  }
  Terminal::message("Timer started at " + Display(session.calendar()).time(session.now()) + ".");
}

void timerStop() {
  StoreSession session;
  const auto running = TimerSessionController::runningEntry(session.context(), session.now());
  // Nothing to stop is a refusal, which scripts must be able to tell.
  if (!running || !TimerSessionController::stop(session.context(), session.now())) {
    throw CommandFailure("The timer is not running.");
  }
  reportStop(session, running);
}

void timerToggle() {
  StoreSession session;
  const auto running = TimerSessionController::runningEntry(session.context(), session.now());
  if (TimerSessionController::toggle(session.context(), session.now())) {
    Terminal::message("Timer started at " + Display(session.calendar()).time(session.now()) + ".");
  } else if (running) {
    reportStop(session, running);
  }
}

// ---- entries typed in ----

std::int64_t breakMinutes(const std::string& text) {
  const std::int64_t minutes = CommandInput::minutes(text, "--break");
  if (minutes < 0 || minutes > DataStoreMaintenance::maximumBreakMinutes) {
    throw UsageError("--break: a break lasts from 0 to " +
                     std::to_string(DataStoreMaintenance::maximumBreakMinutes) + " minutes");
  }
  return minutes;
}

void checkOrder(Date start, std::optional<Date> end) {
  if (end && *end < start) throw UsageError("--end: the end comes before the start");
}

void add(const EntryOptions& options) {
  StoreSession session;
  const Date start = CommandInput::dateTime(options.start, session.today(), session.calendar(), "--start");
  const Date end = CommandInput::dateTime(options.end, session.today(), session.calendar(), "--end");
  const std::int64_t pause = options.breakTime.empty() ? 0 : breakMinutes(options.breakTime);
  checkOrder(start, end);
  auto entry = std::make_shared<WorkEntry>(UUID::random(), start, end, pause,
                                           CommandInput::text(options.note.value_or(""), "--note"), session.now(),
                                           session.now());
  session.context().insert(entry);
  session.context().save();
  Terminal::message("Added work " + Display::shortIdentifier(entry->id()) + ": " +
                    Display::duration(entry->workedSeconds(session.now())) + " on " +
                    Display(session.calendar()).day(start) + ".");
}

std::vector<std::shared_ptr<WorkEntry>> entries(StoreSession& session) {
  return session.context().fetch<WorkEntry>({{}, {{&WorkEntry::startedAt}, {&WorkEntry::id}}});
}

void edit(const EntryOptions& options) {
  StoreSession session;
  const auto found = RecordLookup::find(entries(session), options.identifier, "work entry");
  WorkEntry& entry = *found.front();
  const Date start = options.start.empty()
                         ? entry.startedAt()
                         : CommandInput::dateTime(options.start, session.today(), session.calendar(), "--start");
  const std::optional<Date> end =
      options.end.empty() ? entry.endedAt()
                          : CommandInput::dateTime(options.end, session.today(), session.calendar(), "--end");
  const std::int64_t pause = options.breakTime.empty() ? entry.breakMinutes() : breakMinutes(options.breakTime);
  checkOrder(start, end);
  entry.setStartedAt(start);
  entry.setEndedAt(end);
  entry.setBreakMinutes(pause);
  if (options.note) entry.setNote(NoteValidation::normalized(CommandInput::text(*options.note, "--note")));
  entry.setModifiedAt(session.now());
  session.context().save();
  Terminal::message("Changed work " + Display::shortIdentifier(entry.id()) + ".");
}

void remove(const std::string& identifier) {
  StoreSession session;
  const auto found = RecordLookup::find(entries(session), identifier, "work entry");
  for (const auto& entry : found) session.context().deleteRecord(entry);
  session.context().save();
  Terminal::message("Deleted work " + Display::shortIdentifier(found.front()->id()) + " (" +
                    Display(session.calendar()).dateTime(found.front()->startedAt()) + ").");
}

void list(const ListOptions& options) {
  StoreSession session;
  const DateInput::Day today = session.today();
  DateInterval interval = CommandInput::days(options.from, options.to, today.adding(1 - BookingCommands::defaultListDays),
                                             today, today, session.calendar());
  if (options.all) interval = DateInterval::between(Date(-1e300), Date(1e300));
  showList(session, interval);
}

void addEntryOptions(CLI::App& command, EntryOptions& options, bool required) {
  command.add_option("--start", options.start, "When the work began (\"YYYY-MM-DD HH:MM\" or HH:MM)")
      ->type_name("TIME")
      ->required(required);
  command.add_option("--end", options.end, "When it ended")->type_name("TIME")->required(required);
  command.add_option("--break", options.breakTime, "Break taken in between (0 to 240 minutes, e.g. 30 or 0:45)")
      ->type_name("DURATION");
  command.add_option("--note,-n", options.note, "A note (at most 280 characters)")->type_name("TEXT");
}

}  // namespace

void showList(StoreSession& session, const DateInterval& interval) {
  const Display display(session.calendar());
  TextTable table({{"ID"}, {"Start"}, {"End"}, {"Break", TextTable::Alignment::right},
                   {"Worked", TextTable::Alignment::right}, {"Note"}});
  double total = 0;
  std::size_t count = 0;
  for (const auto& entry : entries(session)) {
    if (entry->startedAt() < interval.start || entry->startedAt() >= interval.end()) continue;
    const double worked = entry->workedSeconds(session.now());
    total += worked;
    ++count;
    const std::string end = entry->endedAt() ? (display.day(*entry->endedAt()) == display.day(entry->startedAt())
                                                     ? display.time(*entry->endedAt())
                                                     : display.dateTime(*entry->endedAt()))
                                             : "running";
    table.addRow({Display::shortIdentifier(entry->id()), display.dateTime(entry->startedAt()), end,
                  Display::duration(static_cast<double>(entry->breakMinutes()) * 60.0), Display::duration(worked),
                  entry->note()});
  }
  if (count == 0) {
    Terminal::message("No work in that time.");
    return;
  }
  table.addRule();
  table.addRow({std::to_string(count) + (count == 1 ? " entry" : " entries"), "", "", "", Display::duration(total)});
  Terminal::write(table.render());
}

void install(CommandSet& commands) {
  CLI::App& root = commands.root();
  CLI::App* timer = commands.addGroup(root, "timer", "Start, stop or look at the work timer");
  commands.add(*timer, "start", "Start the timer now", [] { timerStart(); });
  commands.add(*timer, "stop", "Stop the timer now", [] { timerStop(); });
  commands.add(*timer, "toggle", "Start the timer, or stop it when it runs", [] { timerToggle(); });
  commands.add(*timer, "status", "Say whether the timer runs and since when", [] {
    StoreSession session;
    timerStatus(session);
  });

  CLI::App* work = commands.addGroup(root, "work", "Worked time typed in by hand");
  auto addOptions = std::make_shared<EntryOptions>();
  CLI::App* addCommand = commands.add(*work, "add", "Add worked time", [addOptions] { add(*addOptions); });
  addEntryOptions(*addCommand, *addOptions, true);
  addCommand->footer("Example:\n  quillmont work add --start \"2026-03-02 08:30\" --end \"2026-03-02 17:00\" --break 45");

  auto editOptions = std::make_shared<EntryOptions>();
  CLI::App* editCommand = commands.add(*work, "edit", "Change worked time", [editOptions] { edit(*editOptions); });
  editCommand->add_option("ID", editOptions->identifier, "The entry's identifier (a unique prefix is enough)")
      ->required();
  addEntryOptions(*editCommand, *editOptions, false);

  auto identifier = std::make_shared<std::string>();
  CLI::App* deleteCommand = commands.add(*work, "delete", "Delete worked time", [identifier] { remove(*identifier); });
  deleteCommand->add_option("ID", *identifier, "The entry's identifier (a unique prefix is enough)")->required();

  auto listOptions = std::make_shared<ListOptions>();
  CLI::App* listCommand = commands.add(*work, "list", "List worked time (the last 30 days unless told otherwise)",
                                       [listOptions] { list(*listOptions); });
  listCommand->add_option("--from", listOptions->from, "First day (YYYY-MM-DD)")->type_name("DAY");
  listCommand->add_option("--to", listOptions->to, "Last day (YYYY-MM-DD)")->type_name("DAY");
  listCommand->add_flag("--all", listOptions->all, "Every entry")->excludes("--from")->excludes("--to");
}

}  // namespace quillmont::WorkCommands
