#include "app/housekeeping/Housekeeping.h"

#include "app/Refusal.h"
#include "core/engine/DataStoreMaintenance.h"
#include "platform/store/StoreError.h"

namespace quillmont::Housekeeping {

void eraseAll(StoreSession& session) {
  session.journal("erase");
  DataStoreMaintenance::eraseAll(session.context());
}

UndoJournal::Action lastChange(StoreSession& session) {
  auto last = session.container()->lastUndoableAction();
  if (!last) throw Refusal("Nothing to undo.");
  return *last;
}

UndoJournal::Action undo(StoreSession& session) {
  std::optional<UndoJournal::Action> undone;
  try {
    undone = session.container()->undoLastAction();
  } catch (const StoreError& error) {
    if (error.code() == StoreError::Code::changedSince) throw Refusal(error.what());
    throw;
  }
  if (!undone) throw Refusal("Nothing to undo.");
  return *undone;
}

}  // namespace quillmont::Housekeeping
