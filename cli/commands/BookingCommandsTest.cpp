// Black-box tests of set-up, bookings and categories.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cli/testing/CommandRunner.h"
#include "cli/testing/StoreProbe.h"
#include "core/ledger/BalanceAdjustment.h"
#include "core/ledger/CustomAdjustmentCategory.h"
#include "core/ledger/WorkSchedule.h"

namespace quillmont {
namespace {

using testing::CommandRunner;
using ::testing::ContainsRegex;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using testing::StoreProbe;

TEST(BookingCommands, SetupStoresTheChosenSettings) {
  CommandRunner quillmont;
  const auto setup = quillmont.run({"setup", "--start", "2025-01-06", "--balance", "12:30", "--week",
                                    "8h,8h,8h,8h,6h,0,0", "--quick", "10,45,1h30m,4h"});
  ASSERT_EQ(setup.exitCode, 0) << setup.err;
  EXPECT_THAT(setup.err, HasSubstr("Set-up complete."));
  EXPECT_THAT(setup.out, HasSubstr("Calculation start   2025-01-06"));
  EXPECT_THAT(setup.out, HasSubstr("8:00  8:00  8:00  8:00  6:00  0:00  0:00"));
  EXPECT_THAT(setup.out, HasSubstr("10 min, 45 min, 1 hr 30 min, 4 hrs"));

  // What set-up stores is the use case's (app/settings); the overview shows
  // the balance stated, and the overview no longer asks for set-up.
  EXPECT_THAT(quillmont.run({"overview", "--json"}).out, HasSubstr("\"balanceSeconds\" : 45000"));
  EXPECT_THAT(quillmont.run({}).out, Not(HasSubstr("setup")));
}

TEST(BookingCommands, RefusalsPrintTheSystemsMessageAndStoreNothing) {
  CommandRunner quillmont;
  for (const std::string amount : {"0", "-0:00", "0h"}) {
    const auto zero = quillmont.run({"book", amount, "--note", "nothing"});
    EXPECT_EQ(zero.exitCode, 1);
    EXPECT_THAT(zero.err, HasSubstr("Choose an amount of time first."));
  }
  for (const std::string amount : {"1441", "-1441", "24:01", "-25h"}) {
    const auto large = quillmont.run({"book", amount});
    EXPECT_EQ(large.exitCode, 1);
    EXPECT_THAT(large.err, HasSubstr("A single transaction can't exceed 24 hours."));
  }
  // A category keeps its amounts on its side of zero: the wrong sign is refused too.
  const auto wrongSign = quillmont.run({"book", "30", "--category", "appointment"});
  EXPECT_EQ(wrongSign.exitCode, 1);
  EXPECT_THAT(wrongSign.err, HasSubstr("takes time"));
  EXPECT_EQ(quillmont.run({"book", "-30", "--category", "Sick leave"}).exitCode, 1);

  StoreProbe store(quillmont);
  EXPECT_THAT(store.context().fetch<BalanceAdjustment>(), IsEmpty());

  for (const std::string amount : {"1440", "-24:00"}) {
    EXPECT_EQ(quillmont.run({"book", amount}).exitCode, 0) << amount;
  }
  EXPECT_EQ(store.context().fetch<BalanceAdjustment>().size(), 2u);
}

TEST(BookingCommands, BookListAndDeleteByIdentifierPrefix) {
  CommandRunner quillmont;
  ASSERT_EQ(quillmont.run({"category", "add", "  Gym   visits "}).exitCode, 0);
  const auto booked = quillmont.run({"book", "-1h30m", "-c", "gym visits", "-n", "  leg day  ", "-d", "2026-03-02"});
  ASSERT_EQ(booked.exitCode, 0) << booked.err;
  EXPECT_THAT(booked.err, HasSubstr("Booked \u22121:30 as Gym visits on 2026-03-02 12:00"));
  ASSERT_EQ(quillmont.run({"book", "2h", "--category", "holiday", "--day", "2026-03-03"}).exitCode, 0);

  StoreProbe store(quillmont);
  auto adjustments = store.context().fetch<BalanceAdjustment>();
  ASSERT_EQ(adjustments.size(), 2u);
  EXPECT_EQ(adjustments[0]->minutes(), -90);
  EXPECT_EQ(adjustments[0]->kindRawValue(), CustomAdjustmentCategory::fromTitle("Gym visits")->rawValue());
  EXPECT_EQ(adjustments[0]->note(), "leg day");
  EXPECT_EQ(adjustments[1]->kindRawValue(), "holiday");

  const auto list = quillmont.run({"bookings", "list", "--from", "2026-03-01", "--to", "2026-03-31"});
  EXPECT_THAT(list.out, ContainsRegex("2026-03-02 12:00 +\u22121:30 +Gym visits +leg day"));
  EXPECT_THAT(list.out, HasSubstr("2 bookings"));
  EXPECT_THAT(quillmont.run({"bookings", "list", "--from", "2026-03-03", "--to", "2026-03-03"}).out,
              Not(HasSubstr("Gym")));

  const std::string prefix = adjustments[0]->id().uuidString().substr(0, 6);
  const auto removed = quillmont.run({"bookings", "delete", prefix});
  EXPECT_EQ(removed.exitCode, 0) << removed.err;
  EXPECT_EQ(quillmont.run({"bookings", "delete", prefix}).exitCode, 1);  // gone now
  adjustments = store.context().fetch<BalanceAdjustment>();
  ASSERT_EQ(adjustments.size(), 1u);
  EXPECT_EQ(adjustments[0]->kindRawValue(), "holiday");
}

TEST(BookingCommands, TheNewestBookingOrScheduleIsNamedByPlace) {
  CommandRunner quillmont;
  ASSERT_EQ(quillmont.run({"setup", "--start", "2026-01-05", "--week", "8h,8h,8h,8h,8h,0,0"}).exitCode, 0);
  // The ledger's start marker is no booking of the person's own.
  const auto none = quillmont.run({"bookings", "delete", "@1"});
  EXPECT_EQ(none.exitCode, 1);
  EXPECT_THAT(none.err, HasSubstr("there is no booking @1"));
  // Made first, though dated later.
  ASSERT_EQ(quillmont.run({"book", "1h", "--day", "2026-03-03", "-n", "first"}).exitCode, 0);
  ASSERT_EQ(quillmont.run({"book", "2h", "--day", "2026-03-02", "-n", "second"}).exitCode, 0);
  const auto removed = quillmont.run({"bookings", "delete", "last"});
  ASSERT_EQ(removed.exitCode, 0) << removed.err;
  EXPECT_THAT(removed.err, HasSubstr("+2:00 on 2026-03-02"));
  StoreProbe store(quillmont);
  const auto notes = [&] {
    std::vector<std::string> found;
    for (const auto& booking : store.context().fetch<BalanceAdjustment>()) found.push_back(booking->note());
    return found;
  };
  EXPECT_THAT(notes(), ::testing::Contains("first"));
  EXPECT_THAT(notes(), Not(::testing::Contains("second")));
  EXPECT_EQ(quillmont.run({"bookings", "delete", "@2"}).exitCode, 1);
  EXPECT_THAT(quillmont.run({"bookings", "delete", "--help"}).out, HasSubstr("@1"));

  ASSERT_EQ(quillmont.run({"schedule", "add", "2026-04-01", "6h,6h,6h,6h,6h,0,0"}).exitCode, 0);
  ASSERT_EQ(quillmont.run({"schedule", "add", "2026-02-01", "7h,7h,7h,7h,7h,0,0"}).exitCode, 0);
  ASSERT_EQ(quillmont.run({"schedule", "remove", "@2"}).exitCode, 0);
  const auto schedules = store.context().fetch<WorkSchedule>();
  ASSERT_EQ(schedules.size(), 1u);
  EXPECT_EQ(schedules[0]->weekdayMinutes()[0], 420);
}

TEST(BookingCommands, EditChangesWhatIsGivenAndSaysWhat) {
  CommandRunner quillmont;
  ASSERT_EQ(quillmont.run({"setup", "--start", "2026-01-05", "--balance", "10:00"}).exitCode, 0);
  ASSERT_EQ(quillmont.run({"category", "add", "Gym visits"}).exitCode, 0);
  ASSERT_EQ(quillmont.run({"book", "-1h30m", "-c", "appointment", "-n", "dentist", "-d", "2026-03-02"}).exitCode, 0);
  StoreProbe store(quillmont);
  const auto booking = [&] {
    for (auto& each : store.context().fetch<BalanceAdjustment>()) {
      if (each->minutes() != 0) return each;
    }
    return std::shared_ptr<BalanceAdjustment>();
  };
  const auto booked = booking();
  ASSERT_TRUE(booked);

  // A negative amount reads as the option's value, with or without "=".
  const auto amount = quillmont.run({"bookings", "edit", "last", "--amount", "-2h"});
  ASSERT_EQ(amount.exitCode, 0) << amount.err;
  EXPECT_THAT(amount.err, HasSubstr(": amount \u22121:30 \u2192 \u22122:00; balance +8:00."));
  EXPECT_THAT(amount.err, Not(HasSubstr("note")));

  const auto all = quillmont.run({"bookings", "edit", booked->id().uuidString().substr(0, 5), "--amount=-45m", "-c",
                                  "gym VISITS", "-n", "", "-d", "2026-03-04"});
  ASSERT_EQ(all.exitCode, 0) << all.err;
  EXPECT_THAT(all.err, HasSubstr("category Appointment \u2192 Gym visits, note \"dentist\" \u2192 (none), "
                                 "date 2026-03-02 12:00 \u2192 2026-03-04 12:00; balance +9:15."));
  const auto edited = booking();
  EXPECT_EQ(edited->id(), booked->id());
  EXPECT_EQ(edited->minutes(), -45);
  EXPECT_EQ(edited->note(), "");
  EXPECT_EQ(store.context().fetch<BalanceAdjustment>().size(), 2u);  // the booking and the ledger's marker
  EXPECT_THAT(quillmont.run({"bookings", "list", "--from", "2026-03-04", "--to", "2026-03-04"}).out,
              ContainsRegex("2026-03-04 12:00 +\u22120:45 +Gym visits"));

  // Undo takes the last edit back whole.
  const auto undone = quillmont.run({"undo"});
  ASSERT_EQ(undone.exitCode, 0) << undone.err;
  EXPECT_THAT(undone.err, HasSubstr("bookings edit"));
  EXPECT_EQ(booking()->minutes(), -120);
  EXPECT_EQ(booking()->note(), "dentist");
  EXPECT_THAT(quillmont.run({"bookings", "--help"}).out, HasSubstr("edit"));
}

TEST(BookingCommands, EditRefusesAsBookDoesAndChangesNothing) {
  CommandRunner quillmont;
  ASSERT_EQ(quillmont.run({"setup", "--start", "2026-01-05"}).exitCode, 0);
  const auto none = quillmont.run({"bookings", "edit", "last", "--amount", "30"});
  EXPECT_EQ(none.exitCode, 1);  // the ledger's marker is no booking to name
  EXPECT_THAT(none.err, HasSubstr("there is no booking last"));
  ASSERT_EQ(quillmont.run({"book", "-30", "-c", "appointment"}).exitCode, 0);

  const auto nothing = quillmont.run({"bookings", "edit", "last"});
  EXPECT_EQ(nothing.exitCode, 2);
  EXPECT_THAT(nothing.err, HasSubstr("--amount, --category, --note or --day"));
  EXPECT_EQ(quillmont.run({"bookings", "edit", "--amount", "30"}).exitCode, 2);  // no identifier
  // Unreadable values are usage errors named by their option; the rules' refusals exit 1.
  const auto unreadable = quillmont.run({"bookings", "edit", "last", "--day", "2026-02-30"});
  EXPECT_EQ(unreadable.exitCode, 2);
  EXPECT_THAT(unreadable.err, HasSubstr("--day: "));
  const auto wrongSide = quillmont.run({"bookings", "edit", "last", "--category", "holiday"});
  EXPECT_EQ(wrongSide.exitCode, 1);
  EXPECT_THAT(wrongSide.err, HasSubstr("\"Public holiday\" adds time: give a positive amount."));
  const auto tooLong = quillmont.run({"bookings", "edit", "last", "--amount", "-24:01"});
  EXPECT_EQ(tooLong.exitCode, 1);
  EXPECT_THAT(tooLong.err, HasSubstr("A single transaction can't exceed 24 hours."));
  StoreProbe store(quillmont);
  for (const auto& booking : store.context().fetch<BalanceAdjustment>()) {
    if (booking->minutes() != 0) {
      EXPECT_EQ(booking->minutes(), -30);
      EXPECT_EQ(booking->kindRawValue(), "appointment");
    }
  }
}

TEST(BookingCommands, AListSaysItsRangeAndReconcilesWithTheBalance) {
  CommandRunner quillmont;
  // Setting up starts the manual ledger: its marker is no booking to list.
  ASSERT_EQ(quillmont.run({"setup", "--start", "2026-01-05", "--balance", "10:00"}).exitCode, 0);
  ASSERT_EQ(quillmont.run({"book", "-2h", "-d", "2026-02-10"}).exitCode, 0);
  ASSERT_EQ(quillmont.run({"book", "45", "-d", "2026-03-02"}).exitCode, 0);
  ASSERT_EQ(quillmont.run({"book", "-15", "-d", "2026-03-20"}).exitCode, 0);

  const auto march = quillmont.run({"bookings", "list", "--from", "2026-03-01", "--to", "2026-03-31"});
  ASSERT_EQ(march.exitCode, 0) << march.err;
  EXPECT_THAT(march.out, HasSubstr("Bookings from 2026-03-01 to 2026-03-31\n"));
  EXPECT_THAT(march.out, ContainsRegex("2 bookings +\\+0:30\n"));
  EXPECT_THAT(march.out, ContainsRegex("Balance before +2026-03-01 +\\+8:00\n"));
  EXPECT_THAT(march.out, ContainsRegex("Balance after +2026-03-31 +\\+8:30\n"));
  EXPECT_THAT(march.out, Not(HasSubstr("ledger start")));

  const auto all = quillmont.run({"bookings", "list", "--all"});
  EXPECT_THAT(all.out, ContainsRegex("3 bookings +\u22121:30\n"));
  EXPECT_THAT(all.out, ContainsRegex("Starting balance +\\+10:00\n"));
  EXPECT_THAT(all.out, ContainsRegex("Resulting balance +\\+8:30\n"));

  // The default range is the last 30 days, and the list says so.
  const auto recent = quillmont.run({"bookings", "list"});
  EXPECT_THAT(recent.err, HasSubstr("(the last 30 days; --from, --to or --all for others)"));
  EXPECT_THAT(recent.err, HasSubstr("the balance stays +8:30"));
}

TEST(BookingCommands, DaysBeforeTheGregorianReformAreShownAsTheyWereTyped) {
  CommandRunner quillmont;
  // Days before 1582-10-15 were once shown in the Julian calendar: ten days off.
  for (const std::string day : {"1582-10-10", "1582-10-04", "1582-10-15", "1000-03-01"}) {
    const auto booked = quillmont.run({"book", "30", "--day", day});
    ASSERT_EQ(booked.exitCode, 0) << booked.err;
    EXPECT_THAT(booked.err, HasSubstr("on " + day + " 12:00")) << day;
  }
  const auto setup = quillmont.run({"setup", "--start", "1582-10-10", "--balance", "0"});
  ASSERT_EQ(setup.exitCode, 0) << setup.err;
  EXPECT_THAT(setup.out, HasSubstr("Calculation start   1582-10-10"));
}

TEST(BookingCommands, CategoriesAreUniqueIgnoringCaseAndAtMostTwenty) {
  CommandRunner quillmont;
  ASSERT_EQ(quillmont.run({"category", "add", "Doctor"}).exitCode, 0);
  const auto again = quillmont.run({"category", "add", "DOCTOR"});
  EXPECT_EQ(again.exitCode, 1);
  EXPECT_THAT(again.err, HasSubstr("exists already"));
  for (int i = 2; i <= 20; ++i) ASSERT_EQ(quillmont.run({"category", "add", "C" + std::to_string(i)}).exitCode, 0);
  const auto tooMany = quillmont.run({"category", "add", "One more"});
  EXPECT_EQ(tooMany.exitCode, 1);
  EXPECT_THAT(tooMany.err, HasSubstr("at most 20"));

  ASSERT_EQ(quillmont.run({"book", "-15", "-c", "doctor"}).exitCode, 0);
  const auto renamed = quillmont.run({"category", "rename", "doctor", "Dentist"});
  EXPECT_EQ(renamed.exitCode, 0) << renamed.err;
  EXPECT_THAT(renamed.err, HasSubstr("1 booking moved"));
  EXPECT_EQ(quillmont.run({"category", "rename", "C2", "dentist"}).exitCode, 1);
  EXPECT_THAT(quillmont.run({"bookings", "list"}).out, HasSubstr("Dentist"));
  ASSERT_EQ(quillmont.run({"category", "remove", "c20"}).exitCode, 0);
  EXPECT_EQ(quillmont.run({"category", "remove", "c20"}).exitCode, 1);
  const auto list = quillmont.run({"category", "list"});
  EXPECT_THAT(list.out, HasSubstr("Dentist\nC2\n"));
  EXPECT_THAT(list.out, Not(HasSubstr("C20")));

  ASSERT_EQ(quillmont.run({"kinds", "appointment", "Long lunch"}).exitCode, 0);
  EXPECT_THAT(quillmont.run({"settings"}).out, HasSubstr("Offered kinds       Appointment, Long lunch"));
  ASSERT_EQ(quillmont.run({"kinds", "--none"}).exitCode, 0);
  EXPECT_THAT(quillmont.run({"kinds"}).out, Not(HasSubstr("yes")));
}

}  // namespace
}  // namespace quillmont
