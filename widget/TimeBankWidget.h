// TimeBankWidget: the time-bank widget as its host sees it: kind
// "TimeBankWidget", display name, description, the small and medium sizes,
// its provider, and its view for each entry.
#pragma once

#include <string>

#include "platform/widgets/WidgetConfiguration.h"

namespace quillmont {

struct TimeBankWidget {
  std::string kind = "TimeBankWidget";

  static constexpr const char* displayName = "Time bank";
  static constexpr const char* description = "See your current balance and quickly add or subtract time.";

  WidgetConfiguration body() const;
};

}  // namespace quillmont
