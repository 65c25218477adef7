#include "app/history/History.h"

#include <algorithm>

#include "app/session/StoreSession.h"
#include "core/engine/ManualLedgerMigration.h"
#include "core/ledger/BalanceAdjustment.h"
#include "core/ledger/WorkEntry.h"

namespace quillmont::History {

std::vector<Row> read(StoreSession& session) {
  std::vector<Row> rows;
  ModelContext& context = session.context();
  const auto bookings =
      context.fetch<BalanceAdjustment>({{}, {{&BalanceAdjustment::date}, {&BalanceAdjustment::id}}});
  const auto entries = context.fetch<WorkEntry>();
  rows.reserve(bookings.size() + entries.size());
  // Every term is whole minutes times 60, so the running sum is exact.
  double balance = static_cast<double>(session.settings().startingBalanceMinutes()) * 60.0;
  for (const auto& booking : bookings) {
    if (ManualLedgerMigration::isCarryover(*booking)) continue;
    const double seconds = static_cast<double>(booking->minutes()) * 60.0;
    balance += seconds;
    rows.push_back({Row::Kind::booking, booking->id(), booking->date(), std::nullopt, seconds, 0,
                    booking->category().title, booking->note(), balance});
  }
  const Date now = session.now();
  for (const auto& entry : entries) {
    rows.push_back({Row::Kind::work, entry->id(), entry->startedAt(), entry->endedAt(), entry->workedSeconds(now),
                    entry->breakMinutes(), {}, entry->note(), std::nullopt});
  }
  std::stable_sort(rows.begin(), rows.end(), [](const Row& a, const Row& b) {
    if (a.date != b.date) return a.date > b.date;
    return b.id < a.id;
  });
  return rows;
}

}  // namespace quillmont::History
