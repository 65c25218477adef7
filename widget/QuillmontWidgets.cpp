#include "widget/QuillmontWidgets.h"

#include "widget/TimeBankWidget.h"

namespace quillmont {

std::vector<WidgetConfiguration> QuillmontWidgets::body() const { return {TimeBankWidget().body()}; }

}  // namespace quillmont
