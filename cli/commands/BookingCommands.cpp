#include "cli/commands/BookingCommands.h"

#include <cstdio>
#include <string>

#include <CLI/CLI.hpp>

#include "app/bookings/Bookings.h"
#include "app/session/StoreSession.h"
#include "app/text/Display.h"
#include "cli/input/CommandInput.h"
#include "cli/input/UsageError.h"
#include "cli/output/JsonOutput.h"
#include "cli/output/Terminal.h"
#include "cli/output/TextTable.h"
#include "core/ledger/BalanceAdjustment.h"
#include "core/ledger/BalanceAdjustmentKind.h"

namespace quillmont::BookingCommands {
namespace {

struct BookOptions {
  std::string duration;
  std::string category;
  std::string note;
  std::string day;
};

void book(const BookOptions& options) {
  const std::int64_t minutes = CommandInput::minutes(options.duration, "DURATION");
  StoreSession session;
  const auto booked =
      Bookings::add(session, {minutes, options.category, options.note, options.day, options.duration});
  const auto& booking = *booked.booking;
  Terminal::message("Booked " + Display::amountOfMinutes(booking.minutes()) + " as " + booked.categoryTitle + " on " +
                    Display(session.calendar()).dateTime(booking.date()) + " (id " +
                    Display::shortIdentifier(booking.id()) + "); balance " + Display::amount(booked.balanceSeconds) +
                    ".");
}

void listJSON(StoreSession& session, const DateInterval& interval, const std::optional<DateInput::Day>& first,
              const std::optional<DateInput::Day>& last) {
  const Display display(session.calendar());
  const auto shown = Bookings::list(session, interval);
  JsonOutput::print([&](JsonWriter& writer) {
    writer.beginObject();
    JsonOutput::text(writer, "from", first ? std::optional(dayText(*first)) : std::nullopt);
    JsonOutput::text(writer, "to", last ? std::optional(dayText(*last)) : std::nullopt);
    writer.key("bookings");
    writer.beginArray();
    for (const auto& booking : shown.bookings) {
      writer.beginObject();
      writer.key("id");
      writer.string(booking->id().uuidString());
      JsonOutput::instant(writer, "date", booking->date(), display);
      writer.key("minutes");
      writer.integer(booking->minutes());
      JsonOutput::amount(writer, "amount", static_cast<double>(booking->minutes()) * 60.0);
      writer.key("category");
      writer.string(booking->kindRawValue());
      writer.key("categoryTitle");
      writer.string(booking->category().title);
      writer.key("note");
      writer.string(booking->note());
      writer.endObject();
    }
    writer.endArray();
    writer.key("count");
    writer.integer(static_cast<std::int64_t>(shown.bookings.size()));
    JsonOutput::amount(writer, "total", shown.totalSeconds);
    JsonOutput::amount(writer, "balanceBefore", shown.beforeSeconds);
    JsonOutput::amount(writer, "balanceAfter", shown.beforeSeconds + shown.totalSeconds);
    writer.endObject();
  });
}

void list(const ListOptions& options) {
  StoreSession session;
  const auto range = listRange(options, session);
  if (options.json) {
    listJSON(session, range.interval, range.first, range.last);
  } else {
    showList(session, range.interval, range.text);
  }
}

void remove(const std::string& identifier) {
  StoreSession session;
  const auto booking = Bookings::remove(session, identifier);
  Terminal::message("Deleted booking " + Display::shortIdentifier(booking->id()) + " (" +
                    Display::amountOfMinutes(booking->minutes()) + " on " +
                    Display(session.calendar()).dateTime(booking->date()) + ").");
}

struct EditOptions {
  std::optional<std::string> amount;
  std::optional<std::string> category;
  std::optional<std::string> note;
  std::optional<std::string> day;
};

std::string quoted(const std::string& note) { return note.empty() ? "(none)" : "\"" + Terminal::escaped(note) + "\""; }

void edit(const std::string& identifier, const EditOptions& options) {
  if (!options.amount && !options.category && !options.note && !options.day) {
    throw UsageError("nothing to change: give --amount, --category, --note or --day");
  }
  StoreSession session;
  const auto edited = Bookings::edit(session, identifier, {options.amount, options.category, options.note, options.day});
  const Display display(session.calendar());
  const Bookings::Values& before = edited.before;
  const Bookings::Values& after = edited.after;
  std::string changes;
  const auto changed = [&](const std::string& what, const std::string& was, const std::string& is) {
    if (was == is) return;
    changes += (changes.empty() ? ": " : ", ") + what + " " + was + " \u2192 " + is;
  };
  changed("amount", Display::amountOfMinutes(before.minutes), Display::amountOfMinutes(after.minutes));
  changed("category", before.categoryTitle, after.categoryTitle);
  changed("note", quoted(before.note), quoted(after.note));
  changed("date", display.dateTime(before.date), display.dateTime(after.date));
  Terminal::message((changes.empty() ? "Booking " + Display::shortIdentifier(edited.booking->id()) +
                                           " already had these values"
                                     : "Changed booking " + Display::shortIdentifier(edited.booking->id()) + changes) +
                    "; balance " + Display::amount(edited.balanceSeconds) + ".");
}

}  // namespace

std::string dayText(const DateInput::Day& day) {
  char buffer[16];
  std::snprintf(buffer, sizeof buffer, "%04d-%02d-%02d", day.year, day.month, day.day);
  return buffer;
}

void addListOptions(CLI::App& command, ListOptions& options, const std::string& every) {
  command.add_option("--from", options.from, "First day (YYYY-MM-DD)")->type_name("DAY");
  command.add_option("--to", options.to, "Last day (YYYY-MM-DD)")->type_name("DAY");
  command.add_flag("--all", options.all, every)->excludes("--from")->excludes("--to");
  command.add_flag("--json", options.json, "Print a JSON object instead of a table");
}

ListRange listRange(const ListOptions& options, StoreSession& session) {
  const std::string& from = options.from;
  const std::string& to = options.to;
  if (options.all) return {DateInterval::between(Date(-1e300), Date(1e300)), std::nullopt, std::nullopt, "of every day"};
  const DateInput::Day today = session.today();
  const DateInput::Day first = from.empty() ? today.adding(1 - defaultListDays) : CommandInput::day(from, today, "--from");
  const DateInput::Day last = to.empty() ? today : CommandInput::day(to, today, "--to");
  return {CommandInput::days(from, to, first, last, today, session.calendar()), first, last,
          rangeText(first, last, from.empty() && to.empty())};
}

std::string rangeText(const DateInput::Day& first, const DateInput::Day& last, bool byDefault) {
  return "from " + dayText(first) + " to " + dayText(last) +
         (byDefault ? " (the last " + std::to_string(defaultListDays) + " days; --from, --to or --all for others)" : "");
}

void showList(StoreSession& session, const DateInterval& interval, const std::string& range) {
  const Display display(session.calendar());
  const bool everything = interval.start == Date(-1e300);
  const auto shown = Bookings::list(session, interval);
  if (shown.bookings.empty()) {
    Terminal::message("No bookings " + range + "; the balance stays " + Display::amount(shown.beforeSeconds) + ".");
    return;
  }
  TextTable table({{"ID"}, {"Date"}, {"Amount", TextTable::Alignment::right}, {"Category"}, {"Note"}});
  for (const auto& adjustment : shown.bookings) {
    const double seconds = static_cast<double>(adjustment->minutes()) * 60.0;
    table.addRow({Display::shortIdentifier(adjustment->id()), display.dateTime(adjustment->date()),
                  {Display::amount(seconds), Terminal::styleForAmount(seconds)}, adjustment->category().title,
                  Terminal::escaped(adjustment->note())});
  }
  const auto balanceRow = [&](std::string label, std::string day, double seconds) {
    table.addRow({std::move(label), std::move(day), {Display::amount(seconds), Terminal::styleForAmount(seconds)}});
  };
  const std::size_t count = shown.bookings.size();
  table.addRule();
  table.addRow({std::to_string(count) + (count == 1 ? " booking" : " bookings"), "",
                {Display::amount(shown.totalSeconds), Terminal::styleForAmount(shown.totalSeconds)}});
  if (everything) {
    balanceRow("Starting balance", "", shown.beforeSeconds);
    balanceRow("Resulting balance", "", shown.beforeSeconds + shown.totalSeconds);
  } else {
    const std::optional<Date> lastInstant = session.calendar().dateByAddingSeconds(-1, interval.end());
    balanceRow("Balance before", display.day(interval.start), shown.beforeSeconds);
    balanceRow("Balance after", lastInstant ? display.day(*lastInstant) : "", shown.beforeSeconds + shown.totalSeconds);
  }
  Terminal::print(Terminal::styled("Bookings " + range, Terminal::Style::bold));
  Terminal::write(table.render());
}

namespace {

constexpr const char* identifierHelp =
    "The booking's identifier (a unique prefix is enough), or @1 (also: last) for the newest booking, @2 for the "
    "one before";
constexpr const char* newestHelp =
    "The newest booking is the one made last (by when it was made; among bookings made at once, the later day).";
constexpr const char* categoryHelp =
    "A kind (manual, appointment, personalErrands, longLunch, other, holiday, paidLeave, sickLeave) or the title of "
    "one of your categories";

CommandSet::Values categoryValues() {
  CommandSet::Values categories{{}, true};
  for (const BalanceAdjustmentKind kind : BalanceAdjustmentKind::allCases()) categories.words.emplace_back(kind.rawValue());
  return categories;
}

void installBook(CommandSet& commands) {
  CLI::App& root = commands.root();
  auto bookOptions = std::make_shared<BookOptions>();
  CLI::App* bookCommand =
      commands.add(root, "book", "Book time into (+) or out of (-) the bank", [bookOptions] { book(*bookOptions); });
  bookCommand->add_option("DURATION", bookOptions->duration, "The amount: 90, -45, 1:30, -0:45, 1h30m, -2h, 45m")
      ->required();
  commands
      .offer(bookCommand->add_option("--category,-c", bookOptions->category,
                                     std::string(categoryHelp) + "; manual by default"),
             categoryValues())
      ->type_name("KIND|TITLE");
  bookCommand->add_option("--note,-n", bookOptions->note, "A note (at most 280 characters)")->type_name("TEXT");
  bookCommand->add_option("--day,-d", bookOptions->day, "The day of the booking (YYYY-MM-DD); today by default")
      ->type_name("DAY");
  bookCommand->footer("At most 24 hours either way per booking. Example:\n"
                      "  quillmont book -1h30m --category appointment --note dentist --day yesterday");
}

void installBookings(CommandSet& commands) {
  CLI::App& root = commands.root();
  CLI::App* bookings = commands.addGroup(root, "bookings", "List, edit or delete bookings");
  const auto builds = commands.subcommands({"list", "edit", "delete"});
  if (builds("list")) {
    auto options = std::make_shared<ListOptions>();
    CLI::App* listCommand = commands.add(*bookings, "list", "List bookings (the last 30 days unless told otherwise)",
                                         [options] { list(*options); });
    addListOptions(*listCommand, *options, "Every booking");
  }
  if (builds("delete")) {
    auto identifier = std::make_shared<std::string>();
    CLI::App* deleteCommand =
        commands.add(*bookings, "delete", "Delete a booking", [identifier] { remove(*identifier); });
    deleteCommand->add_option("ID", *identifier, identifierHelp)->required();
    deleteCommand->footer(newestHelp);
  }
  if (builds("edit")) {
    auto identifier = std::make_shared<std::string>();
    auto options = std::make_shared<EditOptions>();
    CLI::App* editCommand = commands.add(*bookings, "edit", "Change a booking's amount, category, note or day",
                                         [identifier, options] { edit(*identifier, *options); });
    editCommand->add_option("ID", *identifier, identifierHelp)->required();
    editCommand->add_option("--amount,-a", options->amount, "The new amount: 90, -45, 1:30, -0:45, 1h30m, -2h, 45m")
        ->type_name("DURATION");
    commands.offer(editCommand->add_option("--category,-c", options->category, categoryHelp), categoryValues())
        ->type_name("KIND|TITLE");
    editCommand->add_option("--note,-n", options->note, "The new note (at most 280 characters; \"\" for none)")
        ->type_name("TEXT");
    editCommand->add_option("--day,-d", options->day, "The new day (YYYY-MM-DD, today, yesterday)")->type_name("DAY");
    editCommand->footer(std::string("Only what is given changes, under the rules of `book`; undo takes it back.\n") +
                        newestHelp + "\nExample:\n  quillmont bookings edit last --amount=-1h --note dentist");
  }
}

}  // namespace

void install(CommandSet& commands) {
  if (commands.builds("book")) installBook(commands);
  if (commands.builds("bookings")) installBookings(commands);
}

}  // namespace quillmont::BookingCommands
