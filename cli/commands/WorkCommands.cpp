#include "cli/commands/WorkCommands.h"

#include <string>

#include <CLI/CLI.hpp>

#include "cli/commands/BookingCommands.h"
#include "app/session/StoreSession.h"
#include "app/text/Display.h"
#include "app/work/Timer.h"
#include "app/work/WorkEntries.h"
#include "cli/output/JsonOutput.h"
#include "cli/output/Terminal.h"
#include "cli/output/TextTable.h"
#include "cli/input/UsageError.h"
#include "core/ledger/WorkEntry.h"

namespace quillmont::WorkCommands {
namespace {

using BookingCommands::ListOptions;

using EntryOptions = WorkEntries::Request;

/// "2026-03-02 08:30–17:30, 8:00 worked": the entry as a change left it.
std::string described(const WorkEntries::Changed& changed, StoreSession& session) {
  const WorkEntry& entry = *changed.entry;
  return Display(session.calendar()).span(entry.startedAt(), entry.endedAt()) + ", " +
         Display::duration(changed.workedSeconds) + (entry.isRunning() ? " worked so far" : " worked");
}

std::string described(const std::shared_ptr<WorkEntry>& entry, StoreSession& session) {
  return described({entry, entry->workedSeconds(session.now())}, session);
}

// ---- timer ----

void timerStatus(StoreSession& session) {
  const auto running = Timer::running(session);
  if (!running) {
    Terminal::print("not running");
    return;
  }
  Terminal::print("running since " + Display(session.calendar()).dateTime(running->startedAt()) + " (" +
                  Display::duration(session.now() - running->startedAt()) + ")");
}

struct TimerOptions {
  Timer::Start start;
  std::optional<std::string> note;
  std::optional<std::string> noteArgument;
};

void saidStarted(StoreSession& session, const std::shared_ptr<WorkEntry>& started) {
  Terminal::message("Timer started at " + Display(session.calendar()).time(started->startedAt()) +
                    (started->note().empty() ? std::string() : " for \"" + Terminal::escaped(started->note()) + "\"") +
                    ": work " + Display::shortIdentifier(started->id()) + ", " + described(started, session) + ".");
}

void saidStopped(StoreSession& session, const std::shared_ptr<WorkEntry>& stopped) {
  Terminal::message("Timer stopped at " + Display(session.calendar()).time(*stopped->endedAt()) + ": work " +
                    Display::shortIdentifier(stopped->id()) + ", " + described(stopped, session) + ".");
}

void timerStart(TimerOptions options) {
  if (options.note && options.noteArgument) throw UsageError("NOTE: give the note once, as NOTE or with --note");
  options.start.note = options.note.value_or(options.noteArgument.value_or(""));
  StoreSession session;
  saidStarted(session, Timer::start(session, options.start));
}

void timerContinue(const TimerOptions& options) {
  StoreSession session;
  saidStarted(session, Timer::resume(session, options.start));
}

void timerStop(const std::string& at) {
  StoreSession session;
  saidStopped(session, Timer::stop(session, at));
}

void timerCancel() {
  StoreSession session;
  const auto cancelled = Timer::cancel(session);
  Terminal::message("Timer cancelled; the time since " + Display(session.calendar()).time(cancelled->startedAt()) +
                    " was not recorded.");
}

void timerToggle(bool force) {
  StoreSession session;
  const auto toggled = Timer::toggle(session, force);
  if (toggled.started) {
    saidStarted(session, toggled.entry);
  } else {
    saidStopped(session, toggled.entry);
  }
}

// ---- entries typed in ----

void add(const EntryOptions& options) {
  StoreSession session;
  const auto added = WorkEntries::add(session, options);
  Terminal::message("Added work " + Display::shortIdentifier(added.entry->id()) + ": " + described(added, session) +
                    ".");
}

void edit(const std::string& identifier, const EntryOptions& options) {
  StoreSession session;
  const auto edited = WorkEntries::edit(session, identifier, options);
  Terminal::message("Changed work " + Display::shortIdentifier(edited.entry->id()) + ": " +
                    described(edited, session) + ".");
}

void remove(const std::string& identifier) {
  StoreSession session;
  const auto removed = WorkEntries::remove(session, identifier);
  Terminal::message("Deleted work " + Display::shortIdentifier(removed.entry->id()) + ": " +
                    described(removed, session) + ".");
}

void listJSON(StoreSession& session, const DateInterval& interval, const std::optional<DateInput::Day>& first,
              const std::optional<DateInput::Day>& last) {
  const Display display(session.calendar());
  const auto shown = WorkEntries::list(session, interval);
  JsonOutput::print([&](JsonWriter& writer) {
    writer.beginObject();
    JsonOutput::text(writer, "from", first ? std::optional(BookingCommands::dayText(*first)) : std::nullopt);
    JsonOutput::text(writer, "to", last ? std::optional(BookingCommands::dayText(*last)) : std::nullopt);
    writer.key("entries");
    writer.beginArray();
    for (const auto& entry : shown.entries) {
      writer.beginObject();
      writer.key("id");
      writer.string(entry->id().uuidString());
      JsonOutput::instant(writer, "start", entry->startedAt(), display);
      JsonOutput::instant(writer, "end", entry->endedAt(), display);
      writer.key("running");
      writer.boolean(entry->isRunning());
      JsonOutput::duration(writer, "break", static_cast<double>(entry->breakMinutes()) * 60.0);
      JsonOutput::duration(writer, "worked", entry->workedSeconds(session.now()));
      writer.key("note");
      writer.string(entry->note());
      writer.endObject();
    }
    writer.endArray();
    writer.key("count");
    writer.integer(static_cast<std::int64_t>(shown.entries.size()));
    JsonOutput::duration(writer, "worked", shown.workedSeconds);
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
  const auto shown = WorkEntries::list(session, interval);
  if (shown.entries.empty()) {
    Terminal::message("No work " + range + ".");
    return;
  }
  TextTable table({{"ID"}, {"Start"}, {"End"}, {"Break", TextTable::Alignment::right},
                   {"Worked", TextTable::Alignment::right}, {"Note"}});
  for (const auto& entry : shown.entries) {
    const std::string end = entry->endedAt() ? (display.day(*entry->endedAt()) == display.day(entry->startedAt())
                                                     ? display.time(*entry->endedAt())
                                                     : display.dateTime(*entry->endedAt()))
                                             : "running";
    table.addRow({Display::shortIdentifier(entry->id()), display.dateTime(entry->startedAt()), end,
                  Display::duration(static_cast<double>(entry->breakMinutes()) * 60.0),
                  Display::duration(entry->workedSeconds(session.now())), Terminal::escaped(entry->note())});
  }
  // Time that several entries cover counts once in the total, as in reports.
  const std::size_t count = shown.entries.size();
  table.addRule();
  table.addRow({std::to_string(count) + (count == 1 ? " entry" : " entries"), "", "", "",
                Display::duration(shown.workedSeconds)});
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
    start->add_option("--at", options->start.at, "When the work began (HH:MM today, or \"YYYY-MM-DD HH:MM\"); not later than now")
        ->type_name("TIME");
    start->add_option("--note,-n", options->note, "A note for the work (at most 280 characters)")->type_name("TEXT");
    start->add_flag("--force", options->start.force, timerForceHelp);
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
    resume->add_option("--at", options->start.at, "When the work began again (HH:MM today, or \"YYYY-MM-DD HH:MM\"); not later than now")
        ->type_name("TIME");
    resume->add_flag("--force", options->start.force, timerForceHelp);
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
    auto identifier = std::make_shared<std::string>();
    CLI::App* editCommand =
        commands.add(*work, "edit", "Change worked time", [identifier, options] { edit(*identifier, *options); });
    editCommand->add_option("ID", *identifier, identifierHelp)->required();
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
