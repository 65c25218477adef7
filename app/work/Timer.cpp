#include "app/work/Timer.h"

#include "app/InvalidInput.h"
#include "app/Refusal.h"
#include "app/input/TypedValue.h"
#include "app/session/StoreSession.h"
#include "app/text/Display.h"
#include "app/work/WorkEntries.h"
#include "app/work/WorkTimes.h"
#include "core/engine/TimerSessionController.h"

namespace quillmont::Timer {
namespace {

Date instant(StoreSession& session, std::string_view at) {
  return at.empty() ? session.now() : WorkTimes::pastTime(at, session.now(), session.calendar(), "at");
}

std::shared_ptr<WorkEntry> startAt(StoreSession& session, Date at, const std::string& note, bool force) {
  if (const auto current = running(session)) {
    throw Refusal("The timer is running already, since " + Display(session.calendar()).dateTime(current->startedAt()) +
                  ".");
  }
  WorkEntries::refuseOverlaps(session, WorkOverlap::span(at, std::nullopt, session.now()), std::nullopt, force,
                              "The timer from " + Display(session.calendar()).dateTime(at));
  TimerSessionController::start(session.context(), at, note);
  return running(session);
}

std::shared_ptr<WorkEntry> stopAt(StoreSession& session, const std::shared_ptr<WorkEntry>& current, Date at) {
  TimerSessionController::stop(session.context(), at);
  return current;
}

}  // namespace

std::shared_ptr<WorkEntry> running(StoreSession& session) {
  return TimerSessionController::runningEntry(session.context(), session.now());
}

std::shared_ptr<WorkEntry> start(StoreSession& session, const Start& request) {
  session.journal("timer start");
  const Date at = instant(session, request.at);
  return startAt(session, at, TypedValue::text(request.note, "note"), request.force);
}

std::shared_ptr<WorkEntry> resume(StoreSession& session, const Start& request) {
  session.journal("timer continue");
  const Date at = instant(session, request.at);
  return startAt(session, at, TimerSessionController::lastNote(session.context()), request.force);
}

std::shared_ptr<WorkEntry> stop(StoreSession& session, std::string_view atText) {
  session.journal("timer stop");
  const Date at = instant(session, atText);
  const auto current = running(session);
  // Nothing to stop is a refusal, which scripts must be able to tell.
  if (!current) throw Refusal("The timer is not running.");
  if (at < current->startedAt()) {
    const Display display(session.calendar());
    throw InvalidInput("at", "the timer started at " + display.dateTime(current->startedAt()) + ", after " +
                                 display.dateTime(at));
  }
  return stopAt(session, current, at);
}

std::shared_ptr<WorkEntry> cancel(StoreSession& session) {
  session.journal("timer cancel");
  auto cancelled = TimerSessionController::cancel(session.context(), session.now());
  if (!cancelled) throw Refusal("The timer is not running.");
  return cancelled;
}

Toggled toggle(StoreSession& session, bool force) {
  session.journal("timer toggle");
  if (const auto current = running(session)) return {false, stopAt(session, current, session.now())};
  return {true, startAt(session, session.now(), "", force)};
}

}  // namespace quillmont::Timer
