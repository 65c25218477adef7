#include "app/input/DurationInput.h"

#include <gtest/gtest.h>

namespace quillmont {
namespace {

TEST(DurationInput, ReadsEveryTypedForm) {
  EXPECT_EQ(DurationInput::minutes("90"), 90);
  EXPECT_EQ(DurationInput::minutes("-45"), -45);
  EXPECT_EQ(DurationInput::minutes("+45"), 45);
  EXPECT_EQ(DurationInput::minutes("1:30"), 90);
  EXPECT_EQ(DurationInput::minutes("-0:45"), -45);
  EXPECT_EQ(DurationInput::minutes("24:00"), 1440);
  EXPECT_EQ(DurationInput::minutes("1h30m"), 90);
  EXPECT_EQ(DurationInput::minutes("1H30M"), 90);
  EXPECT_EQ(DurationInput::minutes("1h 30m"), 90);
  EXPECT_EQ(DurationInput::minutes("-2h"), -120);
  EXPECT_EQ(DurationInput::minutes("45m"), 45);
  EXPECT_EQ(DurationInput::minutes("90m"), 90);
  EXPECT_EQ(DurationInput::minutes(" 0 "), 0);
  EXPECT_EQ(DurationInput::minutes("-0"), 0);
}

TEST(DurationInput, RefusesWhatIsNotADuration) {
  for (const char* text : {"", " ", "-", "+", "abc", "1.5", "1,5", "1:5", "1:60", "1:300", ":30", "1:", "--5", "-+5",
                           "h", "30mh", "1h1h", "30m1h", "1h30", "1d", "1 h", "1h  30m", "0x10", "1e3", "- 5"}) {
    EXPECT_EQ(DurationInput::minutes(text), std::nullopt) << '"' << text << '"';
  }
}

TEST(DurationInput, RefusesAmountsBeyondSixtyFourBitMinutes) {
  EXPECT_EQ(DurationInput::minutes("153722867280912930"), 153722867280912930);  // INT64_MAX / 60
  EXPECT_EQ(DurationInput::minutes("2562047788015215h30m"), 153722867280912930);
  EXPECT_EQ(DurationInput::minutes("153722867280912931"), std::nullopt);
  EXPECT_EQ(DurationInput::minutes("99999999999999999999999"), std::nullopt);
  EXPECT_EQ(DurationInput::minutes("2562047788015216h"), std::nullopt);
  EXPECT_EQ(DurationInput::minutes("2562047788015216:00"), std::nullopt);
}

TEST(DurationInput, ReadsLists) {
  EXPECT_EQ(DurationInput::minutesList("8h,8h,7:30,480,4h30m,0,0"),
            (std::vector<std::int64_t>{480, 480, 450, 480, 270, 0, 0}));
  EXPECT_EQ(DurationInput::minutesList(" 15, 30 ,1h"), (std::vector<std::int64_t>{15, 30, 60}));
  EXPECT_EQ(DurationInput::minutesList(""), std::vector<std::int64_t>{});
  EXPECT_EQ(DurationInput::minutesList("8h,,8h"), std::nullopt);
  EXPECT_EQ(DurationInput::minutesList("8h,"), std::nullopt);
  EXPECT_EQ(DurationInput::minutesList("8h;8h"), std::nullopt);
}

}  // namespace
}  // namespace quillmont
