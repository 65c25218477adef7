// TimeBankTransactionController: books a signed number of minutes into the
// bank as a balance adjustment and saves. Zero and amounts beyond 24 hours
// either way are refused before anything is made.
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

#include "core/ledger/BalanceAdjustment.h"
#include "platform/foundation/Calendar.h"
#include "platform/foundation/Date.h"
#include "platform/store/ModelContext.h"

namespace quillmont::TimeBankTransactionController {

inline constexpr std::int64_t maximumAbsoluteMinutes = 1440;

/// `now` when the calendar puts `selectedDate` on the day of `now`, else `selectedDate`.
Date submissionDate(Date selectedDate, Date now, const Calendar& calendar);

/// Refuses an amount no booking may hold (TimeBankTransactionError): zero,
/// or more than 24 hours either way.
void checkAmount(std::int64_t minutes);

/// Checks the amount (checkAmount), inserts a new adjustment in
/// the normalised category with the normalised note, saves the context (its
/// StoreError passes through; the adjustment then stays inserted, unsaved)
/// and returns the adjustment.
std::shared_ptr<BalanceAdjustment> record(std::int64_t minutes, Date date, std::string_view note,
                                          std::string_view kindRawValue, ModelContext& context);

}  // namespace quillmont::TimeBankTransactionController
