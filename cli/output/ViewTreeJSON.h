// ViewTreeJSON: a widget's view tree as JSON, for scripts and for checking
// what a widget shows without drawing it: every node with its kind, texts,
// fonts, sizes, colours, spacing, padding, accessibility and, for buttons,
// the intent they run.
#pragma once

#include "platform/foundation/JsonWriter.h"
#include "platform/widgets/View.h"

namespace quillmont::ViewTreeJSON {

void write(JsonWriter& writer, const View& view);
void write(JsonWriter& writer, const WidgetContent& content);

}  // namespace quillmont::ViewTreeJSON
