#include "widget/TimeBankWidgetView.h"

#include <memory>

#include "core/ledger/DurationFormatting.h"
#include "core/persistence/AppRoute.h"
#include "core/persistence/RuntimeEntitlements.h"
#include "widget/AdjustTimeBankIntent.h"

namespace quillmont {
namespace {

constexpr std::int64_t quickAdjustmentMinutes = 60;

View header() {
  View leaf = View::image("leaf.fill", Color::mint());
  leaf.accessibility.hidden = true;
  return View::row(std::nullopt,
                   {leaf, View::label("Quillmont", Font::of(Font::Style::caption).weighted(Font::Weight::semibold)),
                    View::spacer()});
}

View setUpContent(WidgetFamily family) {
  View hint = View::label(family == WidgetFamily::systemSmall ? "Open Quillmont to begin."
                                                              : "Open Quillmont to prepare your manual time bank.",
                          Font::of(Font::Style::caption));
  hint.isSecondary = true;
  View column =
      View::column(5, {View::spacer(), View::label("Set up your time bank", Font::of(Font::Style::headline)), hint});
  column.accessibility.combinesChildren = true;
  return column;
}

View balance(const WidgetSnapshot& snapshot, WidgetFamily family) {
  const bool small = family == WidgetFamily::systemSmall;
  View text =
      View::label(DurationFormatting::clock(snapshot.balanceSeconds, true),
                  Font::system(small ? 42 : 46, Font::Weight::semibold, Font::Design::rounded).withMonospacedDigits());
  text.lineLimit = 1;
  text.minimumScaleFactor = 0.58;
  text.padding.top = small ? 20 : 14;
  text.accessibility.label = "Time bank balance";
  text.accessibility.value = DurationFormatting::accessible(snapshot.balanceSeconds);
  return text;
}

View adjustButton(std::int64_t minutes) {
  const bool adds = minutes > 0;
  const std::string title =
      std::string(adds ? "Add " : "Subtract ") + std::to_string(quickAdjustmentMinutes) + " minutes";
  View button = View::button(std::make_shared<AdjustTimeBankIntent>(minutes), title, adds ? "plus" : "minus",
                             adds ? View::ButtonStyle::borderedProminent : View::ButtonStyle::bordered,
                             adds ? Color::mint() : Color::red());
  button.labelStyle = View::LabelStyle::iconOnly;
  button.accessibility.label = title;
  return button;
}

View actionRow(const WidgetSnapshot& snapshot, WidgetFamily family) {
  std::vector<View> children;
  if (family == WidgetFamily::systemMedium) {
    View today =
        View::label(TimeBankWidgetView::todayText(snapshot), Font::of(Font::Style::caption2).withMonospacedDigits());
    today.isSecondary = true;
    children.push_back(std::move(today));
    children.push_back(View::spacer());
  }
  children.push_back(View::row(8, {adjustButton(-quickAdjustmentMinutes), adjustButton(quickAdjustmentMinutes)}));
  return View::row(12, std::move(children));
}

}  // namespace

std::string TimeBankWidgetView::todayText(const WidgetSnapshot& snapshot) {
  return DurationFormatting::clock(snapshot.todayWorkedSeconds - snapshot.todayExpectedSeconds, true) + " today";
}

WidgetContent TimeBankWidgetView::body() const { return body(RuntimeEntitlements::hasUsableAppGroup()); }

WidgetContent TimeBankWidgetView::body(bool hasUsableAppGroup) const {
  std::vector<View> children{header()};
  const WidgetSnapshot& snapshot = entry.snapshot;
  if (!snapshot.isConfigured) {
    children.push_back(setUpContent(family));
  } else {
    children.push_back(balance(snapshot, family));
    children.push_back(View::spacer(8));
    if (hasUsableAppGroup) children.push_back(actionRow(snapshot, family));
  }
  WidgetContent content;
  content.root = View::column(8, std::move(children));
  content.containerBackground = LinearGradient{{Color::mint(0.17), Color::clear()}};
  content.widgetURL = URL::parse(AppRoute(AppRoute::overview).url());
  return content;
}

}  // namespace quillmont
