#include "cli/commands/SettleCommands.h"

#include <memory>
#include <string>

#include <CLI/CLI.hpp>

#include "app/InvalidInput.h"
#include "cli/input/CommandInput.h"
#include "app/text/Display.h"
#include "app/session/StoreSession.h"
#include "cli/output/Terminal.h"
#include "cli/output/TextTable.h"
#include "cli/input/UsageError.h"
#include "app/settlement/Settling.h"
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
  Settling::Request request;
  request.dryRun = options.dryRun;
  if (!options.through.empty()) request.through = CommandInput::day(options.through, session.today(), "--through");
  if (!options.from.empty()) request.from = CommandInput::day(options.from, session.today(), "--from");
  Settling::Result result;
  try {
    result = Settling::settle(session, request);
  } catch (const InvalidInput& error) {
    throw UsageError("settle: --" + error.field() + " " + error.reason());
  }
  if (result.noWork) {
    Terminal::message("Nothing to settle: no work is recorded.");
    return;
  }
  const Display display(session.calendar());
  const auto& days = result.planned;
  const std::string span = days.empty() ? std::string()
                                        : " from " + display.day(days.front().date) + " through " +
                                              display.day(days.back().date);
  if (result.booked.empty()) {
    Terminal::message("Nothing to settle" + span +
                      (days.empty() ? ": no day has ended since the calculation start."
                                    : ": each day was settled before or balances to 0:00."));
    return;
  }
  TextTable table({{"Day"}, {"Difference", TextTable::Alignment::right}, {"Booking"}});
  for (const auto& day : result.booked) {
    table.addRow({display.weekday(day.date) + " " + display.day(day.date),
                  {Display::amountOfMinutes(day.minutes), Terminal::styleForAmount(static_cast<double>(day.minutes))},
                  bookingText(day, options.dryRun)});
  }
  Terminal::write(table.render());
  const std::size_t count = result.booked.size();
  const std::string summary = std::to_string(count) + (count == 1 ? " day" : " days") + " (" +
                              Display::amountOfMinutes(result.minutes) + ")" + span;
  Terminal::message(options.dryRun ? "Would settle " + summary + "; nothing was changed."
                                   : "Settled " + summary + ".");
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
