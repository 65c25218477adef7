// Housekeeping: erasing the whole ledger and taking back the last change.
// Erase deletes every booking, work entry, schedule and setting as one
// journaled change ("erase"), so undo can bring it back whole. Undo takes
// back the newest journaled change, as long as its records have not changed
// since; imports, sync exchanges of other machines' records and the widget's
// buttons are not journaled.
#pragma once

#include "app/session/StoreSession.h"
#include "platform/store/UndoJournal.h"

namespace quillmont::Housekeeping {

/// Deletes every record, journaled as "erase".
void eraseAll(StoreSession& session);

/// The change undo would take back; throws Refusal "Nothing to undo." when
/// there is none.
UndoJournal::Action lastChange(StoreSession& session);
/// Takes back the last change and returns it. Throws Refusal "Nothing to
/// undo." when there is none, and Refusal saying how many records changed
/// since when any did (nothing is changed then); the store's errors pass through.
UndoJournal::Action undo(StoreSession& session);

}  // namespace quillmont::Housekeeping
