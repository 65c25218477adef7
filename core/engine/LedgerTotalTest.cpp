// The ledger's total must equal the sum over every booking at every instant,
// whatever happened to the store since the total was recorded: bookings
// inserted, edited and deleted by this context or another, the clock moving
// on or back, unsaved changes in the context that reads.
#include "core/engine/LedgerTotal.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <memory>
#include <vector>

#include "core/engine/TimeBankCalculator.h"
#include "core/ledger/BalanceAdjustment.h"
#include "core/persistence/QuillmontPersistence.h"
#include "platform/store/ModelContainer.h"
#include "platform/store/ModelContext.h"

namespace quillmont {
namespace {

TimeInterval everyBooking(ModelContext& context, Date through) {
  return TimeBankCalculator::ledgerBalanceSeconds(context.fetch<BalanceAdjustment>(), 0, through);
}

std::shared_ptr<BalanceAdjustment> booking(Date date, std::int64_t minutes) {
  return std::make_shared<BalanceAdjustment>(UUID::random(), date, minutes, "", BalanceAdjustmentKind::manual, date,
                                             date);
}

// Whether the store's recorded total is that of its current bookings.
bool totalIsCurrent(ModelContext& context) {
  const auto text = context.container()->metadata("ledger.BalanceAdjustmentTotal");
  return text && text->starts_with(std::to_string(context.generation<BalanceAdjustment>()) + ' ');
}

RC_GTEST_PROP(LedgerTotal, EqualsTheSumOfEveryBooking, ()) {
  const auto container = QuillmontPersistence::makeContainer(true, false, false);
  ModelContext mine(container);  // carries the total, as every writer does
  LedgerTotal::keepCurrent(mine);
  ModelContext elsewhere(container);  // writes without carrying it, as an older program would
  Date now(800'000'000);
  const auto someDate = [&] {
    // Mostly the past, some bookings ahead of now, some exactly on it.
    return *rc::gen::element(now + *rc::gen::inRange(-100'000, 100) * 60.0, now + *rc::gen::inRange(1, 5000) * 60.0,
                             now);
  };
  const auto someBooking = [&] { return booking(someDate(), *rc::gen::inRange(-1440, 1440)); };
  const auto anyOf = [&](ModelContext& context) {
    const auto all = context.fetch<BalanceAdjustment>();
    return all.empty() ? nullptr : all[*rc::gen::inRange<std::size_t>(0, all.size())];
  };

  bool readFromTotal = false;
  for (int step = *rc::gen::inRange(1, 25); step > 0; --step) {
    switch (*rc::gen::inRange(0, 8)) {
      case 0:
      case 1:
        for (int i = *rc::gen::inRange(1, 4); i > 0; --i) mine.insert(someBooking());
        mine.save();
        break;
      case 2:
        if (const auto edited = anyOf(mine)) {
          edited->setMinutes(*rc::gen::inRange(-1440, 1440));
          edited->setDate(someDate());
          mine.save();
        }
        break;
      case 3:
        if (const auto deleted = anyOf(mine)) {
          mine.deleteRecord(deleted);
          mine.save();
        }
        break;
      case 4:
        elsewhere.insert(someBooking());
        if (const auto edited = anyOf(elsewhere)) edited->setMinutes(*rc::gen::inRange(-1440, 1440));
        elsewhere.save();
        break;
      case 5:
        now = now + *rc::gen::inRange(0, 3000) * 60.0;
        break;
      case 6:
        now = now - *rc::gen::inRange(1, 3000) * 60.0;
        break;
      default: {
        // Unsaved bookings count for the context that holds them.
        ModelContext pending(container);
        pending.insert(someBooking());
        RC_ASSERT(LedgerTotal::bookedThrough(pending, now) == everyBooking(pending, now));
        break;
      }
    }
    readFromTotal |= totalIsCurrent(mine);
    ModelContext reader(container);
    RC_ASSERT(LedgerTotal::bookedThrough(reader, now) == everyBooking(reader, now));
    RC_ASSERT(LedgerTotal::bookedThrough(mine, now) == everyBooking(mine, now));
    // An earlier instant, as the balance before a listed stretch asks.
    const Date earlier = now - *rc::gen::inRange(0, 120'000) * 60.0;
    RC_ASSERT(LedgerTotal::bookedThrough(reader, earlier) == everyBooking(reader, earlier));
  }
  RC_TAG(readFromTotal ? "read from a recorded total" : "summed every time");
}

TEST(LedgerTotal, InsertsCarryTheTotalAndOtherWritesLeaveItBehind) {
  const auto container = QuillmontPersistence::makeContainer(true, false, false);
  ModelContext context(container);
  LedgerTotal::keepCurrent(context);
  const Date now(800'000'000);
  const auto first = booking(now - 60, 30);
  context.insert(first);
  context.insert(booking(now + 3600, 45));  // ahead of now: counts once it is due
  context.save();
  EXPECT_FALSE(totalIsCurrent(context));

  EXPECT_EQ(LedgerTotal::bookedThrough(context, now), 1800);
  EXPECT_TRUE(totalIsCurrent(context));
  context.insert(booking(now - 7200, -15));
  context.save();
  EXPECT_TRUE(totalIsCurrent(context));
  EXPECT_EQ(LedgerTotal::bookedThrough(context, now), 900);
  EXPECT_EQ(LedgerTotal::bookedThrough(context, now + 3600), 3600);

  first->setMinutes(90);
  context.save();
  EXPECT_FALSE(totalIsCurrent(context));
  EXPECT_EQ(LedgerTotal::bookedThrough(context, now), 4500);
  EXPECT_TRUE(totalIsCurrent(context));
  context.deleteRecord(first);
  context.save();
  EXPECT_FALSE(totalIsCurrent(context));
  EXPECT_EQ(LedgerTotal::bookedThrough(context, now), -900);

  // Bookings carried in after the total's instant are read every time, until
  // enough have piled up that a read records a total as of its own instant.
  const auto instant = [&] {
    const std::string text = *container->metadata("ledger.BalanceAdjustmentTotal");
    const auto space = text.find(' ');
    return std::stod(text.substr(space + 1, text.find(' ', space + 1) - space - 1));
  };
  const Date recordedAt(instant());
  for (int i = 1; i <= 80; ++i) {
    context.insert(booking(recordedAt + i, 1));
    context.save();
    EXPECT_EQ(LedgerTotal::bookedThrough(context, recordedAt + 100), -900 + 60 * i);
    EXPECT_TRUE(totalIsCurrent(context));
  }
  EXPECT_EQ(instant(), (recordedAt + 100).timeIntervalSinceReferenceDate);
  EXPECT_EQ(LedgerTotal::bookedThrough(context, recordedAt + 100), -900 + 60 * 80);

  // A total that cannot be read is summed again and recorded afresh.
  container->setMetadata("ledger.BalanceAdjustmentTotal", "not a total");
  EXPECT_EQ(LedgerTotal::bookedThrough(context, recordedAt + 100), -900 + 60 * 80);
  EXPECT_TRUE(totalIsCurrent(context));
}

}  // namespace
}  // namespace quillmont
