#include "cli/WorkCommands.h"

#include "cli/CommandFailure.h"

#include <algorithm>
#include <string>

#include <CLI/CLI.hpp>

#include "cli/BookingCommands.h"
#include "cli/CommandInput.h"
#include "app/text/Display.h"
#include "cli/JsonOutput.h"
#include "app/records/RecordLookup.h"
#include "app/session/StoreSession.h"
#include "cli/Terminal.h"
#include "cli/TextTable.h"
#include "cli/UsageError.h"
#include "core/engine/DataStoreMaintenance.h"
#include "core/engine/TimeBankCalculator.h"
#include "core/engine/TimerSessionController.h"
#include "core/engine/WorkOverlap.h"
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

// ---- what every change of work says ----

/// "2026-03-02 08:30–17:30, 8:00 worked": the entry as it now stands.
std::string described(const WorkEntry& entry, StoreSession& session) {
  return Display(session.calendar()).span(entry.startedAt(), entry.endedAt()) + ", " +
         Display::duration(entry.workedSeconds(session.now())) + (entry.isRunning() ? " worked so far" : " worked");
}

/// Refuses work spanning `span` that would overlap other work (except the
/// entry `except` itself), naming the work it overlaps, unless `force` says
/// it is meant; `what` names the work ("The entry", "The timer").
void refuseOverlaps(StoreSession& session, const WorkOverlap::Span& span, const std::optional<UUID>& except,
                    bool force, const std::string& what) {
  if (force) return;
  const auto overlapping = WorkOverlap::overlapping(session.context(), span, session.now(), except);
  if (overlapping.empty()) return;
  const Display display(session.calendar());
  std::string named;
  std::vector<UUID> shown;
  for (const auto& entry : overlapping) {
    if (std::find(shown.begin(), shown.end(), entry->id()) != shown.end()) continue;  // a copy
    shown.push_back(entry->id());
    named += (named.empty() ? "" : ", ") + std::string("work ") + Display::shortIdentifier(entry->id()) + " (" +
             display.span(entry->startedAt(), entry->endedAt()) + ")";
  }
  throw CommandFailure(what + " would overlap " + named +
                       "; add --force if that is meant (time covered twice counts once).");
}

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
  std::optional<std::string> noteArgument;
  bool force = false;
};

/// When the timer command takes effect: --at as typed, or now.
Date timerInstant(StoreSession& session, const std::string& at) {
  return at.empty() ? session.now() : CommandInput::pastTime(at, session.now(), session.calendar(), "--at");
}

/// Starts the timer at `at` with `note`: refused while it runs (as a stop
/// with nothing running is) and when the new work would overlap other work.
void startTimer(StoreSession& session, Date at, const std::string& note, bool force) {
  if (const auto running = TimerSessionController::runningEntry(session.context(), session.now())) {
    throw CommandFailure("The timer is running already, since " +
                         Display(session.calendar()).dateTime(running->startedAt()) + ".");
  }
  refuseOverlaps(session, WorkOverlap::span(at, std::nullopt, session.now()), std::nullopt, force,
                 "The timer from " + Display(session.calendar()).dateTime(at));
  TimerSessionController::start(session.context(), at, note);
  const auto started = TimerSessionController::runningEntry(session.context(), session.now());
  Terminal::message("Timer started at " + Display(session.calendar()).time(at) +
                    (started->note().empty() ? std::string() : " for \"" + Terminal::escaped(started->note()) + "\"") + ": work " +
                    Display::shortIdentifier(started->id()) + ", " + described(*started, session) + ".");
}

void timerStart(const TimerOptions& options) {
  if (options.note && options.noteArgument) throw UsageError("NOTE: give the note once, as NOTE or with --note");
  StoreSession session;
  session.journal("timer start");
  const Date at = timerInstant(session, options.at);
  startTimer(session, at, CommandInput::text(options.note.value_or(options.noteArgument.value_or("")), "--note"),
             options.force);
}

void timerContinue(const TimerOptions& options) {
  StoreSession session;
  session.journal("timer continue");
  const Date at = timerInstant(session, options.at);
  startTimer(session, at, TimerSessionController::lastNote(session.context()), options.force);
}

