#include "core/engine/Settlement.h"

#include <gtest/gtest.h>

#include <array>
#include <random>

#include "core/engine/DataStoreMaintenance.h"
#include "core/engine/DayKey.h"
#include "core/ledger/BalanceAdjustment.h"
#include "core/ledger/WorkEntry.h"
#include "core/persistence/QuillmontPersistence.h"
#include "platform/store/ModelContainer.h"

namespace quillmont {
namespace {

constexpr double hour = 3600.0;

class SettlementTest : public ::testing::Test {
 protected:
  SettlementTest()
      : calendar_(*Calendar::make("Europe/Berlin")),
        context_(QuillmontPersistence::makeContainer(true, true, false)),
        settings_(std::make_shared<TimeBankSettings>()) {
    settings_->setCalculationStartDate(day(2026, 3, 2));  // a Monday
    const std::array<std::int64_t, 7> week{480, 480, 480, 480, 480, 0, 0};
    settings_->setWeekdayMinutes(week);
    context_.insert(settings_);
    context_.save();
  }

  Date day(int year, int month, int number) const { return *calendar_.date(year, month, number); }

  void work(Date start, Date end) {
    context_.insert(std::make_shared<WorkEntry>(UUID::random(), start, end, 0, "", start, start));
    context_.save();
  }

  std::vector<Settlement::Day> plan(Date first, Date last, const std::vector<Date>& holidays = {}) {
    return Settlement::plan(context_, *settings_, first, last, holidays, calendar_);
  }

  void book(ModelContext& context, UUID id, Date date, std::int64_t minutes, Date now) {
    context.insert(std::make_shared<BalanceAdjustment>(id, date, minutes, "", BalanceAdjustmentKind::manual, now, now));
    context.save();
  }

  Settlement::Unsettled unsettled(Date now) {
    return Settlement::unsettled(context_, *settings_, now, {}, calendar_);
  }

  // Replaces the minutes of the recorded count by a figure no count gives,
  // so a read that returns it was served by the record.
  static constexpr std::int64_t marked = 123457;
  void markRecordedCount() {
    ModelContainer& container = *context_.container();
    const auto text = container.metadata("settlement.unsettled");
    ASSERT_TRUE(text);
    const auto bar = text->rfind('|');
    const auto first = text->find(' ', bar);
    const auto second = text->find(' ', first + 1);
    ASSERT_NE(second, std::string::npos);
    container.setMetadata("settlement.unsettled",
                          text->substr(0, first + 1) + std::to_string(marked) + text->substr(second));
  }

