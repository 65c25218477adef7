#include "cli/commands/ReportCommands.h"

#include <algorithm>
#include <cmath>
#include <string>

#include <CLI/CLI.hpp>

#include "cli/input/CommandInput.h"
#include "app/text/Display.h"
#include "cli/input/CommandFiles.h"
#include "app/reports/Reports.h"
#include "cli/output/JsonOutput.h"
#include "app/session/StoreSession.h"
#include "cli/output/Terminal.h"
#include "cli/output/TextTable.h"
#include "cli/input/UsageError.h"
#include "core/reports/TimeBankReporting.h"
#include "platform/foundation/Text.h"

namespace quillmont::ReportCommands {
namespace {

struct RangeOptions {
  std::string date;
  std::string from;
  std::string to;
  bool json = false;
};

struct DayTableOptions {
  std::string period = "month";
  RangeOptions range;
  std::string output;
};

struct LedgerOptions {
  std::string from;
  std::string to;
  std::string output;
};

using Span = Reports::Span;

DateInput::Day chosenDay(StoreSession& session, const std::string& text) {
  return text.empty() ? session.today() : CommandInput::day(text, session.today(), "--date");
}

// The interval a span covers around `day`; --from and --to for days.
DateInterval spanInterval(StoreSession& session, Span span, const DateInput::Day& day, const RangeOptions& options) {
  if (span != Span::days) return Reports::periodAround(span, day, session.calendar());
  if (options.from.empty() || options.to.empty()) throw UsageError("report: give --from and --to, or a period");
  return CommandInput::days(options.from, options.to, day, day, session.today(), session.calendar());
}

std::string spanTitle(Span span) {
  switch (span) {
    case Span::week: return "Week";
    case Span::month: return "Month";
    case Span::year: return "Year";
    case Span::days: return "Days";
  }
  return "Days";
}

// A bar from the zero line to the day's balance, on the chart's hour range.
std::string bar(double hours, const TimeBankReporting::HourRange& range, int width) {
  const double span = range.upperBound - range.lowerBound;
  const auto column = [&](double value) {
    const double position = std::round((value - range.lowerBound) / span * width);
    return static_cast<int>(std::clamp(position, 0.0, static_cast<double>(width)));
  };
  const int zero = column(0);
  const int end = std::isfinite(hours) ? column(hours) : zero;
  std::string text;
  for (int i = 0; i < width; ++i) {
    const bool filled = (i >= std::min(zero, end) && i < std::max(zero, end));
    text += filled ? "\u2588" : (i == zero ? "\u2502" : " ");
  }
  if (zero == width && end == zero) text += "\u2502";
  return text;
}

// The chart's scale in the notation of the cells beside it: "−8:48 … +0:00".
std::string scaleLabel(const TimeBankReporting::HourRange& range) {
  return Display::amount(range.lowerBound * 3600.0) + " \u2026 " + Display::amount(range.upperBound * 3600.0);
}

TextTable dayTable(const Reports::Report& made, const Display& display,
                   const std::optional<TimeBankReporting::HourRange>& range, int chartColumns) {
  using Alignment = TextTable::Alignment;
  std::vector<TextTable::Column> columns{{"Day"},
                                         {"Worked", Alignment::right},
                                         {"Adjustments", Alignment::right},
                                         {"Planned", Alignment::right},
                                         {"Difference", Alignment::right}};
  if (range) columns.push_back({scaleLabel(*range)});
  TextTable table(std::move(columns));
  const TimeBankReport& report = made.report;
  for (const DayBalance& day : report.days) {
    const double balance = day.balanceSeconds();
    std::string dayText = display.weekday(day.date) + " " + display.day(day.date);
    if (const auto holiday = made.holidayOn(day.date)) dayText += " " + *holiday;
    std::vector<TextTable::Cell> cells{std::move(dayText),
                                       Display::duration(day.workedSeconds), Display::amount(day.adjustmentSeconds),
                                       Display::duration(day.expectedSeconds),
                                       {Display::amount(balance), Terminal::styleForAmount(balance)}};
    if (range) cells.emplace_back(bar(balance / 3600.0, *range, chartColumns), Terminal::styleForAmount(balance));
    table.addRow(std::move(cells));
  }
  table.addRule();
  const double total = report.balanceSeconds();
  table.addRow({"Total", Display::duration(report.workedSeconds()), Display::amount(report.adjustmentSeconds()),
                Display::duration(report.expectedSeconds()), {Display::amount(total), Terminal::styleForAmount(total)}});
  return table;
}

void printCategoryTotals(StoreSession& session, const TimeBankReport& report) {
  const auto totals = Reports::categoryTotals(session, report);
  if (totals.empty()) return;
  TextTable table({{"Category"}, {"Bookings", TextTable::Alignment::right}, {"Total", TextTable::Alignment::right}});
  for (const auto& total : totals) {
    table.addRow({total.title, std::to_string(total.count), {Display::amount(total.seconds), Terminal::styleForAmount(total.seconds)}});
  }
  Terminal::print("");
  Terminal::write(table.render());
}

void writeDayFigures(JsonWriter& writer, double worked, double adjustments, double planned, double difference) {
  JsonOutput::duration(writer, "worked", worked);
  JsonOutput::amount(writer, "adjustments", adjustments);
  JsonOutput::duration(writer, "planned", planned);
  JsonOutput::amount(writer, "difference", difference);
}

void showJSON(StoreSession& session, const Reports::Report& made, Span span) {
  const TimeBankReport& report = made.report;
  const Display display(session.calendar());
  const auto& through = made.throughToday;
  JsonOutput::print([&](JsonWriter& writer) {
    writer.beginObject();
    writer.key("period");
    writer.string(Text::lowercased(spanTitle(span)));
    writer.key("from");
    writer.string(display.day(report.interval.start));
    writer.key("to");
    writer.string(display.day(made.lastDay));
    JsonOutput::text(writer, "through", through ? std::optional(display.day(*through)) : std::nullopt);
    writer.key("days");
    writer.beginArray();
    for (const DayBalance& day : report.days) {
      writer.beginObject();
      writer.key("date");
      writer.string(display.day(day.date));
      JsonOutput::text(writer, "holiday", made.holidayOn(day.date));
      writeDayFigures(writer, day.workedSeconds, day.adjustmentSeconds, day.expectedSeconds, day.balanceSeconds());
      writer.endObject();
    }
    writer.endArray();
    writer.key("totals");
    writer.beginObject();
    writeDayFigures(writer, report.workedSeconds(), report.adjustmentSeconds(), report.expectedSeconds(),
                    report.balanceSeconds());
    writer.endObject();
    writer.key("categories");
    writer.beginArray();
    for (const auto& total : Reports::categoryTotals(session, report)) {
      writer.beginObject();
      writer.key("title");
      writer.string(total.title);
      writer.key("category");
      writer.string(total.category);
      writer.key("count");
      writer.integer(total.count);
      JsonOutput::amount(writer, "total", total.seconds);
      writer.endObject();
    }
    writer.endArray();
    writer.endObject();
  });
}

void show(StoreSession& session, const Reports::Report& made, Span span) {
  const TimeBankReport& report = made.report;
  const Display display(session.calendar());
  std::string title = spanTitle(span) + " " + display.day(report.interval.start) + " to " + display.day(made.lastDay);
  // A period that reaches past today is reported through today, and says so.
  if (made.throughToday) title += ", through today " + display.day(*made.throughToday);
  Terminal::print(Terminal::styled(title, Terminal::Style::bold));
  if (report.days.empty()) {
    Terminal::print("No days to report: the period lies before the calculation start or in the future.");
    return;
  }
  // The chart takes what the terminal leaves, up to its full width, and is
  // left out when too little is left to read it.
  const auto& range = made.chartRange;
  int chartColumns = chartWidth;
  if (const auto columns = Terminal::width()) {
    const std::size_t without = dayTable(made, display, std::nullopt, 0).width();
    const std::size_t label = Text::displayWidth(scaleLabel(range));
    const long left = static_cast<long>(*columns) - static_cast<long>(without) - 2;
    chartColumns = static_cast<int>(std::clamp<long>(left, 0, chartWidth));
    if (chartColumns < minimumChartWidth || static_cast<long>(label) > left) chartColumns = 0;
  }
  const auto chart = chartColumns > 0 ? std::optional(range) : std::nullopt;
  const auto table = dayTable(made, display, chart, chartColumns);
  Terminal::write(table.render());
  printCategoryTotals(session, report);
}

void writeDocument(const std::string& output, const std::string& document) {
  CommandFiles::write(output, document);
  if (!CommandFiles::isStandardStream(output)) Terminal::message("Wrote " + output + ".");
}

Span spanOfPeriod(const std::string& period) {
  if (period == "week") return Span::week;
  if (period == "year") return Span::year;
  return Span::month;
}

}  // namespace

void showReport(StoreSession& session, ReportGranularity granularity, Date date) {
  const Span span = granularity == ReportGranularity::week ? Span::week : Span::month;
  const DateInput::Day day = DateInput::dayOf(date, session.calendar());
  show(session, Reports::make(session, spanInterval(session, span, day, RangeOptions{})), span);
}

namespace {

void installReport(CommandSet& commands) {
  CLI::App& root = commands.root();
  const std::vector<std::string> periods{"week", "month", "year"};

  auto rangeOptions = std::make_shared<RangeOptions>();
  CLI::App* report = commands.add(root, "report", "The time bank of a week, month, year or any days, with a chart",
                                  [rangeOptions] {
                                    StoreSession session;
                                    const bool days = !rangeOptions->from.empty() || !rangeOptions->to.empty();
                                    const Span span = days ? Span::days : Span::month;
                                    const auto made =
                                        Reports::make(session, spanInterval(session, span, session.today(), *rangeOptions));
                                    rangeOptions->json ? showJSON(session, made, span) : show(session, made, span);
                                  });
  report->add_option("--from", rangeOptions->from, "First day of a range (YYYY-MM-DD), with --to")->type_name("DAY");
  report->add_option("--to", rangeOptions->to, "Last day of the range")->type_name("DAY");
  report->add_flag("--json", rangeOptions->json, "Print a JSON object instead of a table");
  report->footer("Without a period or a range, the report is of this month. Example:\n"
                 "  quillmont report --from 2026-03-01 --to 2026-03-15");
  const auto builds = commands.subcommands(periods);
  for (const std::string& period : periods) {
    if (!builds(period)) continue;
    auto options = std::make_shared<RangeOptions>();
    const Span span = spanOfPeriod(period);
    CLI::App* command = commands.add(*report, period, "Report the " + period + " that contains --date (today)",
                                     [options, span] {
                                       StoreSession session;
                                       const DateInput::Day day = chosenDay(session, options->date);
                                       const auto made = Reports::make(session, spanInterval(session, span, day, *options));
                                       options->json ? showJSON(session, made, span) : show(session, made, span);
                                     });
    command->add_option("--date", options->date, "A day of the " + period + " (YYYY-MM-DD)")->type_name("DAY");
    command->add_flag("--json", options->json, "Print a JSON object instead of a table");
  }
}

void installCsv(CommandSet& commands) {
  CLI::App& root = commands.root();
  const std::vector<std::string> periods{"week", "month", "year"};
  CLI::App* csv = commands.addGroup(root, "csv", "CSV documents of the time bank");
  const auto builds = commands.subcommands({"days", "ledger"});
  if (builds("days")) {
    auto tableOptions = std::make_shared<DayTableOptions>();
    CLI::App* days =
        commands.add(*csv, "days", "Worked, adjustment, planned and difference hours per day", [tableOptions] {
          StoreSession session;
          const bool range = !tableOptions->range.from.empty() || !tableOptions->range.to.empty();
          const Span span = range ? Span::days : spanOfPeriod(tableOptions->period);
          const DateInput::Day day = chosenDay(session, tableOptions->range.date);
          writeDocument(tableOptions->output,
                        Reports::daysCSV(session, spanInterval(session, span, day, tableOptions->range)));
        });
    commands.oneOf(days->add_option("--period", tableOptions->period, "week, month or year (default month)"), periods)
        ->type_name("PERIOD");
    days->add_option("--date", tableOptions->range.date, "A day of the period (YYYY-MM-DD); today by default")
        ->type_name("DAY");
    days->add_option("--from", tableOptions->range.from, "First day of a range instead of a period")->type_name("DAY");
    days->add_option("--to", tableOptions->range.to, "Last day of the range")->type_name("DAY");
    days->add_option("--output,-o", tableOptions->output, "Write to FILE instead of standard output")
        ->type_name("FILE");
  }

  if (builds("ledger")) {
    auto ledgerOptions = std::make_shared<LedgerOptions>();
    CLI::App* ledger =
        commands.add(*csv, "ledger", "Hours added, removed and the net change per day of bookings", [ledgerOptions] {
          StoreSession session;
          const DateInput::Day today = session.today();
          const DateInput::Day firstOfMonth{today.year, today.month, 1};
          const DateInterval interval = CommandInput::days(ledgerOptions->from, ledgerOptions->to, firstOfMonth, today,
                                                           today, session.calendar());
          writeDocument(ledgerOptions->output, Reports::ledgerCSV(session, interval));
        });
    ledger->add_option("--from", ledgerOptions->from, "First day (YYYY-MM-DD); the first of this month by default")
        ->type_name("DAY");
    ledger->add_option("--to", ledgerOptions->to, "Last day (YYYY-MM-DD); today by default")->type_name("DAY");
    ledger->add_option("--output,-o", ledgerOptions->output, "Write to FILE instead of standard output")
        ->type_name("FILE");
  }
}

}  // namespace

void install(CommandSet& commands) {
  if (commands.builds("report")) installReport(commands);
  if (commands.builds("csv")) installCsv(commands);
}

}  // namespace quillmont::ReportCommands
