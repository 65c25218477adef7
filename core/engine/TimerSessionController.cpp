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
  const auto running = context.fetch(runningEntries());
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

bool start(ModelContext& context, Date at) {
  if (reconcileRunningEntries(context, at, true)) return false;
  const std::string note = NoteValidation::normalized("");
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

}  // namespace quillmont::TimerSessionController
