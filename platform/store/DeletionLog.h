// DeletionLog: which records people deleted, and when, kept in the store so
// that a deletion can be passed on to another copy of the store (a merge
// keeps records an archive lacks, so without it a deleted record would come
// back from a copy that still holds it).
//
// A journaled save (ModelContext::setUndoAction, a person's own action)
// logs, in its own transaction, the `id` attribute of every row it deletes,
// for record types that have one; undoing the action forgets what it
// logged. Repairs and merges are not journaled and log nothing. Deletions
// learnt from elsewhere are absorbed with `absorb`. One entry per record
// type and identifier: the later of two deletions is kept.
//
// Table: "_deletions" (entity, id, deletedAt, entry), created on first use;
// `entry` is the journal entry that logged the row (NULL when absorbed).
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "platform/foundation/Date.h"
#include "platform/foundation/UUID.h"
#include "platform/store/Schema.h"
#include "platform/store/SQLiteDatabase.h"

namespace quillmont {

class DeletionLog {
 public:
  struct Entry {
    std::string entity;  ///< the record type's name
    UUID id;
    Date deletedAt;
    friend bool operator==(const Entry&, const Entry&) = default;
  };

  DeletionLog(SQLiteDatabase& database, const std::vector<EntityDescription>& entities)
      : database_(database), entities_(entities) {}

  /// Inside a write transaction, before the row is deleted: logs the
  /// deletion of row `key` of the record type `entity` (an index into the
  /// schema's entities) at `at`, by journal entry `entry`.
  void record(std::size_t entity, std::int64_t key, Date at, std::int64_t entry);
  /// Inside a write transaction, before the rows are deleted: logs the
  /// deletion at `at` of the rows of the record type `entity` whose row key
  /// is among `keySelection` (an SQL selection of row keys), for good: no
  /// undo forgets it.
  void recordRows(std::size_t entity, const std::string& keySelection, Date at);
  /// Inside a write transaction: forgets what journal entry `entry` logged.
  void forgetEntry(std::int64_t entry);

  /// Every logged deletion, by record type and identifier.
  std::vector<Entry> entries() const;
  /// Inside a write transaction: keeps each of `entries` (for a record
  /// already logged, the later instant) and forgets deletions before
  /// `forgetBefore`. Returns how many entries were new or later.
  std::int64_t absorb(std::span<const Entry> entries, Date forgetBefore);

 private:
  void createTable();
  bool tableExists() const;

  SQLiteDatabase& database_;
  const std::vector<EntityDescription>& entities_;
  bool created_ = false;
};

}  // namespace quillmont
