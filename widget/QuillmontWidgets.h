// QuillmontWidgets: the widget extension's bundle; its only widget is the
// time bank. Hosts start here.
#pragma once

#include "platform/widgets/WidgetConfiguration.h"

namespace quillmont {

class QuillmontWidgets final : public WidgetBundle {
 public:
  std::vector<WidgetConfiguration> body() const override;
};

}  // namespace quillmont
