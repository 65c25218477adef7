#include "cli/BookingCommands.h"

#include <cstdio>
#include <cstdlib>
#include <string>

#include <CLI/CLI.hpp>

#include "cli/CommandFailure.h"
#include "cli/CommandInput.h"
#include "cli/Display.h"
#include "cli/RecordLookup.h"
#include "cli/StoreSession.h"
#include "cli/Terminal.h"
#include "cli/TextTable.h"
#include "cli/UsageError.h"
#include "core/engine/ManualLedgerMigration.h"
#include "core/engine/TimeBankCalculator.h"
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

struct ListOptions {
  std::string from;
  std::string to;
  bool all = false;
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
  const auto adjustments = session.context().fetch<BalanceAdjustment>();
  const double balance = TimeBankCalculator::ledgerBalanceSeconds(
      adjustments, session.settings().startingBalanceMinutes(), session.now());
  Terminal::message("Booked " + Display::amountOfMinutes(adjustment->minutes()) + " as " + option.title + " on " +
                    Display(session.calendar()).dateTime(adjustment->date()) + " (id " +
                    Display::shortIdentifier(adjustment->id()) + "); balance " + Display::amount(balance) + ".");
}


void list(const ListOptions& options) {
  StoreSession session;
  const DateInput::Day today = session.today();
  if (options.all) {
    showList(session, DateInterval::between(Date(-1e300), Date(1e300)), "of every day");
    return;
  }
  const DateInput::Day first = options.from.empty() ? today.adding(1 - defaultListDays)
                                                    : CommandInput::day(options.from, today, "--from");
  const DateInput::Day last = options.to.empty() ? today : CommandInput::day(options.to, today, "--to");
  const DateInterval interval = CommandInput::days(options.from, options.to, first, last, today, session.calendar());
  showList(session, interval, rangeText(first, last, options.from.empty() && options.to.empty()));
}

void remove(const std::string& identifier) {
  StoreSession session;
  const auto found = RecordLookup::find(session.context().fetch<BalanceAdjustment>(), identifier, "booking");
  const auto& booking = *found.front();
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

std::string rangeText(const DateInput::Day& first, const DateInput::Day& last, bool byDefault) {
  const auto text = [](const DateInput::Day& day) {
    char buffer[16];
    std::snprintf(buffer, sizeof buffer, "%04d-%02d-%02d", day.year, day.month, day.day);
    return std::string(buffer);
  };
  return "from " + text(first) + " to " + text(last) +
         (byDefault ? " (the last " + std::to_string(defaultListDays) + " days; --from, --to or --all for others)" : "");
}

void showList(StoreSession& session, const DateInterval& interval, const std::string& range) {
  const Display display(session.calendar());
  const bool everything = interval.start == Date(-1e300);

  // The balance before the first day: the starting balance and every booking
  // dated earlier, so that it plus the listed total is the balance after.
  const auto all = session.context().fetch<BalanceAdjustment>({{}, {{&BalanceAdjustment::date}, {&BalanceAdjustment::id}}});
  double before = static_cast<double>(session.settings().startingBalanceMinutes()) * 60.0;
  TextTable table({{"ID"}, {"Date"}, {"Amount", TextTable::Alignment::right}, {"Category"}, {"Note"}});
  double total = 0;
  std::size_t count = 0;
  for (const auto& adjustment : all) {
    const double seconds = static_cast<double>(adjustment->minutes()) * 60.0;
    if (adjustment->date() < interval.start) before += seconds;
    // The ledger's start marker books nothing; it is not a booking of the person's.
    if (adjustment->date() < interval.start || adjustment->date() >= interval.end() ||
        ManualLedgerMigration::isCarryover(*adjustment)) {
      continue;
    }
    total += seconds;
    ++count;
    table.addRow({Display::shortIdentifier(adjustment->id()), display.dateTime(adjustment->date()),
                  {Display::amount(seconds), Terminal::styleForAmount(seconds)}, adjustment->category().title,
                  adjustment->note()});
  }
  const auto balanceRow = [&](std::string label, std::string day, double seconds) {
    table.addRow({std::move(label), std::move(day), {Display::amount(seconds), Terminal::styleForAmount(seconds)}});
  };
  if (count == 0) {
    Terminal::message("No bookings " + range + "; the balance stays " + Display::amount(before) + ".");
    return;
  }
  table.addRule();
  table.addRow({std::to_string(count) + (count == 1 ? " booking" : " bookings"), "",
                {Display::amount(total), Terminal::styleForAmount(total)}});
  if (everything) {
    balanceRow("Starting balance", "", before);
    balanceRow("Resulting balance", "", before + total);
  } else {
    const std::optional<Date> lastInstant = session.calendar().dateByAddingSeconds(-1, interval.end());
    balanceRow("Balance before", display.day(interval.start), before);
    balanceRow("Balance after", lastInstant ? display.day(*lastInstant) : "", before + total);
  }
  Terminal::print(Terminal::styled("Bookings " + range, Terminal::Style::bold));
  Terminal::write(table.render());
}

void install(CommandSet& commands) {
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

  CLI::App* bookings = commands.addGroup(root, "bookings", "List or delete bookings");
  auto listOptions = std::make_shared<ListOptions>();
  CLI::App* listCommand = commands.add(*bookings, "list", "List bookings (the last 30 days unless told otherwise)",
                                       [listOptions] { list(*listOptions); });
  listCommand->add_option("--from", listOptions->from, "First day (YYYY-MM-DD)")->type_name("DAY");
  listCommand->add_option("--to", listOptions->to, "Last day (YYYY-MM-DD)")->type_name("DAY");
  listCommand->add_flag("--all", listOptions->all, "Every booking")->excludes("--from")->excludes("--to");
  auto identifier = std::make_shared<std::string>();
  CLI::App* deleteCommand =
      commands.add(*bookings, "delete", "Delete a booking", [identifier] { remove(*identifier); });
  deleteCommand->add_option("ID", *identifier, "The booking's identifier (a unique prefix is enough)")->required();
}

}  // namespace quillmont::BookingCommands
