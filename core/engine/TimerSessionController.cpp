#include "core/engine/TimerSessionController.h"

#include "core/ledger/NoteValidation.h"

namespace quillmont::TimerSessionController {
namespace {

FetchDescriptor<WorkEntry> runningEntries() {
  return {[](const WorkEntry& entry) { return entry.isRunning(); },
          {SortDescriptor<WorkEntry>(&WorkEntry::startedAt), SortDescriptor<WorkEntry>(&WorkEntry::id)}};
}

}  // namespace

std::shared_ptr<WorkEntry> reconcileRunningEntries(ModelContext& context, Date at, bool saveChanges) {
  // Only the rows without an end are read.
  const auto running = context.fetch(RowFilter::allOf({{"endedAt", RowFilter::Op::isNull, {}}}), runningEntries());
  if (running.empty()) return nullptr;
  const auto& kept = running.front();
  bool changed = false;
  if (kept->startedAt() > at) {
    kept->setStartedAt(at);
    kept->setModifiedAt(at);
    changed = true;
  }
  for (std::size_t i = 1; i < running.size(); ++i) {
    context.deleteRecord(running[i]);
    changed = true;
  }
  if (saveChanges && changed) context.save();
  return kept;
}

std::shared_ptr<WorkEntry> runningEntry(ModelContext& context, Date at) { return reconcileRunningEntries(context, at, true); }

bool start(ModelContext& context, Date at) { return start(context, at, ""); }

bool start(ModelContext& context, Date at, std::string_view typedNote) {
  if (reconcileRunningEntries(context, at, true)) return false;
  const std::string note = NoteValidation::normalized(typedNote);
  const Date createdAt = Date::now();
  const Date modifiedAt = Date::now();
  context.insert(std::make_shared<WorkEntry>(UUID::random(), at, std::nullopt, 0, note, createdAt, modifiedAt));
  context.save();
  return true;
}

bool stop(ModelContext& context, Date at) {
  const auto running = reconcileRunningEntries(context, at, true);
  if (!running) return false;
  running->setEndedAt(at);
  running->setModifiedAt(at);
  context.save();
  return true;
}

bool toggle(ModelContext& context, Date at) {
  if (reconcileRunningEntries(context, at, true)) {
    stop(context, at);
    return false;
  }
  return start(context, at);
}

std::shared_ptr<WorkEntry> cancel(ModelContext& context, Date at) {
  const auto running = reconcileRunningEntries(context, at, true);
  if (!running) return nullptr;
  context.deleteRecord(running);
  context.save();
  return running;
}

std::string lastNote(ModelContext& context) {
  std::shared_ptr<WorkEntry> last;
  for (const auto& entry : context.fetch<WorkEntry>()) {
    // Ties between equal starts go to the higher id, so every machine agrees.
    if (!last || entry->startedAt() > last->startedAt() ||
        (entry->startedAt() == last->startedAt() && last->id() < entry->id())) {
      last = entry;
    }
  }
  return last ? last->note() : std::string();
}

}  // namespace quillmont::TimerSessionController
