#include "cli/RecordLookup.h"

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
  EXPECT_THROW(RecordLookup::find(records, "C0DE", "booking"), CommandFailure);   // two identifiers
  EXPECT_THROW(RecordLookup::find(records, "FF", "booking"), CommandFailure);     // none
  EXPECT_THROW(RecordLookup::find(records, "", "booking"), UsageError);
  EXPECT_THROW(RecordLookup::find(records, "xyz", "booking"), UsageError);
  EXPECT_THROW(RecordLookup::find(records, "C0DE5EED-0B4A-4C2A-9D6E-0000000000011", "booking"), UsageError);
}

TEST(RecordLookup, ReturnsEveryCopyOfOneIdentifier) {
  const auto copy = record("C0DE5EED-0B4A-4C2A-9D6E-000000000001");
  const auto again = record("C0DE5EED-0B4A-4C2A-9D6E-000000000001");
  EXPECT_EQ(RecordLookup::find(std::vector{copy, again}, "c0de", "entry"), (std::vector{copy, again}));
}

}  // namespace
}  // namespace quillmont
