// HolidayCommands: `import-holidays FILE.ics` adds the public holidays of an
// iCalendar file to the store's list, on which nothing is planned (see
// HolidayBookings); `--dry-run` lists what it would change.
#pragma once

#include "cli/tree/CommandSet.h"

namespace quillmont::HolidayCommands {

void install(CommandSet& commands);

}  // namespace quillmont::HolidayCommands
