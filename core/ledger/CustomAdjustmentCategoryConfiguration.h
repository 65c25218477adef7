// CustomAdjustmentCategoryConfiguration: the user's own categories, stored
// as a compact JSON array of their titles (solidus escaped, as the settings
// text has always been written). At most 20 categories, titles unique when
// lower-cased; the first of equal titles wins. Decoding never fails.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "core/ledger/CustomAdjustmentCategory.h"

namespace quillmont::CustomAdjustmentCategoryConfiguration {

inline constexpr std::string_view defaultRawValue = "[]";

std::string rawValue(const std::vector<CustomAdjustmentCategory>& categories);
/// The categories of a stored text; empty for anything but a JSON array of strings.
std::vector<CustomAdjustmentCategory> categories(std::string_view rawValue);

}  // namespace quillmont::CustomAdjustmentCategoryConfiguration
