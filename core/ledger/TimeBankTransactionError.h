// TimeBankTransactionError: why a quick booking was refused, with the
// message shown to the user.
#pragma once

#include <stdexcept>

namespace quillmont {

class TimeBankTransactionError : public std::runtime_error {
 public:
  enum class Case { zeroDuration, durationTooLarge };

  explicit TimeBankTransactionError(Case value);
  Case errorCase() const { return case_; }
  /// "Choose an amount of time first." or "A single transaction can't exceed 24 hours."
  static const char* description(Case value);

  friend bool operator==(const TimeBankTransactionError& a, const TimeBankTransactionError& b) {
    return a.case_ == b.case_;
  }

 private:
  Case case_;
};

}  // namespace quillmont
