#include "app/records/RecordLookup.h"

#include <gtest/gtest.h>

namespace quillmont {
namespace {

struct Record {
  UUID identifier;
  const UUID& id() const { return identifier; }
};

std::shared_ptr<Record> record(std::string_view text) { return std::make_shared<Record>(Record{*UUID::parse(text)}); }

TEST(RecordLookup, FindsByAnyUniquePrefixInEitherCaseWithOrWithoutHyphens) {
  const auto first = record("C0DE5EED-0B4A-4C2A-9D6E-000000000001");
  const auto second = record("C0DE5EED-0B4A-4C2A-9D6E-000000000002");
  const auto other = record("0A000000-0000-4000-8000-000000000000");
  const std::vector records{first, second, other};

  EXPECT_EQ(RecordLookup::find(records, "0a", "booking"), std::vector{other});
  EXPECT_EQ(RecordLookup::find(records, "c0de5eed-0b4a-4c2a-9d6e-000000000002", "booking"), std::vector{second});
  EXPECT_EQ(RecordLookup::find(records, "C0DE5EED0B4A4C2A9D6E000000000001", "booking"), std::vector{first});
  EXPECT_THROW(RecordLookup::find(records, "C0DE", "booking"), Refusal);   // two identifiers
  EXPECT_THROW(RecordLookup::find(records, "FF", "booking"), Refusal);     // none
  EXPECT_THROW(RecordLookup::find(records, "", "booking"), InvalidInput);
  EXPECT_THROW(RecordLookup::find(records, "xyz", "booking"), InvalidInput);
  EXPECT_THROW(RecordLookup::find(records, "C0DE5EED-0B4A-4C2A-9D6E-0000000000011", "booking"), InvalidInput);
}

TEST(RecordLookup, ReturnsEveryCopyOfOneIdentifier) {
  const auto copy = record("C0DE5EED-0B4A-4C2A-9D6E-000000000001");
  const auto again = record("C0DE5EED-0B4A-4C2A-9D6E-000000000001");
  EXPECT_EQ(RecordLookup::find(std::vector{copy, again}, "c0de", "entry"), (std::vector{copy, again}));
}

struct Made {
  UUID identifier;
  int created;
  int start;
  const UUID& id() const { return identifier; }
};

TEST(RecordLookup, NamesTheNewestByPlace) {
  const auto made = [](std::string_view text, int created, int start) {
    return std::make_shared<Made>(Made{*UUID::parse(text), created, start});
  };
  const auto newer = [](const Made& a, const Made& b) {
    return a.created != b.created ? a.created > b.created : a.start > b.start;
  };
  const auto old = made("A0000000-0000-4000-8000-000000000000", 1, 5);
  const auto copy = made("B0000000-0000-4000-8000-000000000000", 2, 1);
  const auto later = made("C0000000-0000-4000-8000-000000000000", 3, 1);
  const auto sameTimeLaterStart = made("D0000000-0000-4000-8000-000000000000", 3, 2);
  const auto copyAgain = made("B0000000-0000-4000-8000-000000000000", 2, 1);
  const std::vector records{old, copy, later, sameTimeLaterStart, copyAgain};

  EXPECT_EQ(RecordLookup::find(records, "@1", "entry", newer), std::vector{sameTimeLaterStart});
  EXPECT_EQ(RecordLookup::find(records, "last", "entry", newer), std::vector{sameTimeLaterStart});
  EXPECT_EQ(RecordLookup::find(records, "@2", "entry", newer), std::vector{later});
  EXPECT_EQ(RecordLookup::find(records, "@3", "entry", newer), (std::vector{copy, copyAgain}));  // one place
  EXPECT_EQ(RecordLookup::find(records, "@4", "entry", newer), std::vector{old});
  EXPECT_EQ(RecordLookup::find(records, "a0", "entry", newer), std::vector{old});  // identifiers as ever
  EXPECT_THROW(RecordLookup::find(records, "@5", "entry", newer), Refusal);
  EXPECT_THROW(RecordLookup::find(decltype(records){}, "@1", "entry", newer), Refusal);
  for (const char* wrong : {"@", "@0", "@-1", "@x", "@1x", "@9999999"}) {
    EXPECT_THROW(RecordLookup::find(records, wrong, "entry", newer), InvalidInput) << wrong;
  }
}

}  // namespace
}  // namespace quillmont
