#include "app/settings/Schedules.h"

#include "app/records/RecordLookup.h"
#include "app/session/StoreSession.h"
#include "app/text/Display.h"

namespace quillmont::Schedules {
namespace {

/// Newest first: the schedule made last (createdAt), then the later first
/// day, then the greater identifier.
bool madeLater(const WorkSchedule& a, const WorkSchedule& b) {
  using RecordLookup::recency;
  if (recency(a.createdAt()) != recency(b.createdAt())) return recency(a.createdAt()) > recency(b.createdAt());
  if (recency(a.effectiveFrom()) != recency(b.effectiveFrom())) {
    return recency(a.effectiveFrom()) > recency(b.effectiveFrom());
  }
  return a.id() > b.id();
}

}  // namespace

std::shared_ptr<WorkSchedule> add(StoreSession& session, const Request& request) {
  session.journal("schedule add " + (request.fromText.empty() ? Display(session.calendar()).day(
                                                                    DateInput::midday(request.from, session.calendar()))
                                                              : request.fromText));
  auto schedule = std::make_shared<WorkSchedule>(UUID::random(), DateInput::startOfDay(request.from, session.calendar()),
                                                 request.week, session.now(), session.now());
  session.context().insert(schedule);
  session.context().save();
  return schedule;
}

std::shared_ptr<WorkSchedule> remove(StoreSession& session, std::string_view identifier) {
  const auto found = RecordLookup::find(list(session), identifier, "schedule", madeLater);
  session.journal("schedule remove " + (RecordLookup::recentPlace(identifier)
                                            ? Display::shortIdentifier(found.front()->id())
                                            : std::string(identifier)));
  for (const auto& schedule : found) session.context().deleteRecord(schedule);
  session.context().save();
  return found.front();
}

std::vector<std::shared_ptr<WorkSchedule>> list(StoreSession& session) {
  return session.context().fetch<WorkSchedule>({{}, {{&WorkSchedule::effectiveFrom}, {&WorkSchedule::modifiedAt}}});
}

}  // namespace quillmont::Schedules
