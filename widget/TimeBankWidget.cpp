#include "widget/TimeBankWidget.h"

#include <memory>

#include "widget/TimeBankProvider.h"
#include "widget/TimeBankWidgetView.h"

namespace quillmont {

WidgetConfiguration TimeBankWidget::body() const {
  return WidgetConfiguration::makeStatic(
      kind, std::make_shared<const TimeBankProvider>(),
      [](const TimeBankTimelineEntry& entry, WidgetFamily family) { return TimeBankWidgetView{family, entry}.body(); },
      displayName, description, {WidgetFamily::systemSmall, WidgetFamily::systemMedium});
}

}  // namespace quillmont
