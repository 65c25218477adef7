// UndoJournal: what the store's journaled saves changed, kept in the store
// itself so that the last action can be undone exactly, by this process or a
// later one. A save made under an action name (ModelContext::setUndoAction)
// copies, in its own transaction, every row it touches into the journal:
// the row as inserted, the row before and after an update, the row before a
// deletion. Saves that share a command (one run of a program may save more
// than once) are undone together, newest first.
//
// Undo restores each row to its image from before the action, but only
// while every row still is what the action left: a row changed since (by
// another action, another program or a repair) makes the undo refuse, and
// nothing is changed. The journal keeps the last `keptCommands` commands and
// is emptied when the tables change shape with a new schema.
//
// Tables: "_journal" (one row per save: command, action, instant) and one
// "_journal.<record type>" per type, holding row images without column types,
// so every value keeps its exact storage class.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/foundation/Date.h"
#include "platform/store/DeletionLog.h"
#include "platform/store/Schema.h"
#include "platform/store/SQLiteDatabase.h"

namespace quillmont {

class UndoJournal {
 public:
  static constexpr std::size_t keptCommands = 50;

  enum class Image : std::int64_t { inserted = 0, beforeUpdate = 1, beforeDelete = 2, afterUpdate = 3 };

  /// An action as the journal keeps it.
  struct Action {
    std::string name;
    Date at;
  };

  /// A journaled deletion is logged in `deletions` too, and undoing it forgets that.
  UndoJournal(SQLiteDatabase& database, const std::vector<EntityDescription>& entities, DeletionLog& deletions)
      : database_(database), entities_(entities), deletions_(deletions) {}

  /// Statements that drop the whole journal (run when the tables change shape).
  static std::vector<std::string> discardStatements(const std::vector<EntityDescription>& entities);

  /// Inside a write transaction: the following `record` calls belong to a
  /// save of `action`, part of `command`. Drops commands beyond the kept ones.
  void begin(std::string_view action, std::string_view command, Date at);
  /// The save is over (committed or not).
  void end() noexcept { entry_.reset(); }
  bool isRecording() const { return entry_.has_value(); }
  /// Copies the row `key` of the record type `entity` (an index into the
  /// schema's entities) as the given image.
  void record(std::size_t entity, std::int64_t key, Image image);

  /// The newest journaled action; nothing when there is none.
  std::optional<Action> last() const;
  /// Inside a write transaction: undoes the newest command and forgets it.
  /// Returns the action and the indexes of the record types it changed;
  /// nothing when the journal is empty. Throws StoreError(changedSince) when
  /// a row is no longer as the action left it (the transaction then has to
  /// be rolled back).
  ///
  /// An undo is a change like any other for copies of the store kept
  /// elsewhere (see DeletionLog): the rows it brings back are marked as
  /// modified `now` (their `modifiedAt` attribute, where the type has one),
  /// so they win over the copies the action left elsewhere, and the rows it
  /// removes are logged as deleted `now`.
  std::optional<std::pair<Action, std::vector<std::size_t>>> undoLast(Date now);

 private:
  struct EntityStatements {
    bool prepared = false;
    SQLiteStatement copy;  ///< ?1 journal entry, ?2 image, ?3 row key
  };

  std::string journalTable(std::size_t entity) const;
  /// The attributes' columns, each after `prefix` ("image."), comma-separated.
  std::string attributeList(std::size_t entity, std::string_view prefix) const;
  /// The row key's column, then the attributes'.
  std::string columnList(std::size_t entity, std::string_view prefix) const;
  /// Deletes the entries and images of all but the newest keptCommands - 1 commands.
  void forgetOldCommands();
  EntityStatements& statements(std::size_t entity);
  /// Undoes one save; adds the record types it changed to `changed`.
  void undoEntry(std::int64_t entry, std::vector<std::size_t>& changed, Date now);

  SQLiteDatabase& database_;
  const std::vector<EntityDescription>& entities_;
  DeletionLog& deletions_;
  std::vector<EntityStatements> statements_;
  std::optional<std::int64_t> entry_;
  Date at_;
};

}  // namespace quillmont