  Calendar calendar_;
  ModelContext context_;
  std::shared_ptr<TimeBankSettings> settings_;
};

TEST(Settlement, APartHoldsAtMostOneDayAndKeepsTheSign) {
  EXPECT_TRUE(Settlement::parts(0).empty());
  EXPECT_EQ(Settlement::parts(135), (std::vector<std::int64_t>{135}));
  EXPECT_EQ(Settlement::parts(-1440), (std::vector<std::int64_t>{-1440}));
  EXPECT_EQ(Settlement::parts(1500), (std::vector<std::int64_t>{1440, 60}));
  EXPECT_EQ(Settlement::parts(-3000), (std::vector<std::int64_t>{-1440, -1440, -120}));
  EXPECT_NE(Settlement::identifier("2026-03-02"), Settlement::identifier("2026-03-02", 1));
  EXPECT_NE(Settlement::identifier("2026-03-02"), Settlement::identifier("2026-03-03"));
  EXPECT_EQ(Settlement::note("2026-03-02"), "Settlement of 2026-03-02");
}

TEST_F(SettlementTest, BooksWorkedLessPlannedOncePerDay) {
  const Date monday = day(2026, 3, 2);
  const Date tuesday = day(2026, 3, 3);
  const Date wednesday = day(2026, 3, 4);
  work(monday + 8 * hour, monday + 18 * hour + 15 * 60 + 20);  // 10:15:20, rounds to 10:15
  work(tuesday + 9 * hour, tuesday + 17 * hour);                // as planned
  // Wednesday is a public holiday, Thursday nothing was worked.
  const std::vector<Date> holidays{wednesday};

  auto days = plan(monday, day(2026, 3, 5), holidays);
  ASSERT_EQ(days.size(), 4u);
  EXPECT_EQ(days[0].key, "2026-03-02");
  EXPECT_EQ(days[0].minutes, 135);
  EXPECT_EQ(days[1].minutes, 0);
  EXPECT_FALSE(days[1].toSettle());
  EXPECT_EQ(days[2].minutes, 0);
  EXPECT_EQ(days[3].minutes, -480);
  EXPECT_EQ(Settlement::settle(days, context_, Date::now()), 2u);

  const auto bookings = context_.fetch<BalanceAdjustment>();
  ASSERT_EQ(bookings.size(), 2u);
  EXPECT_EQ(bookings[0]->id(), Settlement::identifier("2026-03-02"));
  EXPECT_EQ(bookings[0]->date(), monday + 12 * hour);
  EXPECT_EQ(bookings[0]->minutes(), 135);
  EXPECT_EQ(bookings[0]->kindRawValue(), "manual");
  EXPECT_EQ(bookings[0]->note(), "Settlement of 2026-03-02");

  // Settled days stay settled, also after more work on them; a day that
  // balanced to 0:00 is settled by the work added later.
  work(monday + 19 * hour, monday + 20 * hour);
  work(tuesday + 18 * hour, tuesday + 18.5 * hour);
  days = plan(monday, day(2026, 3, 5), holidays);
  EXPECT_TRUE(days[0].settledBefore);
  EXPECT_EQ(days[1].minutes, 30);
  EXPECT_TRUE(days[1].toSettle());
  EXPECT_TRUE(days[3].settledBefore);
  EXPECT_EQ(Settlement::settle(days, context_, Date::now()), 1u);
  EXPECT_EQ(Settlement::settle(plan(monday, day(2026, 3, 5), holidays), context_, Date::now()), 0u);
}

TEST_F(SettlementTest, DaysBeforeTheCalculationStartAreNotSettled) {
  const auto days = plan(day(2026, 2, 26), day(2026, 3, 2));
  ASSERT_EQ(days.size(), 1u);
  EXPECT_EQ(days[0].date, day(2026, 3, 2));
  EXPECT_TRUE(plan(day(2026, 2, 1), day(2026, 2, 28)).empty());
}

TEST_F(SettlementTest, ADayOfMoreThanADaysDifferenceIsSplit) {
  // The night daylight saving ends is a Sunday of 25 hours, nothing planned.
  const Date sunday = day(2026, 10, 25);
  work(sunday, day(2026, 10, 26));
  const auto days = plan(sunday, sunday);
  ASSERT_EQ(days.size(), 1u);
  EXPECT_EQ(days[0].minutes, 1500);
  EXPECT_EQ(Settlement::settle(days, context_, Date::now()), 2u);
  const auto bookings = context_.fetch<BalanceAdjustment>();
  ASSERT_EQ(bookings.size(), 2u);
  EXPECT_EQ(bookings[0]->minutes() + bookings[1]->minutes(), 1500);
  EXPECT_EQ(bookings[1]->id(), Settlement::identifier("2026-10-25", 1));
  EXPECT_TRUE(plan(sunday, sunday)[0].settledBefore);
}

TEST_F(SettlementTest, UnsettledCountsFromTheDayAfterTheLastSettledDay) {
  const Date now = day(2026, 3, 12) + 10 * hour;  // a Thursday
  EXPECT_EQ(Settlement::lastSettledDay(context_, calendar_), std::nullopt);
  // Nothing is unsettled before any work is recorded.
  EXPECT_EQ(Settlement::unsettled(context_, *settings_, now, {}, calendar_).minutes, 0);
  work(day(2026, 3, 2) + 8 * hour, day(2026, 3, 2) + 16 * hour);  // Monday as planned
  auto unsettled = Settlement::unsettled(context_, *settings_, now, {}, calendar_);
  EXPECT_EQ(unsettled.minutes, -7 * 480);  // seven more working days through Wednesday, today left out
  EXPECT_EQ(unsettled.since, day(2026, 3, 3));

  // A manual booking that is no settlement does not count as one.
  context_.insert(std::make_shared<BalanceAdjustment>(UUID::random(), day(2026, 3, 10) + 9 * hour, 30, "",
                                                      BalanceAdjustmentKind::manual, now, now));
  Settlement::settle(plan(day(2026, 3, 2), day(2026, 3, 6)), context_, now);
  EXPECT_EQ(Settlement::lastSettledDay(context_, calendar_), day(2026, 3, 6));
  unsettled = Settlement::unsettled(context_, *settings_, now, {}, calendar_);
  EXPECT_EQ(unsettled.minutes, -3 * 480);
  EXPECT_EQ(unsettled.since, day(2026, 3, 9));

  // A holiday on Tuesday; the rest settled: nothing left.
  const std::vector<Date> holidays{day(2026, 3, 10)};
  unsettled = Settlement::unsettled(context_, *settings_, now, holidays, calendar_);
  EXPECT_EQ(unsettled.minutes, -2 * 480);
  Settlement::settle(plan(day(2026, 3, 9), day(2026, 3, 11), holidays), context_, now);
  unsettled = Settlement::unsettled(context_, *settings_, now, holidays, calendar_);
  EXPECT_EQ(unsettled.minutes, 0);
  EXPECT_EQ(unsettled.since, std::nullopt);
}

TEST_F(SettlementTest, ARecordedCountGoesOnFromItsLastDayAndIsDroppedByAnyChange) {
  ModelContainer& container = *context_.container();
  const Date thursday = day(2026, 3, 12) + 10 * hour;
  work(day(2026, 3, 2) + 8 * hour, day(2026, 3, 2) + 16 * hour);  // Monday as planned
  EXPECT_EQ(Settlement::unsettled(context_, *settings_, thursday, {}, calendar_).minutes, -7 * 480);
  ASSERT_TRUE(container.metadata("settlement.unsettled"));

  // A day later only Thursday is new.
  const Date friday = thursday + 24 * hour;
  EXPECT_EQ(Settlement::unsettled(context_, *settings_, friday, {}, calendar_).minutes, -8 * 480);
  // A count is kept per zone and per holiday days; a recorded count
  // reaching past today (the clock went back) is not used either.
  const std::vector<Date> holidays{day(2026, 3, 2)};  // Monday's work is then all surplus
  EXPECT_EQ(Settlement::unsettled(context_, *settings_, friday, holidays, calendar_).minutes, -7 * 480);
  EXPECT_EQ(Settlement::unsettled(context_, *settings_, friday, {}, *Calendar::make("Asia/Tokyo")).minutes, -8 * 480);
  EXPECT_EQ(Settlement::unsettled(context_, *settings_, thursday, {}, calendar_).minutes, -7 * 480);

  // Work on a day counted before changes the count.
  Settlement::unsettled(context_, *settings_, friday, {}, calendar_);
  work(day(2026, 3, 3) + 8 * hour, day(2026, 3, 3) + 16 * hour);
  const auto unsettled = Settlement::unsettled(context_, *settings_, friday, {}, calendar_);
  EXPECT_EQ(unsettled.minutes, -7 * 480);
  EXPECT_EQ(unsettled.since, day(2026, 3, 4));
}

TEST_F(SettlementTest, OrdinaryBookingsKeepTheRecordedCountAndSettlementsDropIt) {
  const Date now = day(2026, 3, 12) + 10 * hour;
  DataStoreMaintenance::reconcile(context_, calendar_, now, true);  // what every writer runs first
  work(day(2026, 3, 2) + 8 * hour, day(2026, 3, 2) + 16 * hour);
  ASSERT_EQ(unsettled(now).minutes, -7 * 480);
  markRecordedCount();
  ASSERT_EQ(unsettled(now).minutes, marked);

  // Bookings, one or several to a save, on counted days or today, keep it.
  book(context_, UUID::random(), day(2026, 3, 4) + 9 * hour, -90, now);
  context_.insert(std::make_shared<BalanceAdjustment>(UUID::random(), day(2026, 3, 3) + 9 * hour, 45, "",
                                                      BalanceAdjustmentKind::appointment, now, now));
  book(context_, UUID::random(), now, 30, now);
  EXPECT_EQ(unsettled(now).minutes, marked);
  // The next day goes on from it.
  EXPECT_EQ(unsettled(now + 24 * hour).minutes, marked - 480);
  EXPECT_EQ(unsettled(now).minutes, -7 * 480);  // a count past today is not used

  // A settlement, settled by hand or booked like any other, drops it.
  markRecordedCount();
  book(context_, Settlement::identifier("2026-03-03"), day(2026, 3, 3) + 12 * hour, -480, now);
  auto counted = unsettled(now);
  EXPECT_EQ(counted.minutes, -6 * 480);
  EXPECT_EQ(counted.since, day(2026, 3, 4));
  markRecordedCount();
  Settlement::settle(plan(day(2026, 3, 4), day(2026, 3, 9)), context_, now);
  counted = unsettled(now);
  EXPECT_EQ(counted.minutes, -2 * 480);
  EXPECT_EQ(counted.since, day(2026, 3, 10));
}

TEST_F(SettlementTest, EditsDeletionsUndoAndOtherWritersDropTheRecordedCount) {
  const Date now = day(2026, 3, 12) + 10 * hour;
  DataStoreMaintenance::reconcile(context_, calendar_, now, true);
  work(day(2026, 3, 2) + 8 * hour, day(2026, 3, 2) + 16 * hour);
  const UUID ordinary = UUID::random();
  book(context_, ordinary, day(2026, 3, 3) + 9 * hour, 30, now);
  {
    ModelContext settling(context_.container());
    settling.setUndoAction("settle");
    Settlement::settle(Settlement::plan(settling, *settings_, day(2026, 3, 2), day(2026, 3, 6), {}, calendar_),
                       settling, now);
  }
  ASSERT_EQ(unsettled(now).minutes, -3 * 480);

  // Undoing the settlement makes its days unsettled again.
  markRecordedCount();
  ASSERT_TRUE(context_.container()->undoLastAction());
  EXPECT_EQ(unsettled(now).minutes, -7 * 480);

  // A booking written by another program (no observer carries the count).
  markRecordedCount();
  {
    ModelContext other(context_.container());
    book(other, Settlement::identifier("2026-03-03"), day(2026, 3, 3) + 12 * hour, -480, now);
  }
  EXPECT_EQ(unsettled(now).minutes, -6 * 480);

  // An edit could turn a booking into a settlement, or move one; a deletion
  // could remove one: both count again.
  const auto settlement = context_.fetch<BalanceAdjustment>({[](const BalanceAdjustment& booking) {
                                                               return booking.id() == Settlement::identifier("2026-03-03");
                                                             }, {}});
  ASSERT_EQ(settlement.size(), 1u);
  markRecordedCount();
  settlement[0]->setMinutes(-470);
  context_.save();
  EXPECT_EQ(unsettled(now).minutes, -6 * 480);
  markRecordedCount();
  context_.deleteRecord(settlement[0]);
  context_.save();
  EXPECT_EQ(unsettled(now).minutes, -7 * 480);
}

TEST_F(SettlementTest, ACarriedCountEqualsAFreshOneAfterAnyMixOfWrites) {
  const Date now = day(2026, 3, 27) + 10 * hour;
  DataStoreMaintenance::reconcile(context_, calendar_, now, true);
  std::mt19937 random(20261125);
  const auto pick = [&](int below) { return static_cast<int>(random() % static_cast<unsigned>(below)); };
  const auto someDay = [&] { return day(2026, 3, 2) + 24 * hour * pick(25); };
  ModelContext other(context_.container());
  for (int step = 0; step < 150; ++step) {
    switch (pick(6)) {
      case 0:
        work(someDay() + 8 * hour, someDay() + 8 * hour + 60 * pick(600));
        break;
      case 1: {
        const Date first = someDay();
        Settlement::settle(plan(first, first + 24 * hour * pick(4)), context_, now);
        break;
      }
      case 2: {
        auto bookings = context_.fetch<BalanceAdjustment>();
        if (!bookings.empty()) context_.deleteRecord(bookings[static_cast<std::size_t>(pick(static_cast<int>(bookings.size())))]);
        context_.save();
        break;
      }
      case 3:
        book(other, UUID::random(), someDay() + 9 * hour, pick(200) - 100, now);
        break;
      default:
        book(context_, UUID::random(), someDay() + 9 * hour, pick(200) - 100, now);
    }
    const auto counted = unsettled(now);
    context_.container()->setMetadata("settlement.unsettled", "");
    const auto fresh = unsettled(now);
    ASSERT_EQ(counted.minutes, fresh.minutes) << "after step " << step;
    ASSERT_EQ(counted.since, fresh.since) << "after step " << step;
  }
}

}  // namespace
}  // namespace quillmont
