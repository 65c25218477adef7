// ReportCommands: `report week|month` prints the computed time bank of a
// calendar week or month (worked, adjustments, planned and difference per
// day, the sums, and a bar chart of the daily balances); `csv days` and
// `csv ledger` print the core's two CSV documents, to standard output or a
// file.
#pragma once

#include "cli/CommandSet.h"
#include "core/reports/ReportGranularity.h"
#include "platform/foundation/Date.h"

namespace quillmont {

class StoreSession;

namespace ReportCommands {

inline constexpr int chartWidth = 24;

void install(CommandSet& commands);
/// Prints the report of the period that contains `date`.
void showReport(StoreSession& session, ReportGranularity granularity, Date date);

}  // namespace ReportCommands
}  // namespace quillmont