/// Stops the running entry at `at` and says what it became.
void stopTimer(StoreSession& session, const std::shared_ptr<WorkEntry>& running, Date at) {
  TimerSessionController::stop(session.context(), at);
  Terminal::message("Timer stopped at " + Display(session.calendar()).time(at) + ": work " +
                    Display::shortIdentifier(running->id()) + ", " + described(*running, session) + ".");
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
  stopTimer(session, running, at);
}

void timerCancel() {
  StoreSession session;
  session.journal("timer cancel");
  const auto cancelled = TimerSessionController::cancel(session.context(), session.now());
  if (!cancelled) throw CommandFailure("The timer is not running.");
  Terminal::message("Timer cancelled; the time since " + Display(session.calendar()).time(cancelled->startedAt()) +
                    " was not recorded.");
}

void timerToggle(bool force) {
  StoreSession session;
  session.journal("timer toggle");
  if (const auto running = TimerSessionController::runningEntry(session.context(), session.now())) {
    stopTimer(session, running, session.now());
  } else {
    startTimer(session, session.now(), "", force);
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
  const Date end = CommandInput::workEndTime(options.end, start, session.now(), session.calendar(), "--end");
  const std::int64_t pause = options.breakTime.empty() ? 0 : breakMinutes(options.breakTime);
  checkInterval(start, end, options.force, session.calendar());
  refuseOverlaps(session, WorkOverlap::span(start, end, session.now()), std::nullopt, options.force, "The entry");
  auto entry = std::make_shared<WorkEntry>(UUID::random(), start, end, pause,
                                           CommandInput::text(options.note.value_or(""), "--note"), session.now(),
                                           session.now());
  session.context().insert(entry);
  session.context().save();
  Terminal::message("Added work " + Display::shortIdentifier(entry->id()) + ": " + described(*entry, session) + ".");
}

std::vector<std::shared_ptr<WorkEntry>> entries(StoreSession& session) {
  return session.context().fetch<WorkEntry>({{}, {{&WorkEntry::startedAt}, {&WorkEntry::id}}});
}

/// Newest first: the entry made last (createdAt), then the later start,
/// then the greater identifier.
bool madeLater(const WorkEntry& a, const WorkEntry& b) {
  using RecordLookup::recency;
  if (recency(a.createdAt()) != recency(b.createdAt())) return recency(a.createdAt()) > recency(b.createdAt());
  if (recency(a.startedAt()) != recency(b.startedAt())) return recency(a.startedAt()) > recency(b.startedAt());
  return a.id() > b.id();
}

/// The entries the command line names (identifier, prefix, @N or last).
std::vector<std::shared_ptr<WorkEntry>> named(StoreSession& session, const std::string& identifier) {
  return RecordLookup::find(entries(session), identifier, "work entry", madeLater);
}

/// How undo names the entry a command changed: as typed, or by its
/// identifier when typed as a place among the newest, which moves on.
std::string journalName(const std::string& typed, const WorkEntry& entry) {
  return RecordLookup::recentPlace(typed) ? Display::shortIdentifier(entry.id()) : typed;
}

void edit(const EntryOptions& options) {
  StoreSession session;
  const auto found = named(session, options.identifier);
  session.journal("work edit " + journalName(options.identifier, *found.front()));
  WorkEntry& entry = *found.front();
  // A time of day alone keeps the entry on its own day.
  const Date start = options.start.empty()
                         ? entry.startedAt()
                         : CommandInput::startTime(options.start, DateInput::dayOf(entry.startedAt(), session.calendar()),
                                                   session.today(), session.calendar(), "--start");
  const std::optional<Date> end =
      options.end.empty() ? entry.endedAt()
                          : CommandInput::workEndTime(options.end, start, session.now(), session.calendar(), "--end");
  // The timer cannot have started later than now; it would be moved back.
  if (!end && !options.start.empty() && start > session.now()) {
    throw UsageError("--start: the running timer cannot start at " + Display(session.calendar()).dateTime(start) +
                     ", which is still to come");
  }
  const std::int64_t pause = options.breakTime.empty() ? entry.breakMinutes() : breakMinutes(options.breakTime);
  checkInterval(start, end, options.force, session.calendar());
  refuseOverlaps(session, WorkOverlap::span(start, end, session.now()), entry.id(), options.force, "The entry");
  entry.setStartedAt(start);
  entry.setEndedAt(end);
  entry.setBreakMinutes(pause);
  if (options.note) entry.setNote(NoteValidation::normalized(CommandInput::text(*options.note, "--note")));
  entry.setModifiedAt(session.now());
  session.context().save();
  Terminal::message("Changed work " + Display::shortIdentifier(entry.id()) + ": " + described(entry, session) + ".");
}

void remove(const std::string& identifier) {
  StoreSession session;
  const auto found = named(session, identifier);
  session.journal("work delete " + journalName(identifier, *found.front()));
  for (const auto& entry : found) session.context().deleteRecord(entry);
  session.context().save();
  Terminal::message("Deleted work " + Display::shortIdentifier(found.front()->id()) + ": " +
                    described(*found.front(), session) + ".");
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
    std::vector<std::shared_ptr<WorkEntry>> shown;
    for (const auto& entry : entries(session)) {
      if (!startsInside(*entry, interval)) continue;
      shown.push_back(entry);
      const double worked = entry->workedSeconds(session.now());
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
    writer.integer(static_cast<std::int64_t>(shown.size()));
    JsonOutput::duration(writer, "worked", TimeBankCalculator::workedSeconds(shown, session.now()));
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
  command.add_flag("--force", options.force, "Accept an entry longer than 24 hours or one that overlaps other work");
}

}  // namespace

void showList(StoreSession& session, const DateInterval& interval, const std::string& range) {
  const Display display(session.calendar());
  TextTable table({{"ID"}, {"Start"}, {"End"}, {"Break", TextTable::Alignment::right},
                   {"Worked", TextTable::Alignment::right}, {"Note"}});
  std::vector<std::shared_ptr<WorkEntry>> shown;
  for (const auto& entry : entries(session)) {
    if (!startsInside(*entry, interval)) continue;
    shown.push_back(entry);
    const double worked = entry->workedSeconds(session.now());
    const std::string end = entry->endedAt() ? (display.day(*entry->endedAt()) == display.day(entry->startedAt())
                                                     ? display.time(*entry->endedAt())
                                                     : display.dateTime(*entry->endedAt()))
                                             : "running";
    table.addRow({Display::shortIdentifier(entry->id()), display.dateTime(entry->startedAt()), end,
                  Display::duration(static_cast<double>(entry->breakMinutes()) * 60.0), Display::duration(worked),
                  Terminal::escaped(entry->note())});
  }
  if (shown.empty()) {
    Terminal::message("No work " + range + ".");
    return;
  }
  // Time that several entries cover counts once in the total, as in reports.
  const std::size_t count = shown.size();
  table.addRule();
  table.addRow({std::to_string(count) + (count == 1 ? " entry" : " entries"), "", "", "",
                Display::duration(TimeBankCalculator::workedSeconds(shown, session.now()))});
  Terminal::print(Terminal::styled("Work " + range, Terminal::Style::bold));
  Terminal::write(table.render());
}

namespace {

constexpr const char* timerForceHelp = "Start even when the timer's work would overlap other work";

void installTimer(CommandSet& commands) {
  CLI::App& root = commands.root();
  CLI::App* timer = commands.addGroup(root, "timer", "Start, stop or look at the work timer");
  const auto builds = commands.subcommands({"start", "stop", "cancel", "continue", "toggle", "status"});
  if (builds("start")) {
    auto options = std::make_shared<TimerOptions>();
    CLI::App* start = commands.add(*timer, "start", "Start the timer (now, or at the time given)",
                                   [options] { timerStart(*options); });
    start->add_option("NOTE", options->noteArgument, "A note for the work (or give it with --note)")
        ->type_name("TEXT");
    start->add_option("--at", options->at, "When the work began (HH:MM today, or \"YYYY-MM-DD HH:MM\"); not later than now")
        ->type_name("TIME");
    start->add_option("--note,-n", options->note, "A note for the work (at most 280 characters)")->type_name("TEXT");
    start->add_flag("--force", options->force, timerForceHelp);
    start->footer("Refused while the timer runs, and when the work would overlap other work (unless --force).\n"
                  "Example:\n  quillmont timer start \"release notes\" --at 08:45");
  }
  if (builds("stop")) {
    auto at = std::make_shared<std::string>();
    CLI::App* stop =
        commands.add(*timer, "stop", "Stop the timer (now, or at the time given)", [at] { timerStop(*at); });
    stop->add_option("--at", *at, "When the work ended (HH:MM today, or \"YYYY-MM-DD HH:MM\"); not later than now")
        ->type_name("TIME");
  }
  if (builds("cancel")) {
    commands.add(*timer, "cancel", "Discard the running timer, recording nothing", [] { timerCancel(); });
  }
  if (builds("continue")) {
    auto options = std::make_shared<TimerOptions>();
    CLI::App* resume = commands.add(*timer, "continue", "Start the timer again with the note of the last work",
                                    [options] { timerContinue(*options); });
    resume->add_option("--at", options->at, "When the work began again (HH:MM today, or \"YYYY-MM-DD HH:MM\"); not later than now")
        ->type_name("TIME");
    resume->add_flag("--force", options->force, timerForceHelp);
  }
  if (builds("toggle")) {
    auto force = std::make_shared<bool>(false);
    CLI::App* toggle = commands.add(*timer, "toggle", "Start the timer, or stop it when it runs",
                                    [force] { timerToggle(*force); });
    toggle->add_flag("--force", *force, timerForceHelp);
  }
  if (builds("status")) {
    commands.add(*timer, "status", "Say whether the timer runs and since when", [] {
      StoreSession session;
      timerStatus(session);
    });
  }
}

constexpr const char* identifierHelp =
    "The entry's identifier (a unique prefix is enough), or @1 (also: last) for the newest entry, @2 for the one "
    "before";
constexpr const char* newestHelp =
    "The newest entry is the one made last (by when it was made; among entries made at once, the later start).";
constexpr const char* timeAloneHelp =
    "A time alone (17:30) keeps the entry on its day: --start on the entry's day (today for a new one), --end on the "
    "start's day, or the next when that comes before the start. Such an --end must not lie ahead of now nor make a "
    "night of more than 12 hours: write the day for those. Work that overlaps other work is refused unless --force "
    "says it is meant (time covered twice counts once).";

void installWork(CommandSet& commands) {
  CLI::App& root = commands.root();
  CLI::App* work = commands.addGroup(root, "work", "Worked time typed in by hand");
  const auto builds = commands.subcommands({"add", "edit", "delete", "list"});
  if (builds("add")) {
    auto options = std::make_shared<EntryOptions>();
    CLI::App* addCommand = commands.add(*work, "add", "Add worked time", [options] { add(*options); });
    addEntryOptions(*addCommand, *options, true);
    addCommand->footer(std::string(timeAloneHelp) +
                       "\nExample:\n  quillmont work add --start \"2026-03-02 08:30\" --end 17:00 --break 45");
  }
  if (builds("edit")) {
    auto options = std::make_shared<EntryOptions>();
    CLI::App* editCommand = commands.add(*work, "edit", "Change worked time", [options] { edit(*options); });
    editCommand->add_option("ID", options->identifier, identifierHelp)->required();
    addEntryOptions(*editCommand, *options, false);
    editCommand->footer(std::string(timeAloneHelp) + "\n" + newestHelp);
  }
  if (builds("delete")) {
    auto identifier = std::make_shared<std::string>();
    CLI::App* deleteCommand =
        commands.add(*work, "delete", "Delete worked time", [identifier] { remove(*identifier); });
    deleteCommand->add_option("ID", *identifier, identifierHelp)->required();
    deleteCommand->footer(newestHelp);
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
