#include "cli/WorkCommands.h"

#include "cli/CommandFailure.h"

#include <string>

#include <CLI/CLI.hpp>

#include "cli/BookingCommands.h"
#include "cli/CommandInput.h"
#include "cli/Display.h"
#include "cli/JsonOutput.h"
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

using BookingCommands::ListOptions;

struct EntryOptions {
  std::string identifier;
  std::string start;
  std::string end;
  std::string breakTime;
  std::optional<std::string> note;
  bool force = false;
};

constexpr double maximumUnconfirmedSeconds = 24.0 * 60 * 60;

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

struct TimerOptions {
  std::string at;
  std::optional<std::string> note;
};

/// When the timer command takes effect: --at as typed, or now.
Date timerInstant(StoreSession& session, const std::string& at) {
  return at.empty() ? session.now() : CommandInput::pastTime(at, session.now(), session.calendar(), "--at");
}

void reportStart(StoreSession& session, Date at, const std::string& note) {
  Terminal::message("Timer started at " + Display(session.calendar()).time(at) +
                    (note.empty() ? std::string() : " for \"" + Terminal::escaped(note) + "\"") + ".");
}

void timerStart(const TimerOptions& options) {
  StoreSession session;
  session.journal("timer start");
  const Date at = timerInstant(session, options.at);
  const std::string note = CommandInput::text(options.note.value_or(""), "--note");
  if (!TimerSessionController::start(session.context(), at, note)) {
    Terminal::message("The timer is running already.");
    timerStatus(session);
    return;
  }
  reportStart(session, at, NoteValidation::normalized(note));
}

void timerContinue(const std::string& atText) {
  StoreSession session;
  session.journal("timer continue");
  const Date at = timerInstant(session, atText);
  const std::string note = TimerSessionController::lastNote(session.context());
  if (!TimerSessionController::start(session.context(), at, note)) {
    Terminal::message("The timer is running already.");
    timerStatus(session);
    return;
  }
  reportStart(session, at, note);
}

void timerStop(const std::string& atText) {
  StoreSession session;
  session.journal("timer stop");
  const Date at = timerInstant(session, atText);
  const auto running = TimerSessionController::runningEntry(session.context(), session.now());
  // Nothing to stop is a refusal, which scripts must be able to tell.
  if (!running) throw CommandFailure("The timer is not running.");
  if (at < running->startedAt()) {
    throw UsageError("--at: the timer started at " + Display(session.calendar()).dateTime(running->startedAt()) +
                     ", after " + Display(session.calendar()).dateTime(at));
  }
  TimerSessionController::stop(session.context(), at);
  Terminal::message("Timer stopped at " + Display(session.calendar()).time(at) + " after " +
                    Display::duration(running->workedSeconds(at)) + ".");
}

void timerCancel() {
  StoreSession session;
  session.journal("timer cancel");
  const auto cancelled = TimerSessionController::cancel(session.context(), session.now());
  if (!cancelled) throw CommandFailure("The timer is not running.");
  Terminal::message("Timer cancelled; the time since " + Display(session.calendar()).time(cancelled->startedAt()) +
                    " was not recorded.");
}

