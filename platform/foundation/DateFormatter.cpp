#include "platform/foundation/DateFormatter.h"

#include <unicode/calendar.h>
#include <unicode/smpdtfmt.h>

namespace quillmont {

DateFormatter::DateFormatter(const Calendar& calendar, std::string_view pattern) {
  UErrorCode status = U_ZERO_ERROR;
  format_ = std::make_unique<icu::SimpleDateFormat>(
      icu::UnicodeString::fromUTF8(icu::StringPiece(pattern.data(), static_cast<int32_t>(pattern.size()))),
      icu::Locale("en_US_POSIX"), status);
  format_->adoptCalendar(calendar.icuCalendar().clone());
  format_->setTimeZone(calendar.icuCalendar().getTimeZone());
}

DateFormatter::~DateFormatter() = default;

std::string DateFormatter::string(Date date) const {
  icu::UnicodeString text;
  format_->format(date.timeIntervalSince1970() * 1000.0, text);
  std::string result;
  text.toUTF8String(result);
  return result;
}

}  // namespace quillmont
