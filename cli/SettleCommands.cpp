#include "cli/SettleCommands.h"

#include <memory>
#include <string>

#include <CLI/CLI.hpp>

#include "cli/CommandFailure.h"
#include "cli/CommandInput.h"
#include "app/text/Display.h"
#include "app/session/StoreSession.h"
#include "cli/Terminal.h"
#include "cli/TextTable.h"
#include "cli/UsageError.h"
#include "core/engine/PublicHolidays.h"
#include "core/engine/Settlement.h"

namespace quillmont::SettleCommands {
namespace {

struct Options {
  std::string from;
  std::string through;
  bool dryRun = false;
};

std::string bookingText(const Settlement::Day& day, bool dryRun) {
  const auto amounts = Settlement::parts(day.minutes);
  std::string text = dryRun ? "would book " : "booked ";
  for (std::size_t part = 0; part < amounts.size(); ++part) {
    if (part > 0) text += " and ";
    text += Display::amountOfMinutes(amounts[part]);
  }
  if (amounts.size() > 1) text += " (a booking holds at most 24 hours)";
  return text;
}

void settle(const Options& options) {
  StoreSession session;
  if (!session.settings().hasCompletedOnboarding()) {
    throw CommandFailure("the time bank is not set up yet; finish with `quillmont setup` first");
  }
  const Calendar& calendar = session.calendar();
  const DateInput::Day today = session.today();
  const Date todayStart = DateInput::startOfDay(today, calendar);
  Date last = todayStart - 1.0;
  if (!options.through.empty()) {
    last = DateInput::midday(CommandInput::day(options.through, today, "--through"), calendar);
    if (!(last < todayStart)) throw UsageError("settle: --through must lie before today, which is not over yet");
  }
  std::optional<Date> first = Settlement::firstDay(session.context(), session.settings(), calendar);
  if (options.from.empty() && !first) {
    Terminal::message("Nothing to settle: no work is recorded.");
    return;
  }
  if (!options.from.empty()) {
    first = DateInput::midday(CommandInput::day(options.from, today, "--from"), calendar);
    if (calendar.startOfDay(*first) > calendar.startOfDay(last)) {
      throw UsageError("settle: --from lies after the last day to settle");
    }
  }

  const auto holidays = PublicHolidays::days(PublicHolidays::read(*session.container(), calendar));
  const auto days = Settlement::plan(session.context(), session.settings(), *first, last, holidays, calendar);

  const Display display(calendar);
  TextTable table({{"Day"}, {"Difference", TextTable::Alignment::right}, {"Booking"}});
  std::int64_t minutes = 0;
  std::size_t count = 0;
  for (const auto& day : days) {
    if (!day.toSettle()) continue;
    table.addRow({display.weekday(day.date) + " " + display.day(day.date),
                  {Display::amountOfMinutes(day.minutes), Terminal::styleForAmount(static_cast<double>(day.minutes))},
                  bookingText(day, options.dryRun)});
    minutes += day.minutes;
    ++count;
  }
  const std::string span = days.empty() ? std::string()
                                        : " from " + display.day(days.front().date) + " through " +
                                              display.day(days.back().date);
  if (count == 0) {
    Terminal::message("Nothing to settle" + span +
                      (days.empty() ? ": no day has ended since the calculation start."
                                    : ": each day was settled before or balances to 0:00."));
    return;
  }
  Terminal::write(table.render());
  const std::string summary =
      std::to_string(count) + (count == 1 ? " day" : " days") + " (" + Display::amountOfMinutes(minutes) + ")" + span;
  if (options.dryRun) {
    Terminal::message("Would settle " + summary + "; nothing was changed.");
    return;
  }
  session.journal("settle");
  Settlement::settle(days, session.context(), session.now());
  Terminal::message("Settled " + summary + ".");
}

}  // namespace

void install(CommandSet& commands) {
  auto options = std::make_shared<Options>();
  CLI::App* command = commands.add(commands.root(), "settle",
                                   "Book each unsettled day's worked time less its planned time into the balance",
                                   [options] { settle(*options); });
  command->add_option("--from", options->from, "First day (YYYY-MM-DD); by default the first day of recorded work")
      ->type_name("DAY");
  command->add_option("--through", options->through, "Last day (YYYY-MM-DD); yesterday by default")
      ->type_name("DAY");
  command->add_flag("--dry-run", options->dryRun, "Only list what would be booked");
  command->footer(
      "Each day is settled once, as a manual booking of that day with the note \"Settlement of DAY\"; a day that "
      "balances to 0:00 needs none. `quillmont undo` takes a settlement back whole. Example:\n"
      "  quillmont settle --dry-run");
}

}  // namespace quillmont::SettleCommands
