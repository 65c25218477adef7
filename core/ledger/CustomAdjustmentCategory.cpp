#include "core/ledger/CustomAdjustmentCategory.h"

#include "platform/foundation/Base64.h"
#include "platform/foundation/Text.h"

namespace quillmont {

CustomAdjustmentCategory::CustomAdjustmentCategory(std::string title)
    : title_(std::move(title)), rawValue_(std::string(rawValuePrefix) + Base64::encode(title_)) {}

std::string CustomAdjustmentCategory::normalizedTitle(std::string_view title) {
  std::string joined;
  for (const std::string_view piece : Text::splitOnWhitespace(title)) {
    if (!joined.empty()) joined += ' ';
    joined += piece;
  }
  return std::string(Text::prefix(joined, maximumTitleLength));
}

std::optional<CustomAdjustmentCategory> CustomAdjustmentCategory::fromTitle(std::string_view title) {
  std::string normalized = normalizedTitle(title);
  if (normalized.empty()) return std::nullopt;
  return CustomAdjustmentCategory(std::move(normalized));
}

std::optional<CustomAdjustmentCategory> CustomAdjustmentCategory::fromRawValue(std::string_view rawValue) {
  if (!rawValue.starts_with(rawValuePrefix)) return std::nullopt;
  const auto bytes = Base64::decode(rawValue.substr(rawValuePrefix.size()));
  if (!bytes || !Text::isValidUTF8(*bytes)) return std::nullopt;
  return fromTitle(*bytes);
}

}  // namespace quillmont
