// Day balances of a stretch of days read from the store must equal those of
// every record: on random histories around daylight-saving changes, with
// chains of overlapping work reaching far into the stretch, running timers
// and bookings on day edges, whether the rows are read by SQL, held by the
// context, pending, or changed by another context in between.
#include "core/engine/PeriodBalances.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <vector>

#include "core/engine/TimeBankCalculator.h"
#include "core/ledger/BalanceAdjustment.h"
#include "core/ledger/WorkEntry.h"
#include "core/ledger/WorkSchedule.h"
#include "core/persistence/QuillmontPersistence.h"

namespace quillmont {
namespace {

// What every record says about the days from the day of `from` through the day of `through`.
std::vector<DayBalance> fromEveryRecord(ModelContext& context, const TimeBankSettings& settings, Date from,
                                        Date through, const Calendar& calendar) {
  auto days = TimeBankCalculator::dayBalances(context.fetch<WorkEntry>(), context.fetch<BalanceAdjustment>(),
                                              context.fetch<WorkSchedule>(), settings, through, calendar);
  std::erase_if(days, [&](const DayBalance& day) { return day.date < calendar.startOfDay(from); });
  return days;
}

RC_GTEST_PROP(PeriodBalances, EqualTheBalancesOfEveryRecord, ()) {
  struct Window { const char* zone; int year, month, day; };
  static const std::vector<Window> windows{{"Europe/Berlin", 2026, 3, 20}, {"Europe/Berlin", 2026, 10, 18},
                                           {"America/Sao_Paulo", 2018, 10, 28}};
  const Window window = *rc::gen::elementOf(windows);
  const auto calendar = *Calendar::make(window.zone);
  const Date base = *calendar.date(window.year, window.month, window.day);
  const auto instant = [&](int fromDay, int toDay) {
    const Date date = base + *rc::gen::inRange(fromDay * 1440, toDay * 1440) * 60.0;
    return *rc::gen::element(date, calendar.startOfDay(date), date + 0.25);
  };
  const auto newEntry = [&] {
    const Date start = instant(-2, 16);
    // Mostly a working day; now and then days long, so that chains of
    // overlapping work reach from before a stretch far into it.
    const int minutes = *rc::gen::element(*rc::gen::inRange(-30, 600), *rc::gen::inRange(600, 6000));
    const std::optional<Date> end = *rc::gen::element<std::optional<Date>>(start + minutes * 60.0, start + minutes * 60.0,
                                                                           std::nullopt);
    return std::make_shared<WorkEntry>(UUID::random(), start, end, *rc::gen::inRange(-10, 400), "", start, start);
  };

  ModelContext writer(QuillmontPersistence::makeContainer(true, false, false));
  for (int i = *rc::gen::inRange(0, 40); i > 0; --i) writer.insert(newEntry());
  for (int i = *rc::gen::inRange(0, 12); i > 0; --i) {
    const Date date = instant(-3, 17);
    writer.insert(std::make_shared<BalanceAdjustment>(UUID::random(), date, *rc::gen::inRange(-600, 600), "",
                                                      BalanceAdjustmentKind::manual, date, date));
  }
  for (int i = *rc::gen::inRange(0, 4); i > 0; --i) {
    const std::vector<std::int64_t> minutes{480, 480, *rc::gen::inRange<std::int64_t>(0, 600), 480, 300, 0, 0};
    writer.insert(std::make_shared<WorkSchedule>(UUID::random(), instant(-4, 14), minutes, Date(0), Date(0)));
  }
  writer.save();
  const TimeBankSettings settings(UUID::random(), instant(-3, 6), 0, std::vector<std::int64_t>{480, 480, 480, 480, 480, 0, 0},
                                  {}, "", "[]", true, Date(0));

  const auto check = [&](ModelContext& context, const char* how) {
    // Now and then a stretch of over a year, which is read whole.
    const Date from = *rc::gen::element(instant(-1, 14), instant(-400, -380));
    const Date through = *rc::gen::element(instant(0, 16), from + *rc::gen::inRange(0, 3000) * 60.0);
    // Read first: reading every record loads the tables into the context.
    const auto period = PeriodBalances::read(context, settings, from, through, calendar);
    RC_ASSERT(period == fromEveryRecord(context, settings, from, through, calendar));
    // Today's worked time, from the rows that reach today, as every record has it.
    const Date today = calendar.startOfDay(through);
    std::vector<TimeBankCalculator::detail::ObservedWorkInterval> found;
    context.forEach<WorkEntry>({"startedAt", "endedAt", "breakMinutes"}, PeriodBalances::reaching(today, through),
                               [&](const WorkEntry& entry) {
                                 if (auto seen = TimeBankCalculator::detail::observedInterval(entry, through)) {
                                   found.push_back(*seen);
                                 }
                               });
    const auto everyRecord =
        TimeBankCalculator::detail::workedSecondsByDay(context.fetch<WorkEntry>(), today, through, through, calendar);
    const double expected = everyRecord.contains(today) ? everyRecord.at(today) : 0.0;
    RC_ASSERT(PeriodBalances::workedToday(context, std::move(found), through, calendar) == expected);
    RC_TAG(how);
  };
  ModelContext reader(writer.container());
  check(reader, "read by SQL");
  check(writer, "held in memory");

  // Pending changes of the context that reads.
  writer.insert(newEntry());
  const auto entries = writer.fetch<WorkEntry>();
  if (!entries.empty()) writer.deleteRecord(*rc::gen::elementOf(entries));
  check(writer, "pending");
  writer.save();

  // Another context changes what `reader` read before.
  ModelContext other(writer.container());
  for (const auto& entry : other.fetch<WorkEntry>()) {
    if (*rc::gen::inRange(0, 3) == 0) entry->setStartedAt(entry->startedAt() - *rc::gen::inRange(0, 3000) * 60.0);
  }
  other.insert(newEntry());
  other.save();
  check(reader, "changed elsewhere");
}

}  // namespace
}  // namespace quillmont
