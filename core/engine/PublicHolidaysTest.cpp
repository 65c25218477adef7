#include "core/engine/PublicHolidays.h"

#include <gtest/gtest.h>

#include "core/persistence/QuillmontPersistence.h"

namespace quillmont {
namespace {

TEST(PublicHolidays, OneHolidayPerDayInTheReadersZone) {
  const auto berlin = *Calendar::make("Europe/Berlin");
  const std::vector<HolidayList::Entry> entries{{"2026-12-26", "boxing", "Boxing Day"},
                                                {"2026-12-25", "christmas", "Christmas"},
                                                {"2026-12-25", "weihnachten", "Weihnachten"},
                                                {"2026-12-25", "again", "Christmas"},
                                                {"2026-02-30", "broken", "No such day"}};
  const auto holidays = PublicHolidays::place(entries, berlin);
  ASSERT_EQ(holidays.size(), 2u);
  EXPECT_EQ(holidays[0], (PublicHolidays::Holiday{*berlin.date(2026, 12, 25), "Christmas / Weihnachten"}));
  EXPECT_EQ(holidays[1].day, *berlin.date(2026, 12, 26));
  EXPECT_EQ(PublicHolidays::days(holidays),
            (std::vector<Date>{*berlin.date(2026, 12, 25), *berlin.date(2026, 12, 26)}));
  EXPECT_EQ(PublicHolidays::name(holidays, *berlin.date(2026, 12, 26)), "Boxing Day");
  EXPECT_EQ(PublicHolidays::name(holidays, *berlin.date(2026, 12, 27)), std::nullopt);

  // In another zone the same day is that zone's day.
  const auto tokyo = *Calendar::make("Asia/Tokyo");
  EXPECT_EQ(PublicHolidays::place(entries, tokyo)[0].day, *tokyo.date(2026, 12, 25));
}

TEST(PublicHolidays, TheStoreKeepsEachDayAndUIDOnce) {
  const auto container = QuillmontPersistence::makeContainer(true, true, false);
  EXPECT_TRUE(container->holidays().empty());
  const std::vector<HolidayList::Entry> first{{"2026-12-25", "christmas", "Christmas"},
                                              {"2027-01-01", "newyear", "New Year"}};
  EXPECT_EQ(container->addHolidays(first), 2);
  const std::vector<HolidayList::Entry> second{{"2026-12-25", "christmas", "Renamed"},
                                               {"2026-12-25", "other", "Christmas"}};
  EXPECT_EQ(container->addHolidays(second), 1);
  const auto kept = container->holidays();
  ASSERT_EQ(kept.size(), 3u);
  EXPECT_EQ(kept[0], first[0]);  // the name it was added with
  EXPECT_EQ(kept[1].uid, "other");
  EXPECT_EQ(kept[2], first[1]);
}

}  // namespace
}  // namespace quillmont
