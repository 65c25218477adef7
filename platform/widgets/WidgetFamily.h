// WidgetFamily: the sizes a widget can be shown in, and their names as
// people type them ("small", "medium").
#pragma once

#include <optional>
#include <string_view>

namespace quillmont {

enum class WidgetFamily { systemSmall, systemMedium };

constexpr std::string_view name(WidgetFamily family) {
  return family == WidgetFamily::systemSmall ? "small" : "medium";
}

constexpr std::optional<WidgetFamily> widgetFamilyNamed(std::string_view text) {
  if (text == "small") return WidgetFamily::systemSmall;
  if (text == "medium") return WidgetFamily::systemMedium;
  return std::nullopt;
}

}  // namespace quillmont
