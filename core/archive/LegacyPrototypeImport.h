// LegacyPrototypeImport: reads the earlier prototype's file, a JSON array of
// objects {"id", "minutes", "date", "note"} with dates in seconds since
// 2001-01-01 00:00:00 UTC (not 1970, unlike the archive). Entries come back
// in file order and as written: no duplicate, range or note checks.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "core/archive/LegacyBalanceEntry.h"

namespace quillmont::LegacyPrototypeImport {

/// Every entry of the file; throws JsonDecodingError for anything but an
/// array of such objects (all four keys required, other keys ignored,
/// integral minutes, identifiers in either letter case).
std::vector<LegacyBalanceEntry> decode(std::string_view json);

/// The file the prototype wrote for `entries`: compact, keys in the order
/// id, minutes, date, note, identifiers upper-case, "/" escaped.
std::string encode(std::span<const LegacyBalanceEntry> entries);

}  // namespace quillmont::LegacyPrototypeImport