void timerToggle() {
  StoreSession session;
  session.journal("timer toggle");
  const auto running = TimerSessionController::runningEntry(session.context(), session.now());
  if (TimerSessionController::toggle(session.context(), session.now())) {
    Terminal::message("Timer started at " + Display(session.calendar()).time(session.now()) + ".");
  } else if (running) {
    Terminal::message("Timer stopped at " + Display(session.calendar()).time(session.now()) + " after " +
                      Display::duration(running->workedSeconds(session.now())) + ".");
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

/// An entry is at most a day long unless --force says the length is meant:
/// anything longer, like an end before the start, is nearly always a slip
/// (a day left out, a wrong month).
void checkInterval(Date start, std::optional<Date> end, bool force, const Calendar& calendar) {
  if (!end) return;
  const Display display(calendar);
  if (*end < start) {
    throw UsageError("--end: the entry would end at " + display.dateTime(*end) + ", before it starts at " +
                     display.dateTime(start));
  }
  if (!force && *end - start > maximumUnconfirmedSeconds) {
    throw UsageError("the entry would last " + Display::duration(*end - start) + ", from " + display.dateTime(start) +
                     " to " + display.dateTime(*end) + "; an entry longer than 24 hours needs --force");
  }
}

void add(const EntryOptions& options) {
  StoreSession session;
  session.journal("work add");
  const Date start = CommandInput::dateTime(options.start, session.today(), session.calendar(), "--start");
  const Date end = CommandInput::endTime(options.end, start, session.today(), session.calendar(), "--end");
  const std::int64_t pause = options.breakTime.empty() ? 0 : breakMinutes(options.breakTime);
  checkInterval(start, end, options.force, session.calendar());
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
  session.journal("work edit " + options.identifier);
  const auto found = RecordLookup::find(entries(session), options.identifier, "work entry");
  WorkEntry& entry = *found.front();
  // A time of day alone keeps the entry on its own day.
  const Date start = options.start.empty()
                         ? entry.startedAt()
                         : CommandInput::startTime(options.start, DateInput::dayOf(entry.startedAt(), session.calendar()),
                                                   session.today(), session.calendar(), "--start");
  const std::optional<Date> end =
      options.end.empty() ? entry.endedAt()
                          : CommandInput::endTime(options.end, start, session.today(), session.calendar(), "--end");
  const std::int64_t pause = options.breakTime.empty() ? entry.breakMinutes() : breakMinutes(options.breakTime);
  checkInterval(start, end, options.force, session.calendar());
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
  session.journal("work delete " + identifier);
  const auto found = RecordLookup::find(entries(session), identifier, "work entry");
  for (const auto& entry : found) session.context().deleteRecord(entry);
  session.context().save();
  Terminal::message("Deleted work " + Display::shortIdentifier(found.front()->id()) + " (" +
                    Display(session.calendar()).dateTime(found.front()->startedAt()) + ").");
}

bool startsInside(const WorkEntry& entry, const DateInterval& interval) {
  return entry.startedAt() >= interval.start && entry.startedAt() < interval.end();
}

void listJSON(StoreSession& session, const DateInterval& interval, const std::optional<DateInput::Day>& first,
              const std::optional<DateInput::Day>& last) {
  const Display display(session.calendar());
  JsonOutput::print([&](JsonWriter& writer) {
    writer.beginObject();
    JsonOutput::text(writer, "from", first ? std::optional(BookingCommands::dayText(*first)) : std::nullopt);
    JsonOutput::text(writer, "to", last ? std::optional(BookingCommands::dayText(*last)) : std::nullopt);
    writer.key("entries");
    writer.beginArray();
    double total = 0;
    std::int64_t count = 0;
    for (const auto& entry : entries(session)) {
      if (!startsInside(*entry, interval)) continue;
      const double worked = entry->workedSeconds(session.now());
      total += worked;
      ++count;
      writer.beginObject();
      writer.key("id");
      writer.string(entry->id().uuidString());
      JsonOutput::instant(writer, "start", entry->startedAt(), display);
      JsonOutput::instant(writer, "end", entry->endedAt(), display);
      writer.key("running");
      writer.boolean(entry->isRunning());
      JsonOutput::duration(writer, "break", static_cast<double>(entry->breakMinutes()) * 60.0);
      JsonOutput::duration(writer, "worked", worked);
      writer.key("note");
      writer.string(entry->note());
      writer.endObject();
    }
    writer.endArray();
    writer.key("count");
    writer.integer(count);
    JsonOutput::duration(writer, "worked", total);
    writer.endObject();
  });
}

void list(const ListOptions& options) {
  StoreSession session;
  const auto range = BookingCommands::listRange(options, session);
  if (options.json) {
    listJSON(session, range.interval, range.first, range.last);
  } else {
    showList(session, range.interval, range.text);
  }
}

void addEntryOptions(CLI::App& command, EntryOptions& options, bool required) {
  command.add_option("--start", options.start, "When the work began (\"YYYY-MM-DD HH:MM\" or HH:MM)")
      ->type_name("TIME")
      ->required(required);
  command.add_option("--end", options.end, "When it ended")->type_name("TIME")->required(required);
  command.add_option("--break", options.breakTime, "Break taken in between (0 to 240 minutes, e.g. 30 or 0:45)")
      ->type_name("DURATION");
  command.add_option("--note,-n", options.note, "A note (at most 280 characters)")->type_name("TEXT");
  command.add_flag("--force", options.force, "Accept an entry longer than 24 hours");
}

}  // namespace

void showList(StoreSession& session, const DateInterval& interval, const std::string& range) {
  const Display display(session.calendar());
  TextTable table({{"ID"}, {"Start"}, {"End"}, {"Break", TextTable::Alignment::right},
                   {"Worked", TextTable::Alignment::right}, {"Note"}});
  double total = 0;
  std::size_t count = 0;
  for (const auto& entry : entries(session)) {
    if (!startsInside(*entry, interval)) continue;
    const double worked = entry->workedSeconds(session.now());
    total += worked;
    ++count;
    const std::string end = entry->endedAt() ? (display.day(*entry->endedAt()) == display.day(entry->startedAt())
                                                     ? display.time(*entry->endedAt())
                                                     : display.dateTime(*entry->endedAt()))
                                             : "running";
    table.addRow({Display::shortIdentifier(entry->id()), display.dateTime(entry->startedAt()), end,
                  Display::duration(static_cast<double>(entry->breakMinutes()) * 60.0), Display::duration(worked),
                  Terminal::escaped(entry->note())});
  }
  if (count == 0) {
    Terminal::message("No work " + range + ".");
    return;
  }
  table.addRule();
  table.addRow({std::to_string(count) + (count == 1 ? " entry" : " entries"), "", "", "", Display::duration(total)});
  Terminal::print(Terminal::styled("Work " + range, Terminal::Style::bold));
  Terminal::write(table.render());
}

namespace {

void installTimer(CommandSet& commands) {
  CLI::App& root = commands.root();
  CLI::App* timer = commands.addGroup(root, "timer", "Start, stop or look at the work timer");
  const auto builds = commands.subcommands({"start", "stop", "cancel", "continue", "toggle", "status"});
  if (builds("start")) {
    auto options = std::make_shared<TimerOptions>();
    CLI::App* start = commands.add(*timer, "start", "Start the timer (now, or at the time given)",
                                   [options] { timerStart(*options); });
    start->add_option("--at", options->at, "When the work began (HH:MM, or \"YYYY-MM-DD HH:MM\"); not later than now")
        ->type_name("TIME");
    start->add_option("--note,-n", options->note, "A note for the work (at most 280 characters)")->type_name("TEXT");
  }
  if (builds("stop")) {
    auto at = std::make_shared<std::string>();
    CLI::App* stop =
        commands.add(*timer, "stop", "Stop the timer (now, or at the time given)", [at] { timerStop(*at); });
    stop->add_option("--at", *at, "When the work ended (HH:MM, or \"YYYY-MM-DD HH:MM\"); not later than now")
        ->type_name("TIME");
  }
  if (builds("cancel")) {
    commands.add(*timer, "cancel", "Discard the running timer, recording nothing", [] { timerCancel(); });
  }
  if (builds("continue")) {
    auto at = std::make_shared<std::string>();
    CLI::App* resume = commands.add(*timer, "continue", "Start the timer again with the note of the last work",
                                    [at] { timerContinue(*at); });
    resume->add_option("--at", *at, "When the work began again; not later than now")->type_name("TIME");
  }
  if (builds("toggle")) {
    commands.add(*timer, "toggle", "Start the timer, or stop it when it runs", [] { timerToggle(); });
  }
  if (builds("status")) {
    commands.add(*timer, "status", "Say whether the timer runs and since when", [] {
      StoreSession session;
      timerStatus(session);
    });
  }
}

void installWork(CommandSet& commands) {
  CLI::App& root = commands.root();
  CLI::App* work = commands.addGroup(root, "work", "Worked time typed in by hand");
  const auto builds = commands.subcommands({"add", "edit", "delete", "list"});
  if (builds("add")) {
    auto options = std::make_shared<EntryOptions>();
    CLI::App* addCommand = commands.add(*work, "add", "Add worked time", [options] { add(*options); });
    addEntryOptions(*addCommand, *options, true);
    addCommand->footer(
        "A time alone (17:00) is on today for --start, and on the start's day (or the next, when that comes before "
        "the start) for --end.\nExample:\n  quillmont work add --start \"2026-03-02 08:30\" --end 17:00 --break 45");
  }
  if (builds("edit")) {
    auto options = std::make_shared<EntryOptions>();
    CLI::App* editCommand = commands.add(*work, "edit", "Change worked time", [options] { edit(*options); });
    editCommand->add_option("ID", options->identifier, "The entry's identifier (a unique prefix is enough)")
        ->required();
    addEntryOptions(*editCommand, *options, false);
    editCommand->footer(
        "A time alone (17:30) keeps the entry on its day: the start on the day it starts, the end on the "
        "start's day or the next.");
  }
  if (builds("delete")) {
    auto identifier = std::make_shared<std::string>();
    CLI::App* deleteCommand =
        commands.add(*work, "delete", "Delete worked time", [identifier] { remove(*identifier); });
    deleteCommand->add_option("ID", *identifier, "The entry's identifier (a unique prefix is enough)")->required();
  }
  if (builds("list")) {
    auto options = std::make_shared<ListOptions>();
    CLI::App* listCommand = commands.add(*work, "list", "List worked time (the last 30 days unless told otherwise)",
                                         [options] { list(*options); });
    BookingCommands::addListOptions(*listCommand, *options, "Every entry");
  }
}

}  // namespace

void install(CommandSet& commands) {
  if (commands.builds("timer")) installTimer(commands);
  if (commands.builds("work")) installWork(commands);
}

}  // namespace quillmont::WorkCommands
