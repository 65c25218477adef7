#include "widget/TimeBankWidgetView.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <any>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "widget/AdjustTimeBankIntent.h"
#include "widget/QuillmontWidgets.h"

namespace quillmont {
namespace {

using Kind = View::Kind;
constexpr WidgetFamily small = WidgetFamily::systemSmall;
constexpr WidgetFamily medium = WidgetFamily::systemMedium;
const std::string minus = "\u2212";

TimeBankTimelineEntry entry(double balance, bool configured, double worked = 0, double expected = 0) {
  return {Date(0), WidgetSnapshot(balance, worked, expected, std::nullopt, std::array<std::int64_t, 4>{15, 30, 60, 120},
                                  Date(0), configured)};
}

View draw(WidgetFamily family, const TimeBankTimelineEntry& shown, bool hasGroup) {
  return TimeBankWidgetView{family, shown}.body(hasGroup).root;
}

// The texts (and button titles) of a tree, depth first.
std::vector<std::string> texts(const View& view) {
  std::vector<std::string> result;
  if (view.kind == Kind::text || view.kind == Kind::button) result.push_back(view.text);
  for (const View& child : view.children) {
    for (auto& text : texts(child)) result.push_back(std::move(text));
  }
  return result;
}

void expectHeader(const View& header) {
  ASSERT_EQ(header.children.size(), 3u);
  EXPECT_EQ(header.kind, Kind::row);
  EXPECT_EQ(header.children[0].systemImage, "leaf.fill");
  EXPECT_EQ(header.children[0].tint, Color::mint());
  EXPECT_TRUE(header.children[0].accessibility.hidden);
  EXPECT_EQ(header.children[1].text, "Quillmont");
  EXPECT_EQ(header.children[1].font, Font::of(Font::Style::caption).weighted(Font::Weight::semibold));
  EXPECT_EQ(header.children[2].kind, Kind::spacer);
}

void expectButtons(const View& buttons) {
  ASSERT_EQ(buttons.children.size(), 2u);
  EXPECT_EQ(buttons.kind, Kind::row);
  EXPECT_EQ(buttons.spacing, 8);
  for (const std::int64_t minutes : {-60, 60}) {
    const View& button = buttons.children[minutes < 0 ? 0 : 1];
    const std::string title = minutes < 0 ? "Subtract 60 minutes" : "Add 60 minutes";
    EXPECT_EQ(button.kind, Kind::button);
    EXPECT_EQ(button.systemImage, minutes < 0 ? "minus" : "plus");
    EXPECT_EQ(button.buttonStyle, minutes < 0 ? View::ButtonStyle::bordered : View::ButtonStyle::borderedProminent);
    EXPECT_EQ(button.tint, minutes < 0 ? Color::red() : Color::mint());
    EXPECT_EQ(button.labelStyle, View::LabelStyle::iconOnly);
    EXPECT_EQ(button.text, title);
    EXPECT_EQ(button.accessibility.label, title);
    const auto* intent = dynamic_cast<const AdjustTimeBankIntent*>(button.intent.get());
    ASSERT_NE(intent, nullptr);
    EXPECT_EQ(intent->minutes, minutes);
  }
}

TEST(TimeBankWidgetView, ABankNotSetUpAsksToOpenTheApplication) {
  for (const WidgetFamily family : {small, medium}) {
    for (const bool hasGroup : {true, false}) {
      SCOPED_TRACE(std::string(name(family)) + (hasGroup ? " with group" : " without group"));
      const View root = draw(family, entry(16200, false, 5400, 1800), hasGroup);
      EXPECT_EQ(root.kind, Kind::column);
      EXPECT_EQ(root.spacing, 8);
      ASSERT_EQ(root.children.size(), 2u);
      expectHeader(root.children[0]);
      const View& setUp = root.children[1];
      EXPECT_EQ(setUp.spacing, 5);
      EXPECT_TRUE(setUp.accessibility.combinesChildren);
      ASSERT_EQ(setUp.children.size(), 3u);
      EXPECT_EQ(setUp.children[0].kind, Kind::spacer);
      EXPECT_EQ(setUp.children[1].font, Font::of(Font::Style::headline));
      EXPECT_EQ(setUp.children[2].font, Font::of(Font::Style::caption));
      EXPECT_TRUE(setUp.children[2].isSecondary);
      const char* hint = family == small ? "Open Quillmont to begin." : "Open Quillmont to prepare your manual time bank.";
      EXPECT_EQ(texts(root), (std::vector<std::string>{"Quillmont", "Set up your time bank", hint}));
    }
  }
}

TEST(TimeBankWidgetView, TheBalanceInLargeSignedDigits) {
  const std::vector<std::pair<double, std::string>> balances{
      {16200, "+4:30"}, {-1800, minus + "0:30"}, {0, "+0:00"}, {-(25 * 3600.0 + 300), minus + "25:05"}};
  for (const WidgetFamily family : {small, medium}) {
    for (const auto& [seconds, shown] : balances) {
      SCOPED_TRACE(std::string(name(family)) + " " + shown);
      const View root = draw(family, entry(seconds, true), false);
      ASSERT_EQ(root.children.size(), 3u);  // without the group nothing follows the spacer
      expectHeader(root.children[0]);
      const View& balance = root.children[1];
      EXPECT_EQ(balance.text, shown);
      EXPECT_EQ(balance.font, Font::system(family == small ? 42 : 46, Font::Weight::semibold, Font::Design::rounded)
                                  .withMonospacedDigits());
      EXPECT_EQ(balance.padding, (EdgeInsets{family == small ? 20.0 : 14.0, 0, 0, 0}));
      EXPECT_EQ(balance.lineLimit, 1);
      EXPECT_EQ(balance.minimumScaleFactor, 0.58);
      EXPECT_EQ(balance.accessibility.label, "Time bank balance");
      EXPECT_EQ(root.children[2].kind, Kind::spacer);
      EXPECT_EQ(root.children[2].minLength, 8);
    }
  }
  EXPECT_EQ(draw(small, entry(-1800, true), true).children[1].accessibility.value, "minus 0 hours, 30 minutes");
}

TEST(TimeBankWidgetView, WithTheGroupButtonsAndInMediumTodaysChange) {
  const View smallRoot = draw(small, entry(16200, true, 3600, 5400), true);
  ASSERT_EQ(smallRoot.children.size(), 4u);
  EXPECT_EQ(smallRoot.children[3].spacing, 12);
  ASSERT_EQ(smallRoot.children[3].children.size(), 1u);
  expectButtons(smallRoot.children[3].children[0]);

  const View mediumRoot = draw(medium, entry(16200, true, 3600, 5400), true);
  ASSERT_EQ(mediumRoot.children.size(), 4u);
  const View& actions = mediumRoot.children[3];
  EXPECT_EQ(actions.spacing, 12);
  ASSERT_EQ(actions.children.size(), 3u);
  EXPECT_EQ(actions.children[0].text, minus + "0:30 today");
  EXPECT_EQ(actions.children[0].font, Font::of(Font::Style::caption2).withMonospacedDigits());
  EXPECT_TRUE(actions.children[0].isSecondary);
  EXPECT_EQ(actions.children[1].kind, Kind::spacer);
  EXPECT_EQ(actions.children[1].minLength, std::nullopt);
  expectButtons(actions.children[2]);
  EXPECT_EQ(TimeBankWidgetView::todayText(entry(0, true, 5400, 1800).snapshot), "+1:00 today");
}

TEST(TimeBankWidgetView, EveryVariantOpensTheOverviewOnAMintBackground) {
  for (const WidgetFamily family : {small, medium}) {
    for (const int variant : {0, 1, 2, 3}) {
      const WidgetContent content = TimeBankWidgetView{family, entry(60, variant < 2)}.body(variant % 2 == 0);
      ASSERT_TRUE(content.widgetURL);
      EXPECT_EQ(content.widgetURL->absoluteString, "quillmont://overview");
      EXPECT_EQ(content.widgetURL->host, "overview");
      EXPECT_EQ(content.containerBackground.colors, (std::vector<Color>{Color::mint(0.17), Color::clear()}));
      EXPECT_EQ(content.containerBackground.start, LinearGradient::Corner::topLeading);
      EXPECT_EQ(content.containerBackground.end, LinearGradient::Corner::bottomTrailing);
    }
  }
}

// The widget as a host finds it, with this process's entitlements.
class TimeBankWidgetTest : public ::testing::Test {
 protected:
  void SetUp() override {
    std::string pattern = (std::filesystem::temp_directory_path() / "quillmont-widget-XXXXXX").string();
    ASSERT_NE(mkdtemp(pattern.data()), nullptr);
    scratch = pattern;
    setenv("QUILLMONT_HOME", (scratch / "home").c_str(), 1);
    setenv("QUILLMONT_ENTITLEMENTS", (scratch / "entitlements.json").c_str(), 1);
    entitleGroup(true);
  }
  void TearDown() override {
    unsetenv("QUILLMONT_HOME");
    unsetenv("QUILLMONT_ENTITLEMENTS");
    std::filesystem::remove_all(scratch);
  }
  void entitleGroup(bool granted) const {
    std::ofstream(scratch / "entitlements.json")
        << (granted ? R"({"com.apple.developer.team-identifier":"QM1",
                         "com.apple.security.application-groups":["group.io.quillmont.ledger"]})"
                    : R"({"com.apple.developer.team-identifier":"QM1"})");
  }
  std::filesystem::path scratch;
};

