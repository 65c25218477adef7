#include "cli/commands/HolidayCommands.h"

#include <memory>
#include <string>

#include <CLI/CLI.hpp>

#include "app/files/FileTransfer.h"
#include "app/holidays/HolidayImport.h"
#include "app/session/StoreSession.h"
#include "app/text/Display.h"
#include "cli/input/CommandFiles.h"
#include "cli/output/Terminal.h"
#include "cli/output/TextTable.h"
#include "core/engine/HolidayBookings.h"

namespace quillmont::HolidayCommands {
namespace {

struct Options {
  std::string file;
  bool dryRun = false;
};

std::string outcomeText(const HolidayBookings::Plan& plan, bool dryRun) {
  const std::string planned = Display::duration(static_cast<double>(plan.minutes) * 60.0);
  switch (plan.outcome) {
    case HolidayBookings::Outcome::plannedTimeFreed:
      return "planned " + planned + (dryRun ? " would become 0:00" : " becomes 0:00");
    case HolidayBookings::Outcome::notAWorkingDay: return "not a working day";
    case HolidayBookings::Outcome::beforeCalculationStart: return "before the calculation start";
    case HolidayBookings::Outcome::knownBefore: return "imported before";
    case HolidayBookings::Outcome::bookedBefore: return "booked before as a credit; left as it is";
  }
  return "";
}

void importHolidays(const Options& options) {
  const std::string text = CommandFiles::read(options.file, FileTransfer::maximumCalendarBytes);
  StoreSession session;
  const auto preview = HolidayImport::preview(session, text);

  TextTable table({{"Day"}, {"Holiday"}, {"Planned time"}});
  const Display display(session.calendar());
  for (const auto& plan : preview.plans) {
    table.addRow({display.weekday(plan.holiday.noon) + " " + plan.holiday.day, Terminal::escaped(plan.holiday.name),
                  outcomeText(plan, options.dryRun)});
  }
  Terminal::write(table.render());
  const std::size_t count = preview.added;
  const std::string summary = std::to_string(count) + (count == 1 ? " holiday" : " holidays") + " (" +
                              Display::duration(static_cast<double>(preview.freedMinutes) * 60.0) +
                              " of planned time becomes 0:00; nothing is booked)";
  if (options.dryRun) {
    Terminal::message("Would add " + summary + "; nothing was changed.");
    return;
  }
  if (count == 0) {
    Terminal::message("Nothing to add: each holiday was imported or booked before.");
    return;
  }
  HolidayImport::record(session, preview);
  Terminal::message("Added " + summary + ".");
}

}  // namespace

void install(CommandSet& commands) {
  auto options = std::make_shared<Options>();
  CLI::App* command = commands.add(commands.root(), "import-holidays",
                                   "Add the public holidays of an iCalendar file: nothing is planned on them",
                                   [options] { importHolidays(*options); });
  command->add_option("FILE", options->file, "The iCalendar file (.ics; \"-\" for standard input)")->required();
  command->add_flag("--dry-run", options->dryRun, "Only list what would change");
  command->footer(
      "On each holiday the planned time is 0:00 and reports name it; nothing is booked, so the balance stays as "
      "it is. Holidays imported before, and those an earlier version booked as credits, are left alone, so "
      "importing a file again adds nothing. Recurring holidays repeat through the end of next year. An import is not "
      "taken back by `quillmont undo`. Example:\n"
      "  quillmont import-holidays holidays.ics --dry-run");
}

}  // namespace quillmont::HolidayCommands
