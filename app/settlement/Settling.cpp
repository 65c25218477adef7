#include "app/settlement/Settling.h"

#include "app/InvalidInput.h"
#include "app/Refusal.h"
#include "app/session/StoreSession.h"
#include "core/engine/PublicHolidays.h"

namespace quillmont::Settling {

Result settle(StoreSession& session, const Request& request) {
  if (!session.settings().hasCompletedOnboarding()) {
    throw Refusal("the time bank is not set up yet", Remedy{Remedy::Kind::finishSetup});
  }
  const Calendar& calendar = session.calendar();
  const Date todayStart = DateInput::startOfDay(session.today(), calendar);
  Date last = todayStart - 1.0;
  if (request.through) {
    last = DateInput::midday(*request.through, calendar);
    if (!(last < todayStart)) throw InvalidInput("through", "must lie before today, which is not over yet");
  }
  Result result;
  std::optional<Date> first = Settlement::firstDay(session.context(), session.settings(), calendar);
  if (!request.from && !first) {
    result.noWork = true;
    return result;
  }
  if (request.from) {
    first = DateInput::midday(*request.from, calendar);
    if (calendar.startOfDay(*first) > calendar.startOfDay(last)) {
      throw InvalidInput("from", "lies after the last day to settle");
    }
  }
  const auto holidays = PublicHolidays::days(PublicHolidays::read(*session.container(), calendar));
  result.planned = Settlement::plan(session.context(), session.settings(), *first, last, holidays, calendar);
  for (const auto& day : result.planned) {
    if (!day.toSettle()) continue;
    result.booked.push_back(day);
    result.minutes += day.minutes;
  }
  if (request.dryRun || result.booked.empty()) return result;
  session.journal("settle");
  Settlement::settle(result.planned, session.context(), session.now());
  result.saved = true;
  return result;
}

}  // namespace quillmont::Settling