TEST_F(TimeBankWidgetTest, ButtonsShowOnlyWhenTheEntitlementsGrantTheGroup) {
  const TimeBankWidgetView view{medium, entry(16200, true)};
  EXPECT_EQ(view.body().root.children.size(), 4u);
  entitleGroup(false);
  EXPECT_EQ(view.body().root.children.size(), 3u);
}

TEST_F(TimeBankWidgetTest, TheBundleOffersTheTimeBankInTwoSizes) {
  const auto widget = QuillmontWidgets().widget("TimeBankWidget");
  ASSERT_TRUE(widget);
  EXPECT_EQ(widget->displayName, "Time bank");
  EXPECT_EQ(widget->description, "See your current balance and quickly add or subtract time.");
  EXPECT_EQ(widget->supportedFamilies, (std::vector<WidgetFamily>{small, medium}));
  EXPECT_FALSE(QuillmontWidgets().widget("OtherWidget"));

  // Each entry is drawn in the family the host asks for.
  const RenderedEntry placeholder = widget->placeholder({medium, true});
  EXPECT_EQ(std::any_cast<TimeBankTimelineEntry>(placeholder.entry).snapshot, WidgetSnapshot::placeholder());
  EXPECT_EQ(texts(placeholder.content.root),
            (std::vector<std::string>{"Quillmont", "+4:30", "+1:00 today", "Subtract 60 minutes", "Add 60 minutes"}));
  const Timeline<RenderedEntry> timeline = widget->timeline({small, false});  // nothing stored yet
  ASSERT_EQ(timeline.entries.size(), 1u);
  EXPECT_EQ(texts(timeline.entries[0].content.root),
            (std::vector<std::string>{"Quillmont", "Set up your time bank", "Open Quillmont to begin."}));
  EXPECT_EQ(timeline.policy.kind(), TimelineReloadPolicy::Kind::after);
}

}  // namespace
}  // namespace quillmont
