// AdjustmentCategoryValidation: brings a stored category text into its
// canonical form and minutes into the range of the category's behaviour.
// Unknown or damaged texts count as the manual category; signs are never
// flipped (a value of the wrong sign becomes 0).
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "core/ledger/AdjustmentCategoryBehavior.h"

namespace quillmont::AdjustmentCategoryValidation {

inline constexpr std::int64_t maximumManualMinutes = 60000;
inline constexpr std::int64_t maximumCreditOrDebitMinutes = 1440;

/// A built-in raw value unchanged, a valid custom raw value in canonical
/// form, anything else "manual".
std::string normalizedRawValue(std::string_view rawValue);

/// The behaviour a category text stands for (unknown texts: manual).
AdjustmentCategoryBehavior behavior(std::string_view rawValue);

/// `minutes` clamped to the range of the behaviour.
std::int64_t normalizedMinutes(std::int64_t minutes, AdjustmentCategoryBehavior behavior);
/// `minutes` clamped to the range of the category named by `rawValue`.
std::int64_t normalizedMinutes(std::int64_t minutes, std::string_view rawValue);

}  // namespace quillmont::AdjustmentCategoryValidation
