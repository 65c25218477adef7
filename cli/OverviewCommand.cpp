#include "cli/OverviewCommand.h"

#include <string>

#include <CLI/CLI.hpp>

#include "app/text/Display.h"
#include "app/session/StoreSession.h"
#include "cli/Terminal.h"
#include "core/engine/PeriodBalances.h"
#include "core/engine/PublicHolidays.h"
#include "core/engine/Settlement.h"
#include "core/engine/TimeBankCalculator.h"
#include "core/engine/TimerSessionController.h"
#include "core/widgetstate/WidgetSnapshotBuilder.h"
#include "platform/foundation/JsonWriter.h"

namespace quillmont::OverviewCommand {
namespace {

struct Overview {
  double balanceSeconds = 0;
  double todayCreditSeconds = 0;
  double todayDebitSeconds = 0;
  double todayWorkedSeconds = 0;
  std::optional<Date> runningSince;
  bool isConfigured = false;
  /// What settling through yesterday would book, and its first day.
  double unsettledSeconds = 0;
  std::optional<Date> unsettledSince;
};

// The balance and today's credits and debits are the widget's own figures.
Overview compute(StoreSession& session) {
  Overview overview;
  const Date now = session.now();
  const WidgetSnapshot snapshot = WidgetSnapshotBuilder::make(session.context(), now);
  overview.balanceSeconds = snapshot.balanceSeconds;
  overview.todayCreditSeconds = snapshot.todayWorkedSeconds;
  overview.todayDebitSeconds = snapshot.todayExpectedSeconds;
  overview.isConfigured = snapshot.isConfigured;
  // Worked time of today, a running entry up to now, counted as the day
  // balances count it (time several entries cover once). Three columns of
  // the entries that run or reach today; only when one of them began before
  // today are the entries chained to it read as well.
  const Date today = session.calendar().startOfDay(now);
  const RowFilter runningOrToday =
      PeriodBalances::reaching(today, now).orElse(RowFilter::allOf({{"endedAt", RowFilter::Op::isNull, {}}}));
  std::size_t running = 0;
  std::optional<Date> runningStart;
  const auto sumToday = [&] {
    running = 0;
    std::vector<TimeBankCalculator::detail::ObservedWorkInterval> found;
    session.context().forEach<WorkEntry>(
        {"startedAt", "endedAt", "breakMinutes"}, runningOrToday, [&](const WorkEntry& entry) {
          if (entry.isRunning()) {
            ++running;
            runningStart = entry.startedAt();
          }
          if (auto seen = TimeBankCalculator::detail::observedInterval(entry, now)) found.push_back(*seen);
        });
    overview.todayWorkedSeconds = PeriodBalances::workedToday(session.context(), std::move(found), now,
                                                              session.calendar());
  };
  sumToday();
  // One running entry that started by now is what the timer's repairs would
  // keep as it is; anything else (several, or a start still to come) gets
  // them, and today's sum is taken again from the repaired entries.
  if (running == 1 && *runningStart <= now) {
    overview.runningSince = runningStart;
  } else if (running > 0) {
    if (const auto kept = TimerSessionController::runningEntry(session.context(), now)) {
      overview.runningSince = kept->startedAt();
    }
    sumToday();
  }
  if (overview.isConfigured) {
    const auto holidays = PublicHolidays::days(PublicHolidays::read(*session.container(), session.calendar()));
    const auto unsettled =
        Settlement::unsettled(session.context(), session.settings(), now, holidays, session.calendar());
    overview.unsettledSeconds = static_cast<double>(unsettled.minutes) * 60.0;
    overview.unsettledSince = unsettled.since;
  }
  return overview;
}

void printJSON(const Overview& overview, const Display& display) {
  std::string text;
  JsonWriter writer(text, JsonWriter::Options{.prettyPrinted = true, .escapeSlashes = false, .sortedKeys = true});
  writer.beginObject();
  writer.key("balance");
  writer.string(Display::amount(overview.balanceSeconds));
  writer.key("balanceSeconds");
  writer.number(overview.balanceSeconds);
  writer.key("isConfigured");
  writer.boolean(overview.isConfigured);
  writer.key("runningSince");
  if (overview.runningSince) {
    writer.string(display.timestamp(*overview.runningSince));
  } else {
    writer.null();
  }
  writer.key("timerRunning");
  writer.boolean(overview.runningSince.has_value());
  writer.key("todayCreditSeconds");
  writer.number(overview.todayCreditSeconds);
  writer.key("todayDebitSeconds");
  writer.number(overview.todayDebitSeconds);
  writer.key("todayWorkedSeconds");
  writer.number(overview.todayWorkedSeconds);
  writer.key("unsettledSeconds");
  writer.number(overview.unsettledSeconds);
  writer.key("unsettledSince");
  if (overview.unsettledSince) {
    writer.string(display.day(*overview.unsettledSince));
  } else {
    writer.null();
  }
  writer.endObject();
  Terminal::print(text);
}

void printText(const Overview& overview, const Display& display, Date now) {
  using Terminal::Style;
  using Terminal::styled;
  const auto row = [](std::string_view label, const std::string& value) {
    Terminal::print(styled(label, Style::dim) + std::string(10 - label.size(), ' ') + value);
  };
  row("Balance", styled(Display::amount(overview.balanceSeconds), Terminal::styleForAmount(overview.balanceSeconds)));
  // Only what happened: no "+0:00 credited" or "−0:00 debited".
  const std::string credited = styled("+" + Display::duration(overview.todayCreditSeconds), Style::positive) + " credited";
  const std::string debited = styled("\u2212" + Display::duration(overview.todayDebitSeconds), Style::negative) + " debited";
  const bool anyCredit = overview.todayCreditSeconds > 0;
  const bool anyDebit = overview.todayDebitSeconds > 0;
  if (anyCredit && anyDebit) {
    row("Today", credited + ", " + debited + " (net " +
                     Display::amount(overview.todayCreditSeconds - overview.todayDebitSeconds) + ")");
  } else if (anyCredit || anyDebit) {
    row("Today", anyCredit ? credited : debited);
  } else {
    row("Today", "nothing booked");
  }
  row("Worked", Display::duration(overview.todayWorkedSeconds) + " today");
  if (overview.runningSince) {
    row("Timer", "running since " + display.dateTime(*overview.runningSince) + " (" +
                     Display::duration(now - *overview.runningSince) + ")");
  } else {
    row("Timer", "not running");
  }
  if (overview.unsettledSince) {
    const double unsettled = overview.unsettledSeconds;
    row("Unsettled", styled(Display::amount(unsettled), Terminal::styleForAmount(unsettled)) + " since " +
                         display.day(*overview.unsettledSince));
  }
  Terminal::print(styled("The balance is the ledger of bookings; worked time feeds the reports.", Style::dim));
  if (!overview.isConfigured) {
    row("Set-up", styled("not complete", Style::negative));
    Terminal::print("");
    Terminal::print("Finish setting up the time bank with, for example:");
    Terminal::print("  quillmont setup --start today --balance 0 --week 8h,8h,8h,8h,8h,0,0");
    Terminal::print("(see `quillmont setup --help`).");
  }
}

}  // namespace

void show(StoreSession& session, bool json) {
  const Overview overview = compute(session);
  const Display display(session.calendar());
  if (json) {
    printJSON(overview, display);
  } else {
    printText(overview, display, session.now());
  }
}

void run() {
  StoreSession session;
  show(session, false);
}

void install(CommandSet& commands) {
  auto json = std::make_shared<bool>(false);
  CLI::App* overview = commands.add(commands.root(), "overview",
                                    "Show the balance, today's bookings and worked time, and the timer (the default)",
                                    [json] {
                                      StoreSession session;
                                      show(session, *json);
                                    });
  overview->add_flag("--json", *json, "Print a JSON object instead of text");
}

}  // namespace quillmont::OverviewCommand
