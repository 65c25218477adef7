#include "cli/ReportCommands.h"

#include <algorithm>
#include <cmath>
#include <string>

#include <CLI/CLI.hpp>

#include "cli/CommandInput.h"
#include "cli/Display.h"
#include "cli/FileTransfer.h"
#include "cli/StoreSession.h"
#include "cli/Terminal.h"
#include "cli/TextTable.h"
#include "core/engine/TimeBankCalculator.h"
#include "core/ledger/BalanceAdjustment.h"
#include "core/ledger/WorkEntry.h"
#include "core/ledger/WorkSchedule.h"
#include "core/reports/TimeBankReporting.h"

namespace quillmont::ReportCommands {
namespace {

struct PeriodOptions {
  std::string period = "month";
  std::string date;
  std::string output;
};

struct LedgerOptions {
  std::string from;
  std::string to;
  std::string output;
};

// The report of the period containing `date`: day balances through the end
// of the period or now, whichever is earlier, cut to the period.
TimeBankReport periodReport(StoreSession& session, ReportGranularity granularity, Date date) {
  const Calendar& calendar = session.calendar();
  const auto unit = granularity == ReportGranularity::week ? Calendar::Unit::weekOfYear : Calendar::Unit::month;
  const auto period = calendar.dateInterval(unit, date);
  const Date through = period ? std::min(period->end(), session.now()) : session.now();
  ModelContext& context = session.context();
  const auto days = TimeBankCalculator::dayBalances(context.fetch<WorkEntry>(), context.fetch<BalanceAdjustment>(),
                                                    context.fetch<WorkSchedule>(), session.settings(), through,
                                                    calendar);
  return TimeBankReporting::report(days, date, granularity, calendar);
}

Date chosenDate(StoreSession& session, const std::string& text) {
  if (text.empty()) return session.now();
  return DateInput::midday(CommandInput::day(text, session.today(), "--date"), session.calendar());
}

// A bar from the zero line to the day's balance, on the chart's hour range.
std::string bar(double hours, const TimeBankReporting::HourRange& range) {
  const double span = range.upperBound - range.lowerBound;
  const auto column = [&](double value) {
    const double position = std::round((value - range.lowerBound) / span * chartWidth);
    return static_cast<int>(std::clamp(position, 0.0, static_cast<double>(chartWidth)));
  };
  const int zero = column(0);
  const int end = std::isfinite(hours) ? column(hours) : zero;
  std::string text;
  for (int i = 0; i < chartWidth; ++i) {
    const bool filled = (i >= std::min(zero, end) && i < std::max(zero, end));
    text += filled ? "\u2588" : (i == zero ? "\u2502" : " ");
  }
  if (zero == chartWidth && end == zero) text += "\u2502";
  return text;
}

std::string hoursLabel(double hours) {
  char buffer[32];
  std::snprintf(buffer, sizeof buffer, "%.1f h", hours);
  return buffer;
}

std::string periodCsv(const PeriodOptions& options, StoreSession& session) {
  const auto granularity = ReportGranularity::fromRawValue(options.period);
  return TimeBankReporting::csv(periodReport(session, *granularity, chosenDate(session, options.date)),
                                session.calendar());
}

void writeDocument(const std::string& output, const std::string& document) {
  FileTransfer::write(output, document);
  if (!FileTransfer::isStandardStream(output)) Terminal::message("Wrote " + output + ".");
}

}  // namespace

void showReport(StoreSession& session, ReportGranularity granularity, Date date) {
  const TimeBankReport report = periodReport(session, granularity, date);
  const Display display(session.calendar());
  const Date lastDay = session.calendar().startOfDay(report.interval.end() - 1);
  Terminal::print(Terminal::styled(std::string(granularity == ReportGranularity::week ? "Week" : "Month") + " " +
                                       display.day(report.interval.start) + " to " + display.day(lastDay),
                                   Terminal::Style::bold));
  if (report.days.empty()) {
    Terminal::print("No days to report: the period lies before the calculation start or in the future.");
    return;
  }
  const auto range = TimeBankReporting::chartHourRange(report);
  using Alignment = TextTable::Alignment;
  TextTable table({{"Day"}, {"Worked", Alignment::right}, {"Adjustments", Alignment::right},
                   {"Planned", Alignment::right}, {"Difference", Alignment::right},
                   {hoursLabel(range.lowerBound) + " ... " + hoursLabel(range.upperBound)}});
  for (const DayBalance& day : report.days) {
    const double balance = day.balanceSeconds();
    table.addRow({display.weekday(day.date) + " " + display.day(day.date), Display::duration(day.workedSeconds),
                  Display::amount(day.adjustmentSeconds), Display::duration(day.expectedSeconds),
                  {Display::amount(balance), Terminal::styleForAmount(balance)},
                  {bar(balance / 3600.0, range), Terminal::styleForAmount(balance)}});
  }
  table.addRule();
  const double total = report.balanceSeconds();
  table.addRow({"Total", Display::duration(report.workedSeconds()), Display::amount(report.adjustmentSeconds()),
                Display::duration(report.expectedSeconds()), {Display::amount(total), Terminal::styleForAmount(total)}});
  Terminal::write(table.render());
}

void install(CommandSet& commands) {
  CLI::App& root = commands.root();
  const std::vector<std::string> periods{"week", "month"};

  CLI::App* report = commands.addGroup(root, "report", "The time bank of a week or a month, with a chart");
  for (const std::string& period : periods) {
    auto date = std::make_shared<std::string>();
    const auto granularity = *ReportGranularity::fromRawValue(period);
    CLI::App* command = commands.add(*report, period, "Report the " + period + " that contains --date (today)",
                                     [date, granularity] {
                                       StoreSession session;
                                       showReport(session, granularity, chosenDate(session, *date));
                                     });
    command->add_option("--date", *date, "A day of the " + period + " (YYYY-MM-DD)")->type_name("DAY");
  }

  CLI::App* csv = commands.addGroup(root, "csv", "CSV documents of the time bank");
  auto periodOptions = std::make_shared<PeriodOptions>();
  CLI::App* days = commands.add(*csv, "days", "Worked, adjustment, planned and difference hours per day",
                                [periodOptions] {
                                  StoreSession session;
                                  writeDocument(periodOptions->output, periodCsv(*periodOptions, session));
                                });
  days->add_option("--period", periodOptions->period, "week or month (default month)")
      ->check(CLI::IsMember(periods))
      ->type_name("PERIOD");
  days->add_option("--date", periodOptions->date, "A day of the period (YYYY-MM-DD); today by default")
      ->type_name("DAY");
  days->add_option("--output,-o", periodOptions->output, "Write to FILE instead of standard output")
      ->type_name("FILE");

  auto ledgerOptions = std::make_shared<LedgerOptions>();
  CLI::App* ledger = commands.add(*csv, "ledger", "Hours added, removed and the net change per day of bookings",
                                  [ledgerOptions] {
                                    StoreSession session;
                                    const DateInput::Day today = session.today();
                                    const DateInput::Day firstOfMonth{today.year, today.month, 1};
                                    const DateInterval interval = CommandInput::days(
                                        ledgerOptions->from, ledgerOptions->to, firstOfMonth, today, today,
                                        session.calendar());
                                    writeDocument(ledgerOptions->output,
                                                  TimeBankReporting::ledgerCSV(
                                                      session.context().fetch<BalanceAdjustment>(), interval,
                                                      session.calendar()));
                                  });
  ledger->add_option("--from", ledgerOptions->from, "First day (YYYY-MM-DD); the first of this month by default")
      ->type_name("DAY");
  ledger->add_option("--to", ledgerOptions->to, "Last day (YYYY-MM-DD); today by default")->type_name("DAY");
  ledger->add_option("--output,-o", ledgerOptions->output, "Write to FILE instead of standard output")
      ->type_name("FILE");
}

}  // namespace quillmont::ReportCommands
