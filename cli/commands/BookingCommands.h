// BookingCommands: `book`, `bookings list`, `bookings edit` and `bookings
// delete` read their options into the application's Bookings use cases
// (which hold the rules) and print what they return; also the list options and range texts that
// `work list` and the window's recent pages share.
#pragma once

#include <optional>
#include <string>

#include "cli/tree/CommandSet.h"
#include "app/input/DateInput.h"
#include "platform/foundation/DateInterval.h"

namespace CLI {
class App;
}

namespace quillmont {

class StoreSession;

namespace BookingCommands {

inline constexpr int defaultListDays = 30;

void install(CommandSet& commands);
/// Prints the bookings dated inside `interval`, oldest first, under a title
/// naming the `range`, with the balance before and after the range.
void showList(StoreSession& session, const DateInterval& interval, const std::string& range);
/// What `bookings list` and `work list` are told: --from, --to, --all, --json.
struct ListOptions {
  std::string from;
  std::string to;
  bool all = false;
  bool json = false;
};
/// Adds those options to a list command; `every` says what --all lists.
void addListOptions(CLI::App& command, ListOptions& options, const std::string& every);
/// The days a list shows: every day with --all, else --from through --to,
/// by default the last `defaultListDays` days; `text` names them ("from
/// 2026-03-01 to 2026-03-31"); `first` and `last` are absent for every day.
struct ListRange {
  DateInterval interval;
  std::optional<DateInput::Day> first;
  std::optional<DateInput::Day> last;
  std::string text;
};
ListRange listRange(const ListOptions& options, StoreSession& session);

/// "2026-03-01".
std::string dayText(const DateInput::Day& day);
/// "from 2026-03-01 to 2026-03-31", saying so when it is the default range.
std::string rangeText(const DateInput::Day& first, const DateInput::Day& last, bool byDefault);

}  // namespace BookingCommands
}  // namespace quillmont
