// DateFormatter: renders instants with an ICU pattern ("yyyy-MM-dd") in a
// given calendar system and that calendar's time zone, with the fixed
// "en_US_POSIX" locale, so the output never depends on the user's locale.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "platform/foundation/Calendar.h"
#include "platform/foundation/Date.h"

#include <unicode/uversion.h>

U_NAMESPACE_BEGIN
class SimpleDateFormat;
U_NAMESPACE_END

namespace quillmont {

class DateFormatter {
 public:
  DateFormatter(const Calendar& calendar, std::string_view pattern);
  ~DateFormatter();
  DateFormatter(const DateFormatter&) = delete;
  DateFormatter& operator=(const DateFormatter&) = delete;

  std::string string(Date date) const;

 private:
  std::unique_ptr<icu::SimpleDateFormat> format_;
};

}  // namespace quillmont
