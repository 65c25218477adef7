#include "cli/HolidayCommands.h"

#include <algorithm>
#include <memory>
#include <string>

#include <CLI/CLI.hpp>

#include "cli/BookingCommands.h"
#include "cli/Display.h"
#include "cli/FileTransfer.h"
#include "cli/HolidayCalendar.h"
#include "cli/StoreSession.h"
#include "cli/Terminal.h"
#include "cli/TextTable.h"
#include "core/engine/HolidayBookings.h"

namespace quillmont::HolidayCommands {
namespace {

struct Options {
  std::string file;
  bool dryRun = false;
};

std::string outcomeText(const HolidayBookings::Plan& plan, bool dryRun) {
  switch (plan.outcome) {
    case HolidayBookings::Outcome::booked:
      return (dryRun ? "would book " : "booked ") + Display::amountOfMinutes(plan.minutes);
    case HolidayBookings::Outcome::alreadyBooked: return "booked before";
    case HolidayBookings::Outcome::notAWorkingDay: return "not a working day";
    case HolidayBookings::Outcome::beforeCalculationStart: return "before the calculation start";
  }
  return "";
}

void importHolidays(const Options& options) {
  const std::string text = FileTransfer::read(options.file, FileTransfer::maximumCalendarBytes);
  StoreSession session;
  session.journal("import-holidays " + options.file);
  // Recurring holidays repeat through the end of next year.
  const DateInput::Day today = session.today();
  std::vector<HolidayBookings::Holiday> holidays;
  for (const auto& event : HolidayCalendar::read(text, DateInput::Day{today.year + 1, 12, 31})) {
    holidays.push_back({event.uid, event.name, BookingCommands::dayText(event.day),
                        DateInput::midday(event.day, session.calendar())});
  }
  std::stable_sort(holidays.begin(), holidays.end(), [](const auto& a, const auto& b) { return a.day < b.day; });
  const auto plans = HolidayBookings::plan(holidays, session.context(), session.settings(), session.calendar());

  TextTable table({{"Day"}, {"Holiday"}, {"Booking"}});
  std::int64_t minutes = 0;
  std::size_t count = 0;
  const Display display(session.calendar());
  for (const auto& plan : plans) {
    table.addRow({display.weekday(plan.holiday.noon) + " " + plan.holiday.day, Terminal::escaped(plan.holiday.name),
                  outcomeText(plan, options.dryRun)});
    if (plan.outcome == HolidayBookings::Outcome::booked) {
      minutes += plan.minutes;
      ++count;
    }
  }
  Terminal::write(table.render());
  const std::string summary = std::to_string(count) + (count == 1 ? " holiday" : " holidays") + " (" +
                              Display::amountOfMinutes(minutes) + ")";
  if (options.dryRun) {
    Terminal::message("Would book " + summary + "; nothing was changed.");
    return;
  }
  if (count == 0) {
    Terminal::message("Nothing to book: each holiday was booked before or falls on a day off.");
    return;
  }
  HolidayBookings::book(plans, session.context(), session.now());
  Terminal::message("Booked " + summary + ".");
}

}  // namespace

void install(CommandSet& commands) {
  auto options = std::make_shared<Options>();
  CLI::App* command = commands.add(commands.root(), "import-holidays",
                                   "Book the public holidays of an iCalendar file that fall on working days",
                                   [options] { importHolidays(*options); });
  command->add_option("FILE", options->file, "The iCalendar file (.ics; \"-\" for standard input)")->required();
  command->add_flag("--dry-run", options->dryRun, "Only list what would be booked");
  command->footer(
      "Each holiday on a working day becomes a \"holiday\" credit of that day's planned time; days off, days "
      "before the calculation start and holidays booked before are left alone, so importing a file again adds "
      "nothing. Recurring holidays repeat through the end of next year. Example:\n"
      "  quillmont import-holidays holidays.ics --dry-run");
}

}  // namespace quillmont::HolidayCommands
