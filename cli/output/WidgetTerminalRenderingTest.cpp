// The terminal drawing of the widget: every line fits the frame, large
// digits give way to plain text rather than overflow, and colour never
// changes the layout.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cli/output/WidgetTerminalRendering.h"
#include "widget/TimeBankWidgetView.h"

namespace quillmont {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;
using WidgetTerminalRendering::columns;

WidgetContent widget(double balanceSeconds, WidgetFamily family, bool configured = true) {
  const std::array<std::int64_t, 4> quick{15, 30, 60, 120};
  const WidgetSnapshot snapshot(balanceSeconds, 3600, 5400, std::nullopt, quick, Date(0), configured);
  return TimeBankWidgetView{family, {Date(0), snapshot}}.body(true);
}

std::string joined(const std::vector<std::string>& lines) {
  std::string text;
  for (const auto& line : lines) text += line + "\n";
  return text;
}

TEST(WidgetTerminalRendering, EveryLineFillsTheFrameInBothSizesWithAndWithoutColour) {
  for (const WidgetFamily family : {WidgetFamily::systemSmall, WidgetFamily::systemMedium}) {
    const int width = WidgetTerminalRendering::contentSize(family).columns + 4;
    for (const bool colour : {false, true}) {
      for (const auto& content : {widget(16200, family), widget(-4500, family), widget(0, family, false)}) {
        const auto lines = WidgetTerminalRendering::render(content, family, colour);
        ASSERT_EQ(lines.size(), 9u);
        for (const auto& line : lines) EXPECT_EQ(columns(line), width) << joined(lines);
      }
    }
  }
}

TEST(WidgetTerminalRendering, ShowsTheBalanceInLargeDigitsWhenItFitsAndAsTextWhenItDoesNot) {
  const auto fits = joined(
      WidgetTerminalRendering::render(widget(16200, WidgetFamily::systemSmall), WidgetFamily::systemSmall, false));
  EXPECT_THAT(fits, HasSubstr("╺╋╸ ┗━┫╏╺━┫ ┃ ┃"));  // the middle row of +4:30
  EXPECT_THAT(fits, Not(HasSubstr("+4:30")));
  // 1234:56 is too wide for the small widget's digits: it shrinks to text.
  const auto wide = joined(WidgetTerminalRendering::render(
      widget(-(1234 * 3600.0 + 56 * 60), WidgetFamily::systemSmall), WidgetFamily::systemSmall, false));
  EXPECT_THAT(wide, HasSubstr("\u22121234:56"));
}

TEST(WidgetTerminalRendering, TheMediumSizeShowsTodayBesideTheButtonsAndTheSmallOneDoesNot) {
  const auto medium =
      joined(WidgetTerminalRendering::render(widget(0, WidgetFamily::systemMedium), WidgetFamily::systemMedium, false));
  EXPECT_THAT(medium, HasSubstr("\u22120:30 today"));
  EXPECT_THAT(medium, HasSubstr("[ \u2212 ] [ + ] │"));  // pushed to the trailing edge
  const auto small =
      joined(WidgetTerminalRendering::render(widget(0, WidgetFamily::systemSmall), WidgetFamily::systemSmall, false));
  EXPECT_THAT(small, Not(HasSubstr("today")));
  EXPECT_THAT(small, HasSubstr("│ [ \u2212 ] [ + ]"));
}

TEST(WidgetTerminalRendering, TheSetUpMessageSitsAtTheBottomAndWrapsWithinTheFrame) {
  const auto lines =
      WidgetTerminalRendering::render(widget(0, WidgetFamily::systemMedium, false), WidgetFamily::systemMedium, false);
  EXPECT_THAT(lines[7], HasSubstr("Open Quillmont to prepare your manual time bank."));
  EXPECT_THAT(lines[6], HasSubstr("Set up your time bank"));
}

}  // namespace
}  // namespace quillmont
