#include "cli/commands/OverviewCommand.h"

#include <string>

#include <CLI/CLI.hpp>

#include "app/overview/Overview.h"
#include "app/text/Display.h"
#include "app/session/StoreSession.h"
#include "cli/output/Terminal.h"
#include "platform/foundation/JsonWriter.h"

namespace quillmont::OverviewCommand {
namespace {

void printJSON(const Overview::Figures& overview, const Display& display) {
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

void printText(const Overview::Figures& overview, const Display& display, Date now) {
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
  const Overview::Figures overview = Overview::read(session);
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
