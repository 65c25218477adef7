#include "core/ledger/TimeBankTransactionController.h"

#include "core/ledger/AdjustmentCategoryValidation.h"
#include "core/ledger/NoteValidation.h"
#include "core/ledger/TimeBankTransactionError.h"

namespace quillmont::TimeBankTransactionController {

Date submissionDate(Date selectedDate, Date now, const Calendar& calendar) {
  return calendar.isDate(selectedDate, now) ? now : selectedDate;
}

void checkAmount(std::int64_t minutes) {
  if (minutes == 0) throw TimeBankTransactionError(TimeBankTransactionError::Case::zeroDuration);
  if (minutes < -maximumAbsoluteMinutes || minutes > maximumAbsoluteMinutes) {
    throw TimeBankTransactionError(TimeBankTransactionError::Case::durationTooLarge);
  }
}

std::shared_ptr<BalanceAdjustment> record(std::int64_t minutes, Date date, std::string_view note,
                                          std::string_view kindRawValue, ModelContext& context) {
  checkAmount(minutes);
  const std::string normalizedNote = NoteValidation::normalized(note);
  const Date createdAt = Date::now();
  const Date modifiedAt = Date::now();
  auto adjustment = std::make_shared<BalanceAdjustment>(UUID::random(), date, minutes, normalizedNote,
                                                        BalanceAdjustmentKind::manual, createdAt, modifiedAt);
  adjustment->setKindRawValue(AdjustmentCategoryValidation::normalizedRawValue(kindRawValue));
  context.insert(adjustment);
  context.save();
  return adjustment;
}

}  // namespace quillmont::TimeBankTransactionController
