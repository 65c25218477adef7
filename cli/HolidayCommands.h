// HolidayCommands: `import-holidays FILE.ics` books the public holidays of an
// iCalendar file that fall on working days as "holiday" credits of the day's
// planned time (see HolidayBookings); `--dry-run` lists what it would do.
#pragma once

#include "cli/CommandSet.h"

namespace quillmont::HolidayCommands {

void install(CommandSet& commands);

}  // namespace quillmont::HolidayCommands
