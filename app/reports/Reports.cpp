#include "app/reports/Reports.h"

#include <algorithm>
#include <utility>

#include "app/session/StoreSession.h"
#include "core/engine/PeriodBalances.h"
#include "core/engine/Settlement.h"
#include "core/ledger/BalanceAdjustment.h"

namespace quillmont::Reports {

DateInterval periodAround(Span span, const DateInput::Day& day, const Calendar& calendar) {
  switch (span) {
    case Span::week:
    case Span::month: {
      const Date midday = DateInput::midday(day, calendar);
      const auto unit = span == Span::week ? Calendar::Unit::weekOfYear : Calendar::Unit::month;
      return calendar.dateInterval(unit, midday).value_or(DateInterval(midday, 0));
    }
    case Span::year:
      return DateInterval::between(DateInput::startOfDay({day.year, 1, 1}, calendar),
                                   DateInput::endOfDay({day.year, 12, 31}, calendar));
    case Span::days:
      break;
  }
  return DateInterval::between(DateInput::startOfDay(day, calendar), DateInput::endOfDay(day, calendar));
}

std::optional<std::string> Report::holidayOn(Date day) const { return PublicHolidays::name(holidays, day); }

Report make(StoreSession& session, const DateInterval& interval) {
  const Calendar& calendar = session.calendar();
  const Date now = session.now();
  const Date through = std::min(interval.end(), now);
  auto holidays = PublicHolidays::read(*session.container(), calendar);
  const auto days = PeriodBalances::read(session.context(), session.settings(), interval.start, through, calendar,
                                         PublicHolidays::days(holidays));
  Report made{TimeBankReporting::report(days, interval), std::move(holidays), calendar.startOfDay(interval.end() - 1),
              std::nullopt, {}};
  made.chartRange = TimeBankReporting::chartHourRange(made.report);
  // A period that reaches past today is reported through today.
  if (interval.start <= now && now < interval.end() && calendar.startOfDay(now) < made.lastDay) {
    made.throughToday = now;
  }
  return made;
}

std::vector<CategoryTotal> categoryTotals(StoreSession& session, const TimeBankReport& report) {
  // One pass over four columns in row order; a category's place is that of
  // its first booking by date, then identifier.
  struct Tally {
    CategoryTotal total;
    std::pair<Date, UUID> first;
  };
  std::vector<Tally> tallies;
  std::vector<std::pair<std::string, std::string>> titles;  // raw value, title: a few distinct ones
  const Date through = std::min(report.interval.end(), session.now());
  using Op = RowFilter::Op;
  const RowFilter inPeriod =
      RowFilter::allOf({{"date", Op::greaterOrEqual, report.interval.start}, {"date", Op::lessOrEqual, through}});
  // Over a long stretch every row, with the same test here.
  const bool readAll = through - report.interval.start > PeriodBalances::longStretch;
  session.context().forEach<BalanceAdjustment>(
      {"date", "id", "minutes", "kindRawValue"}, readAll ? RowFilter{} : inPeriod, [&](const BalanceAdjustment& booking) {
        if (readAll && !(booking.date() >= report.interval.start && booking.date() <= through)) return;
        if (booking.minutes() == 0) return;
        const std::string& rawValue = booking.kindRawValue();
        auto known = std::find_if(titles.begin(), titles.end(), [&](const auto& pair) { return pair.first == rawValue; });
        if (known == titles.end()) known = titles.insert(titles.end(), {rawValue, booking.category().title});
        // Settlements are not adjustments of the day (its difference holds
        // them already): a line of their own says where that time went.
        static const std::string settled = "Settled worked time";
        const std::string& title =
            Settlement::isSettlement(booking.id(), booking.date(), session.calendar()) ? settled : known->second;
        const std::pair<Date, UUID> key{booking.date(), booking.id()};
        auto found =
            std::find_if(tallies.begin(), tallies.end(), [&](const auto& tally) { return tally.total.title == title; });
        if (found == tallies.end()) found = tallies.insert(tallies.end(), {{title, rawValue}, key});
        if (key < found->first) {
          found->first = key;
          found->total.category = rawValue;
        }
        ++found->total.count;
        found->total.seconds += static_cast<double>(booking.minutes()) * 60.0;
      });
  std::stable_sort(tallies.begin(), tallies.end(), [](const Tally& a, const Tally& b) { return a.first < b.first; });
  std::vector<CategoryTotal> totals;
  totals.reserve(tallies.size());
  for (auto& tally : tallies) totals.push_back(std::move(tally.total));
  return totals;
}

std::string daysCSV(StoreSession& session, const DateInterval& interval) {
  return TimeBankReporting::csv(make(session, interval).report, session.calendar());
}

std::string ledgerCSV(StoreSession& session, const DateInterval& interval) {
  return TimeBankReporting::ledgerCSV(session.context().fetch<BalanceAdjustment>(), interval, session.calendar());
}

}  // namespace quillmont::Reports
