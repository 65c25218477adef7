// OwnCategories: the person's own categories of bookings, kept in the
// settings record: at most CustomAdjustmentCategory::maximumCount, titles
// unique ignoring letter case and named in any case. Renaming moves the
// bookings along; removing leaves the bookings their category. Every change
// saves the settings as one journaled action.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "core/ledger/CustomAdjustmentCategory.h"
#include "core/ledger/TimeBankSettings.h"

namespace quillmont {

class StoreSession;

namespace OwnCategories {

std::vector<CustomAdjustmentCategory> list(const TimeBankSettings& settings);

/// The category added (its title as kept: blanks trimmed).
CustomAdjustmentCategory add(StoreSession& session, const std::string& title);

struct Renamed {
  CustomAdjustmentCategory previous;
  CustomAdjustmentCategory renamed;
  std::size_t bookingsMoved = 0;
};
Renamed rename(StoreSession& session, const std::string& from, const std::string& to);

/// The category removed.
CustomAdjustmentCategory remove(StoreSession& session, const std::string& title);

}  // namespace OwnCategories
}  // namespace quillmont
