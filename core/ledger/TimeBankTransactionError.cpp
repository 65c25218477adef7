#include "core/ledger/TimeBankTransactionError.h"

namespace quillmont {

TimeBankTransactionError::TimeBankTransactionError(Case value) : std::runtime_error(description(value)), case_(value) {}

const char* TimeBankTransactionError::description(Case value) {
  switch (value) {
    case Case::zeroDuration:
      return "Choose an amount of time first.";
    case Case::durationTooLarge:
      break;
  }
  return "A single transaction can't exceed 24 hours.";
}

}  // namespace quillmont
