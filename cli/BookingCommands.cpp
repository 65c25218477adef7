#include "cli/BookingCommands.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>

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
#include "core/engine/LedgerTotal.h"
#include "core/engine/ManualLedgerMigration.h"
#include "core/ledger/AdjustmentCategoryValidation.h"
#include "core/ledger/BalanceAdjustment.h"
#include "core/ledger/BalanceAdjustmentKind.h"
#include "core/ledger/CustomAdjustmentCategoryConfiguration.h"
#include "core/ledger/TimeBankTransactionController.h"
#include "platform/foundation/Text.h"

namespace quillmont::BookingCommands {
namespace {

struct BookOptions {
  std::string duration;
  std::string category;
  std::string note;
  std::string day;
};

// The category text of a built-in kind (by raw value or title) or of one of
// the user's own categories (by title), ignoring letter case.
std::string categoryRawValue(const std::string& text, const TimeBankSettings& settings) {
  if (text.empty()) return std::string(BalanceAdjustmentKind(BalanceAdjustmentKind::manual).rawValue());
  const std::string wanted = Text::lowercased(text);
  std::string choices;
  for (const BalanceAdjustmentKind kind : BalanceAdjustmentKind::allCases()) {
    if (Text::lowercased(kind.rawValue()) == wanted || Text::lowercased(kind.title()) == wanted) {
      return std::string(kind.rawValue());
    }
    choices += choices.empty() ? "" : ", ";
    choices += kind.rawValue();
  }
  for (const auto& category :
       CustomAdjustmentCategoryConfiguration::categories(settings.customAdjustmentCategoriesRawValue())) {
    if (Text::lowercased(category.title()) == wanted) return category.rawValue();
    choices += ", \"" + category.title() + "\"";
  }
  throw UsageError("--category: '" + text + "' is neither a kind nor one of your categories (choose from " + choices +
                   ")");
}

std::string signWord(AdjustmentCategoryBehavior behavior) {
  return behavior == AdjustmentCategoryBehavior::credit ? "adds time: give a positive amount"
                                                       : "takes time: give a negative amount, e.g. -30";
}

void book(const BookOptions& options) {
  const std::int64_t minutes = CommandInput::minutes(options.duration, "DURATION");
  const std::string& note = CommandInput::text(options.note, "--note");
  StoreSession session;
  session.journal("book " + options.duration);
  const std::string rawValue = categoryRawValue(options.category, session.settings());
  const Date selected = options.day.empty()
                            ? session.now()
                            : DateInput::midday(CommandInput::day(options.day, session.today(), "--day"),
                                                session.calendar());
  const Date date = TimeBankTransactionController::submissionDate(selected, session.now(), session.calendar());

  // The store keeps a category's amounts on its side of zero; an amount on
  // the other side would be cut to nothing, so it is refused here.
  const auto option = *AdjustmentCategoryOption::resolve(rawValue);
  if (minutes != 0 && std::abs(minutes) <= TimeBankTransactionController::maximumAbsoluteMinutes &&
      AdjustmentCategoryValidation::normalizedMinutes(minutes, rawValue) != minutes) {
    throw CommandFailure("\"" + option.title + "\" " + signWord(option.behavior) + ".");
  }

  const auto adjustment =
      TimeBankTransactionController::record(minutes, date, note, rawValue, session.context());
  const double balance =
      LedgerTotal::balanceThrough(session.context(), session.settings().startingBalanceMinutes(), session.now());
  Terminal::message("Booked " + Display::amountOfMinutes(adjustment->minutes()) + " as " + option.title + " on " +
                    Display(session.calendar()).dateTime(adjustment->date()) + " (id " +
                    Display::shortIdentifier(adjustment->id()) + "); balance " + Display::amount(balance) + ".");
}


// The bookings dated inside an interval (the ledger's start marker, which
// books nothing, left out) and the balance before its first day: the
// starting balance and every booking dated earlier, so that it plus the
// listed total is the balance after.
struct Listing {
  std::vector<std::shared_ptr<BalanceAdjustment>> bookings;
  double before = 0;
  double total = 0;
};

Listing listing(StoreSession& session, const DateInterval& interval) {
  Listing result;
  // Every booking dated before the first instant, that is at or before the
  // instant just ahead of it.
  const Date lastBefore(std::nextafter(interval.start.timeIntervalSinceReferenceDate, -HUGE_VAL));
  result.before = LedgerTotal::balanceThrough(session.context(), session.settings().startingBalanceMinutes(), lastBefore);
  // The listed ones whole, and only those.
  using Op = RowFilter::Op;
  const RowFilter inside =
      RowFilter::allOf({{"date", Op::greaterOrEqual, interval.start}, {"date", Op::less, interval.end()}});
  for (auto& adjustment : session.context().fetch<BalanceAdjustment>(
           inside, {{}, {{&BalanceAdjustment::date}, {&BalanceAdjustment::id}}})) {
    if (ManualLedgerMigration::isCarryover(*adjustment)) continue;
    result.total += static_cast<double>(adjustment->minutes()) * 60.0;
    result.bookings.push_back(std::move(adjustment));
  }
  return result;
}

void listJSON(StoreSession& session, const DateInterval& interval, const std::optional<DateInput::Day>& first,
              const std::optional<DateInput::Day>& last) {
  const Display display(session.calendar());
  const Listing shown = listing(session, interval);
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
    JsonOutput::amount(writer, "total", shown.total);
    JsonOutput::amount(writer, "balanceBefore", shown.before);
    JsonOutput::amount(writer, "balanceAfter", shown.before + shown.total);
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

/// Newest first: the booking made last (createdAt), then the later date,
/// then the greater identifier.
bool madeLater(const BalanceAdjustment& a, const BalanceAdjustment& b) {
  using RecordLookup::recency;
  if (recency(a.createdAt()) != recency(b.createdAt())) return recency(a.createdAt()) > recency(b.createdAt());
  if (recency(a.date()) != recency(b.date())) return recency(a.date()) > recency(b.date());
  return a.id() > b.id();
}

void remove(const std::string& identifier) {
  StoreSession session;
  auto bookings = session.context().fetch<BalanceAdjustment>();
  // The ledger's start marker is not a booking the person made or sees
  // listed, so it takes no place among the newest.
  if (RecordLookup::recentPlace(identifier)) {
    std::erase_if(bookings, [](const auto& booking) { return ManualLedgerMigration::isCarryover(*booking); });
  }
  const auto found = RecordLookup::find(bookings, identifier, "booking", madeLater);
  const auto& booking = *found.front();
  session.journal("bookings delete " +
                  (RecordLookup::recentPlace(identifier) ? Display::shortIdentifier(booking.id()) : identifier));
  if (ManualLedgerMigration::isCarryover(booking)) {
    throw CommandFailure("This booking marks the switch to the manual ledger and stays.");
  }
  for (const auto& adjustment : found) session.context().deleteRecord(adjustment);
  session.context().save();
  Terminal::message("Deleted booking " + Display::shortIdentifier(booking.id()) + " (" +
                    Display::amountOfMinutes(booking.minutes()) + " on " +
                    Display(session.calendar()).dateTime(booking.date()) + ").");
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
  const Listing shown = listing(session, interval);
  if (shown.bookings.empty()) {
    Terminal::message("No bookings " + range + "; the balance stays " + Display::amount(shown.before) + ".");
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
                {Display::amount(shown.total), Terminal::styleForAmount(shown.total)}});
  if (everything) {
    balanceRow("Starting balance", "", shown.before);
    balanceRow("Resulting balance", "", shown.before + shown.total);
  } else {
    const std::optional<Date> lastInstant = session.calendar().dateByAddingSeconds(-1, interval.end());
    balanceRow("Balance before", display.day(interval.start), shown.before);
    balanceRow("Balance after", lastInstant ? display.day(*lastInstant) : "", shown.before + shown.total);
  }
  Terminal::print(Terminal::styled("Bookings " + range, Terminal::Style::bold));
  Terminal::write(table.render());
}

namespace {

void installBook(CommandSet& commands) {
  CLI::App& root = commands.root();
  auto bookOptions = std::make_shared<BookOptions>();
  CLI::App* bookCommand =
      commands.add(root, "book", "Book time into (+) or out of (-) the bank", [bookOptions] { book(*bookOptions); });
  bookCommand->add_option("DURATION", bookOptions->duration, "The amount: 90, -45, 1:30, -0:45, 1h30m, -2h, 45m")
      ->required();
  CommandSet::Values categories{{}, true};
  for (const BalanceAdjustmentKind kind : BalanceAdjustmentKind::allCases()) categories.words.emplace_back(kind.rawValue());
  commands
      .offer(bookCommand->add_option("--category,-c", bookOptions->category,
                                     "A kind (manual, appointment, personalErrands, longLunch, other, holiday, "
                                     "paidLeave, sickLeave) or the title of one of your categories; manual by default"),
             std::move(categories))
      ->type_name("KIND|TITLE");
  bookCommand->add_option("--note,-n", bookOptions->note, "A note (at most 280 characters)")->type_name("TEXT");
  bookCommand->add_option("--day,-d", bookOptions->day, "The day of the booking (YYYY-MM-DD); today by default")
      ->type_name("DAY");
  bookCommand->footer("At most 24 hours either way per booking. Example:\n"
                      "  quillmont book -1h30m --category appointment --note dentist --day yesterday");
}

void installBookings(CommandSet& commands) {
  CLI::App& root = commands.root();
  CLI::App* bookings = commands.addGroup(root, "bookings", "List or delete bookings");
  const auto builds = commands.subcommands({"list", "delete"});
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
    deleteCommand
        ->add_option("ID", *identifier,
                     "The booking's identifier (a unique prefix is enough), or @1 (also: last) for the newest "
                     "booking, @2 for the one before")
        ->required();
    deleteCommand->footer(
        "The newest booking is the one made last (by when it was made; among bookings made at once, the later "
        "day).");
  }
}

}  // namespace

void install(CommandSet& commands) {
  if (commands.builds("book")) installBook(commands);
  if (commands.builds("bookings")) installBookings(commands);
}

}  // namespace quillmont::BookingCommands
