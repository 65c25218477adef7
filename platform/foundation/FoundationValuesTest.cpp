#include <gtest/gtest.h>

#include <set>

#include "platform/foundation/Date.h"
#include "platform/foundation/DateInterval.h"
#include "platform/foundation/UUID.h"

namespace quillmont {
namespace {

TEST(Date, EpochConversionAndTestClock) {
  EXPECT_EQ(Date::fromTimeIntervalSince1970(978307200).timeIntervalSinceReferenceDate, 0);
  EXPECT_EQ(Date(1.5).timeIntervalSince1970(), 978307201.5);
  {
    Date::ScopedClock fixed(Date(42));
    EXPECT_EQ(Date::now(), Date(42));
    {
      Date::ScopedClock inner(Date(7));
      EXPECT_EQ(Date::now(), Date(7));
    }
    EXPECT_EQ(Date::now(), Date(42));
  }
  EXPECT_GT(Date::now(), Date::fromTimeIntervalSince1970(1.7e9));
}

TEST(UUID, ParsesEitherCaseAndPrintsUpperCase) {
  const auto lower = UUID::parse("c0de5eed-0b4a-4c2a-9d6e-000000000001");
  ASSERT_TRUE(lower);
  EXPECT_EQ(lower->uuidString(), "C0DE5EED-0B4A-4C2A-9D6E-000000000001");
  EXPECT_EQ(lower, UUID::parse("C0DE5EED-0B4A-4C2A-9D6E-000000000001"));
  for (const char* bad : {"", "C0DE5EED0B4A4C2A9D6E000000000001", "{C0DE5EED-0B4A-4C2A-9D6E-000000000001}",
                          "C0DE5EED-0B4A-4C2A-9D6E-00000000000G", " C0DE5EED-0B4A-4C2A-9D6E-00000000001",
                          "C0DE5EED-0B4A-4C2A-9D6E-0000000000011", "C0DE5EED_0B4A-4C2A-9D6E-000000000001"}) {
    EXPECT_FALSE(UUID::parse(bad)) << bad;
  }
}

TEST(UUID, ByteOrderIsTextOrder) {
  std::set<std::string> texts;
  std::set<UUID> ids;
  for (int i = 0; i < 200; ++i) {
    const UUID id = UUID::random();
    texts.insert(id.uuidString());
    ids.insert(id);
  }
  ASSERT_EQ(texts.size(), 200u);
  auto text = texts.begin();
  for (const UUID& id : ids) EXPECT_EQ(id.uuidString(), *text++);
  EXPECT_LT(*UUID::parse("0FFFFFFF-0000-0000-0000-000000000000"), *UUID::parse("A0000000-0000-0000-0000-000000000000"));
}

TEST(DateInterval, ClosedIntersection) {
  const DateInterval morning(Date(0), 100);
  EXPECT_EQ(morning.intersection(DateInterval(Date(50), 100)), DateInterval(Date(50), 50));
  EXPECT_EQ(morning.intersection(DateInterval(Date(100), 10)), DateInterval(Date(100), 0));  // touching
  EXPECT_FALSE(morning.intersection(DateInterval(Date(100.5), 10)));
  EXPECT_EQ(morning.intersection(DateInterval(Date(-10), 500)), morning);
  EXPECT_EQ(DateInterval::between(Date(5), Date(1)).duration, 0);
}

}  // namespace
}  // namespace quillmont
