// LegacyBalanceEntry: one balance entry of the earlier prototype's file,
// a signed number of minutes on a date with a note. Read and written by
// LegacyPrototypeImport; turning entries into records is the application's
// business.
#pragma once

#include <cstdint>
#include <string>

#include "platform/foundation/Date.h"
#include "platform/foundation/UUID.h"

namespace quillmont {

struct LegacyBalanceEntry {
  UUID id;
  std::int64_t minutes = 0;
  Date date;
  std::string note;

  friend bool operator==(const LegacyBalanceEntry&, const LegacyBalanceEntry&) = default;
};

}  // namespace quillmont
