#include "app/work/WorkEntries.h"

#include <algorithm>

#include "app/InvalidInput.h"
#include "app/Refusal.h"
#include "app/input/TypedValue.h"
#include "app/records/RecordLookup.h"
#include "app/session/StoreSession.h"
#include "app/text/Display.h"
#include "app/work/WorkTimes.h"
#include "core/engine/DataStoreMaintenance.h"
#include "core/engine/TimeBankCalculator.h"
#include "core/ledger/NoteValidation.h"

namespace quillmont::WorkEntries {
namespace {

std::int64_t breakMinutes(const std::string& text) {
  const std::int64_t minutes = TypedValue::minutes(text, "break");
  if (minutes < 0 || minutes > DataStoreMaintenance::maximumBreakMinutes) {
    throw InvalidInput("break", "a break lasts from 0 to " + std::to_string(DataStoreMaintenance::maximumBreakMinutes) +
                                    " minutes");
  }
  return minutes;
}

/// An entry is at most a day long unless `force` says the length is meant:
/// anything longer, like an end before the start, is nearly always a slip
/// (a day left out, a wrong month).
void checkInterval(Date start, std::optional<Date> end, bool force, const Calendar& calendar) {
  if (!end) return;
  const Display display(calendar);
  if (*end < start) {
    throw InvalidInput("end", "the entry would end at " + display.dateTime(*end) + ", before it starts at " +
                                  display.dateTime(start));
  }
  if (!force && *end - start > maximumUnconfirmedSeconds) {
    throw InvalidInput("", "the entry would last " + Display::duration(*end - start) + ", from " +
                               display.dateTime(start) + " to " + display.dateTime(*end),
                       {Remedy::Kind::confirmLength});
  }
}

std::vector<std::shared_ptr<WorkEntry>> entries(StoreSession& session) {
  return session.context().fetch<WorkEntry>({{}, {{&WorkEntry::startedAt}, {&WorkEntry::id}}});
}

/// Newest first: the entry made last (createdAt), then the later start,
/// then the greater identifier.
bool madeLater(const WorkEntry& a, const WorkEntry& b) {
  using RecordLookup::recency;
  if (recency(a.createdAt()) != recency(b.createdAt())) return recency(a.createdAt()) > recency(b.createdAt());
  if (recency(a.startedAt()) != recency(b.startedAt())) return recency(a.startedAt()) > recency(b.startedAt());
  return a.id() > b.id();
}

std::vector<std::shared_ptr<WorkEntry>> named(StoreSession& session, std::string_view identifier) {
  return RecordLookup::find(entries(session), identifier, "work entry", madeLater);
}

/// How undo names the entry an action changed: as typed, or by its
/// identifier when typed as a place among the newest, which moves on.
std::string journalName(std::string_view typed, const WorkEntry& entry) {
  return RecordLookup::recentPlace(typed) ? Display::shortIdentifier(entry.id()) : std::string(typed);
}

Changed changed(StoreSession& session, std::shared_ptr<WorkEntry> entry) {
  const double worked = entry->workedSeconds(session.now());
  return {std::move(entry), worked};
}

}  // namespace

void refuseOverlaps(StoreSession& session, const WorkOverlap::Span& span, const std::optional<UUID>& except,
                    bool force, const std::string& what) {
  if (force) return;
  const auto overlapping = WorkOverlap::overlapping(session.context(), span, session.now(), except);
  if (overlapping.empty()) return;
  const Display display(session.calendar());
  std::string named;
  std::vector<UUID> shown;
  for (const auto& entry : overlapping) {
    if (std::find(shown.begin(), shown.end(), entry->id()) != shown.end()) continue;  // a copy
    shown.push_back(entry->id());
    named += (named.empty() ? "" : ", ") + std::string("work ") + Display::shortIdentifier(entry->id()) + " (" +
             display.span(entry->startedAt(), entry->endedAt()) + ")";
  }
  throw Refusal(what + " would overlap " + named, Remedy{Remedy::Kind::confirmOverlap});
}

Changed add(StoreSession& session, const Request& request) {
  session.journal("work add");
  const Date start = TypedValue::dateTime(request.start, session.today(), session.calendar(), "start");
  const Date end = WorkTimes::workEndTime(request.end, start, session.now(), session.calendar(), "end");
  const std::int64_t pause = request.breakTime.empty() ? 0 : breakMinutes(request.breakTime);
  checkInterval(start, end, request.force, session.calendar());
  refuseOverlaps(session, WorkOverlap::span(start, end, session.now()), std::nullopt, request.force, "The entry");
  auto entry = std::make_shared<WorkEntry>(UUID::random(), start, end, pause,
                                           TypedValue::text(request.note.value_or(""), "note"), session.now(),
                                           session.now());
  session.context().insert(entry);
  session.context().save();
  return changed(session, std::move(entry));
}

Changed edit(StoreSession& session, std::string_view identifier, const Request& request) {
  const auto found = named(session, identifier);
  session.journal("work edit " + journalName(identifier, *found.front()));
  WorkEntry& entry = *found.front();
  // A time of day alone keeps the entry on its own day.
  const Date start = request.start.empty()
                         ? entry.startedAt()
                         : WorkTimes::startTime(request.start, DateInput::dayOf(entry.startedAt(), session.calendar()),
                                                session.today(), session.calendar(), "start");
  const std::optional<Date> end =
      request.end.empty() ? entry.endedAt()
                          : WorkTimes::workEndTime(request.end, start, session.now(), session.calendar(), "end");
  // The timer cannot have started later than now; it would be moved back.
  if (!end && !request.start.empty() && start > session.now()) {
    throw InvalidInput("start", "the running timer cannot start at " + Display(session.calendar()).dateTime(start) +
                                    ", which is still to come");
  }
  const std::int64_t pause = request.breakTime.empty() ? entry.breakMinutes() : breakMinutes(request.breakTime);
  checkInterval(start, end, request.force, session.calendar());
  refuseOverlaps(session, WorkOverlap::span(start, end, session.now()), entry.id(), request.force, "The entry");
  entry.setStartedAt(start);
  entry.setEndedAt(end);
  entry.setBreakMinutes(pause);
  if (request.note) entry.setNote(NoteValidation::normalized(TypedValue::text(*request.note, "note")));
  entry.setModifiedAt(session.now());
  session.context().save();
  return changed(session, found.front());
}

Changed remove(StoreSession& session, std::string_view identifier) {
  const auto found = named(session, identifier);
  session.journal("work delete " + journalName(identifier, *found.front()));
  for (const auto& entry : found) session.context().deleteRecord(entry);
  session.context().save();
  return changed(session, found.front());
}

Listing list(StoreSession& session, const DateInterval& interval) {
  Listing result;
  for (auto& entry : entries(session)) {
    if (entry->startedAt() >= interval.start && entry->startedAt() < interval.end()) {
      result.entries.push_back(std::move(entry));
    }
  }
  result.workedSeconds = TimeBankCalculator::workedSeconds(result.entries, session.now());
  return result;
}

}  // namespace quillmont::WorkEntries
