// AdjustmentKindConfiguration: which of the configurable built-in kinds the
// application offers, stored as their raw values joined by "," in a fixed
// order ("" offers none). Decoding never fails.
#pragma once

#include <array>
#include <set>
#include <string>
#include <string_view>

#include "core/ledger/BalanceAdjustmentKind.h"

namespace quillmont::AdjustmentKindConfiguration {

using KindSet = std::set<BalanceAdjustmentKind>;

inline constexpr std::array<BalanceAdjustmentKind, 4> configurableKinds{
    BalanceAdjustmentKind::appointment, BalanceAdjustmentKind::personalErrands, BalanceAdjustmentKind::longLunch,
    BalanceAdjustmentKind::other};
inline constexpr std::string_view defaultRawValue = "appointment,personalErrands,longLunch,other";

/// The configurable kinds of `kinds`, in configurable order, joined by ",".
std::string rawValue(const KindSet& kinds);

/// The configurable kinds a text names. Pieces must match raw values exactly
/// (no trimming); naming any credit kind yields all four configurable kinds.
KindSet kinds(std::string_view rawValue);

}  // namespace quillmont::AdjustmentKindConfiguration
