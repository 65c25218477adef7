// ReportCommands: `report week|month|year` and `report --from --to` print the
// computed time bank of a calendar week or month, a year or any days (worked,
// adjustments, planned and difference per day, the sums, a bar chart of the
// daily balances as wide as the terminal allows, and the bookings' totals by
// category); `csv days` and `csv ledger` print the core's two CSV documents,
// to standard output or a file.
#pragma once

#include "cli/tree/CommandSet.h"
#include "core/reports/ReportGranularity.h"
#include "platform/foundation/Date.h"

namespace quillmont {

class StoreSession;

namespace ReportCommands {

inline constexpr int chartWidth = 24;
/// A narrower chart than this is left out.
inline constexpr int minimumChartWidth = 10;

void install(CommandSet& commands);
/// Prints the report of the period that contains `date`.
void showReport(StoreSession& session, ReportGranularity granularity, Date date);

}  // namespace ReportCommands
}  // namespace quillmont
