// AdjustmentCategoryBehavior: how a category of balance adjustments moves
// the bank, which fixes the sign and range of its minutes.
#pragma once

#include <cstdint>

namespace quillmont {

enum class AdjustmentCategoryBehavior : std::uint8_t {
  manual,  ///< free correction, -60000 ... 60000 minutes
  credit,  ///< adds time, 0 ... 1440 minutes
  debit,   ///< takes time, -1440 ... 0 minutes
};

}  // namespace quillmont
