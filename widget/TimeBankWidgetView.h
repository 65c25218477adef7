// TimeBankWidgetView: the time-bank widget drawn as a view tree for one
// entry in the small or medium size: the header, then either the set-up
// message (a bank not set up) or the balance in large digits and, when the
// process may use the application group, the −60 / +60 buttons (and in the
// medium size today's net change beside them). A tap outside the buttons
// opens quillmont://overview.
#pragma once

#include "platform/widgets/View.h"
#include "platform/widgets/WidgetFamily.h"
#include "widget/TimeBankTimelineEntry.h"

namespace quillmont {

struct TimeBankWidgetView {
  WidgetFamily family;
  TimeBankTimelineEntry entry;

  /// The tree, asking the entitlements whether the buttons may show.
  WidgetContent body() const;
  /// The tree with the answer given.
  WidgetContent body(bool hasUsableAppGroup) const;

  /// "+1:15 today": today's credits minus today's debits.
  static std::string todayText(const WidgetSnapshot& snapshot);
};

}  // namespace quillmont
