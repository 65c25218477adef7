#include "app/input/TypedValue.h"

#include <gtest/gtest.h>

#include "app/InvalidInput.h"

namespace quillmont {
namespace {

template <class Read>
std::string refusal(Read read) {
  try {
    read();
  } catch (const InvalidInput& error) {
    return error.field() + ": " + error.reason();
  }
  return "(read)";
}

TEST(TypedValue, ARefusalNamesTheFieldAndWhatIsAccepted) {
  const DateInput::Day today{2026, 3, 15};
  EXPECT_EQ(TypedValue::minutes(" -1h30m ", "amount"), -90);
  EXPECT_EQ(TypedValue::day("yesterday", today, "day"), (DateInput::Day{2026, 3, 14}));
  EXPECT_EQ(refusal([] { TypedValue::minutes("1.5h", "break"); }),
            "break: '1.5h' is not a duration (try 90, -45, 1:30, -0:45, 1h30m, -2h or 45m)");
  EXPECT_EQ(refusal([&] { TypedValue::day("2026-02-30", today, "day"); }),
            "day: '2026-02-30' is not a day (try YYYY-MM-DD, today or yesterday)");
  EXPECT_EQ(refusal([&] { TypedValue::dateTime("24:00", today, *Calendar::iso8601("UTC"), "start"); }),
            "start: '24:00' is not a time (try \"YYYY-MM-DD HH:MM\" or HH:MM for today)");
  EXPECT_EQ(refusal([] { TypedValue::text("caf\xc3", "note"); }), "note: the text is not valid UTF-8");
  EXPECT_EQ(refusal([] { TypedValue::text("café", "note"); }), "(read)");
}

}  // namespace
}  // namespace quillmont
