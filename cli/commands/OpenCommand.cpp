#include "cli/commands/OpenCommand.h"

#include <string>

#include <CLI/CLI.hpp>

#include "cli/commands/BookingCommands.h"
#include "cli/commands/OverviewCommand.h"
#include "cli/commands/ReportCommands.h"
#include "cli/commands/SettingsCommands.h"
#include "app/session/StoreSession.h"
#include "cli/output/Terminal.h"
#include "cli/input/UsageError.h"
#include "cli/commands/WorkCommands.h"
#include "core/persistence/AppRoute.h"

namespace quillmont::OpenCommand {
namespace {

void open(const std::string& url) {
  const auto route = AppRoute::fromURL(url);
  if (!route) throw UsageError("'" + Terminal::escaped(url) + "' is not a Quillmont link (try quillmont://overview)");
  StoreSession session;
  switch (route->value()) {
    case AppRoute::overview:
      OverviewCommand::show(session, false);
      break;
    case AppRoute::history: {
      const DateInput::Day today = session.today();
      const DateInterval recent = DateInterval::between(
          DateInput::startOfDay(today.adding(1 - BookingCommands::defaultListDays), session.calendar()),
          DateInput::endOfDay(today, session.calendar()));
      BookingCommands::showList(session, recent,
                                BookingCommands::rangeText(today.adding(1 - BookingCommands::defaultListDays), today, true));
      Terminal::print("");
      WorkCommands::showList(session, recent,
                             BookingCommands::rangeText(today.adding(1 - BookingCommands::defaultListDays), today, true));
      break;
    }
    case AppRoute::reports:
      ReportCommands::showReport(session, ReportGranularity::month, session.now());
      break;
    case AppRoute::settings:
      SettingsCommands::show(session);
      break;
  }
}

}  // namespace

void install(CommandSet& commands) {
  auto url = std::make_shared<std::string>();
  CLI::App* command = commands.add(commands.root(), "open", "Show the screen a quillmont:// link names",
                                   [url] { open(*url); });
  CommandSet::Values links;
  for (const AppRoute route : AppRoute::allCases()) links.words.push_back(route.url());
  commands
      .offer(command->add_option("URL", *url, "quillmont://overview, quillmont://history, quillmont://reports or "
                                              "quillmont://settings"),
             std::move(links))
      ->required();
}

}  // namespace quillmont::OpenCommand
