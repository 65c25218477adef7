#include "app/settings/ScheduleEdits.h"

#include "app/records/RecordLookup.h"
#include "app/session/StoreSession.h"
#include "app/text/Display.h"

namespace quillmont::ScheduleEdits {

std::shared_ptr<WorkSchedule> change(StoreSession& session, std::string_view identifier,
                                     const Schedules::Request& request) {
  const auto found = RecordLookup::find(Schedules::list(session), identifier, "schedule");
  session.journal("schedule edit " + Display::shortIdentifier(found.front()->id()));
  const Date from = DateInput::startOfDay(request.from, session.calendar());
  for (const auto& schedule : found) {
    schedule->setEffectiveFrom(from);
    schedule->setWeekdayMinutes(request.week);
    schedule->setModifiedAt(session.now());
  }
  session.context().save();
  return found.front();
}

}  // namespace quillmont::ScheduleEdits
