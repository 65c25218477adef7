// quillmont_generate_store: fills the store of $QUILLMONT_HOME with ten
// years of history, for measuring the command line on a large store:
//   QUILLMONT_HOME=/tmp/big build/release/cli/quillmont_generate_store [entries adjustments schedules]
// Defaults: 25,000 work entries, 5,000 bookings, 20 schedules and a settings
// record whose set-up is complete, all ending today. Refuses a store that
// holds records already.
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>

#include "core/ledger/AdjustmentKindConfiguration.h"
#include "core/ledger/BalanceAdjustment.h"
#include "core/ledger/BalanceAdjustmentKind.h"
#include "core/ledger/TimeBankSettings.h"
#include "core/ledger/WorkEntry.h"
#include "core/ledger/WorkSchedule.h"
#include "core/persistence/QuillmontPersistence.h"
#include "core/persistence/RuntimeEntitlements.h"
#include "platform/foundation/Calendar.h"
#include "platform/store/ModelContext.h"

using namespace quillmont;

int main(int argc, char** argv) {
  const long entryCount = argc > 1 ? std::atol(argv[1]) : 25000;
  const long adjustmentCount = argc > 2 ? std::atol(argv[2]) : 5000;
  const long scheduleCount = argc > 3 ? std::atol(argv[3]) : 20;
  if (entryCount < 0 || adjustmentCount < 0 || scheduleCount < 0) {
    std::fprintf(stderr, "usage: %s [entries adjustments schedules]\n", argv[0]);
    return 2;
  }

  ModelContext context(QuillmontPersistence::makeContainer(false, false, RuntimeEntitlements::hasUsableAppGroup()));
  if (!context.fetch<TimeBankSettings>().empty() || !context.fetch<WorkEntry>().empty()) {
    std::fprintf(stderr, "the store holds records already; use an empty QUILLMONT_HOME\n");
    return 1;
  }

  const Calendar calendar = Calendar::autoupdatingCurrent();
  const Date now = Date::now();
  const Date today = calendar.startOfDay(now);
  const Date first = *calendar.dateByAddingDays(-3652, today);
  const double span = today - first;
  std::mt19937_64 random(20260301);
  std::uniform_real_distribution<double> unit(0.0, 1.0);

  const std::int64_t week[] = {480, 480, 480, 480, 480, 0, 0};
  context.insert(std::make_shared<TimeBankSettings>(UUID::random(), first, 0, week,
                                                    std::span<const std::int64_t>(), AdjustmentKindConfiguration::defaultRawValue,
                                                    "[\"Gym\"]", true, now));
  for (long i = 0; i < scheduleCount; ++i) {
    const Date from = calendar.startOfDay(first + span * static_cast<double>(i) / static_cast<double>(scheduleCount));
    const std::int64_t minutes = 360 + 30 * (i % 5);
    const std::int64_t days[] = {minutes, minutes, minutes, minutes, minutes - 60, 0, 0};
    context.insert(std::make_shared<WorkSchedule>(UUID::random(), from, days, from, from));
  }
  // Entries spread evenly over the days, starting between 07:00 and 10:00,
  // lasting two to five hours, a few of them overlapping their neighbours.
  for (long i = 0; i < entryCount; ++i) {
    const Date day = calendar.startOfDay(first + span * static_cast<double>(i) / static_cast<double>(entryCount));
    const Date start = day + 7 * 3600 + unit(random) * 3 * 3600 + static_cast<double>(i % 3) * 4 * 3600;
    const Date end = start + 2 * 3600 + unit(random) * 3 * 3600;
    context.insert(std::make_shared<WorkEntry>(UUID::random(), start, end, i % 4 == 0 ? 30 : 0,
                                               i % 7 == 0 ? "release work" : "", end, end));
  }
  const BalanceAdjustmentKind kinds[] = {BalanceAdjustmentKind::manual, BalanceAdjustmentKind::appointment,
                                         BalanceAdjustmentKind::longLunch, BalanceAdjustmentKind::holiday};
  for (long i = 0; i < adjustmentCount; ++i) {
    const Date date = first + span * static_cast<double>(i) / static_cast<double>(adjustmentCount) + 12 * 3600;
    const BalanceAdjustmentKind kind = kinds[i % 4];
    const std::int64_t magnitude = 15 + 15 * (i % 8);
    const std::int64_t minutes = kind.behavior() == AdjustmentCategoryBehavior::debit ? -magnitude
                                 : kind.behavior() == AdjustmentCategoryBehavior::credit ? magnitude
                                                                                          : (i % 2 == 0 ? magnitude : -magnitude);
    context.insert(std::make_shared<BalanceAdjustment>(UUID::random(), date, minutes, "generated", kind, date, date));
  }
  context.save();
  std::printf("%ld work entries, %ld bookings, %ld schedules from %.0f to %.0f\n", entryCount, adjustmentCount,
              scheduleCount, first.timeIntervalSince1970(), now.timeIntervalSince1970());
  return 0;
}
