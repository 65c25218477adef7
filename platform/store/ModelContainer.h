// ModelContainer: an open record store, one SQLite database (a file, or a
// private database in memory) holding one table per record type of its
// schema. Contexts (ModelContext) read and write records through it.
//
// The file is "<name>.store" in the application group's container when the
// configuration names a group, else in the program's own container; the
// folder is created (mode 0700) when missing, the file and its journal are
// the user's alone (0600). Saves go through a rollback journal with full
// syncs, so a crash never loses a completed save nor keeps part of one, and
// a save the disk refused (a failed write or sync) throws and leaves the
// store as it was, now and at every later open. The schema version is kept in
// the file: a newer version is refused, and a store of an older version of
// the same major version gains the tables and columns added since (filled
// with the attributes' defaults). A file that is not a store of this
// program's kind is refused and never changed. A store whose file, folder
// or file system cannot be written opens read-only: it reads as usual and
// every save throws StoreError(readOnly).
//
// A container and its contexts are used from one thread.
#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <initializer_list>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/store/HolidayList.h"
#include "platform/store/ModelConfiguration.h"
#include "platform/store/SQLiteDatabase.h"
#include "platform/store/SQLiteStatement.h"
#include "platform/store/UndoJournal.h"
#include "platform/store/WriterLock.h"

namespace quillmont {

class ModelContainer {
 public:
  /// Opens (creating when missing) the store `configuration` describes;
  /// throws StoreError.
  static std::shared_ptr<ModelContainer> open(ModelConfiguration configuration);

  ~ModelContainer();
  ModelContainer(const ModelContainer&) = delete;
  ModelContainer& operator=(const ModelContainer&) = delete;

  const ModelConfiguration& configuration() const { return configuration_; }
  /// The store's file; nothing for a store in memory.
  const std::optional<std::filesystem::path>& url() const { return url_; }

  /// "ok", or the problems SQLite's integrity check found, one per line.
  std::string integrityCheck();

  /// Whether the store could only be opened for reading; saves then throw
  /// StoreError(readOnly).
  bool isReadOnly() const { return isReadOnly_; }

  /// How many saves through this container committed changes.
  std::uint64_t savesCommitted() const { return savesCommitted_; }

  /// A count that every save which writes records of `entityName` raises,
  /// whichever process makes it: equal counts mean the table is unchanged.
  std::int64_t generation(std::string_view entityName);
  /// A small text kept in the store beside the records (not a record).
  std::optional<std::string> metadata(std::string_view key);
  /// Stores `value` under `key`: within the save when called from a save
  /// observer (see ModelContext), else in a transaction of its own. Throws
  /// StoreError(busy, saveFailed or readOnly).
  void setMetadata(std::string_view key, std::string_view value);

  /// Reads from now on share one snapshot of the store, one read
  /// transaction, instead of each taking and dropping the log's read lock:
  /// a command's dozens of reads cost one lock. The next write, or
  /// endReading(), ends it first, so a save always sees the newest store.
  /// Nothing happens inside a transaction.
  void beginReading();
  /// Ends what beginReading began (nothing when it began nothing).
  void endReading() noexcept;

  /// The action the next undo would undo (the newest journaled one; see
  /// UndoJournal); nothing when there is none.
  std::optional<UndoJournal::Action> lastUndoableAction() const { return journal_.last(); }
  /// Undoes the newest journaled action in one transaction and returns it;
  /// nothing when there is none. Throws StoreError(changedSince) when its
  /// records changed since (then nothing is changed), busy, saveFailed or
  /// readOnly.
  std::optional<UndoJournal::Action> undoLastAction();

  /// The deletions journaled saves made and those absorbed (see DeletionLog).
  std::vector<DeletionLog::Entry> deletions() const { return deletions_.entries(); }
  /// In one transaction: keeps each of `entries` and forgets deletions
  /// before `forgetBefore`; returns how many were new or later. Throws
  /// StoreError(busy, saveFailed or readOnly).
  std::int64_t absorbDeletions(std::span<const DeletionLog::Entry> entries, Date forgetBefore);

  /// The public holidays kept in the store (see HolidayList).
  std::vector<HolidayList::Entry> holidays() const { return holidays_.entries(); }
  /// In one transaction: adds each of `entries` not kept yet; returns how
  /// many were new. Throws StoreError(busy, saveFailed or readOnly).
  std::int64_t addHolidays(std::span<const HolidayList::Entry> entries);

 private:
  friend class ModelContext;

  /// The connection's statements for one record type, prepared on first use.
  struct EntityStore {
    const EntityDescription* description = nullptr;
    /// By `Statement`; see `statement`.
    std::array<SQLiteStatement, 4> statements;
    /// Saves through this container that changed the table. A connection's
    /// own commits leave `PRAGMA data_version` alone, so contexts on this
    /// container compare this count to notice each other's saves.
    std::uint64_t commitCount = 0;
    /// Selections of some columns (see selectColumns), by their SQL text.
    std::vector<std::pair<std::string, SQLiteStatement>> selections;
  };

  ModelContainer(ModelConfiguration configuration, std::optional<std::filesystem::path> url, SQLiteDatabase database,
                 bool readOnly);

  /// Throws StoreError(other) when the schema has no such record type.
  EntityStore& entityStore(std::string_view entityName);
  enum class Statement {
    selectAll,  ///< row key, then the attributes in order, by row key
    insert,     ///< the attributes as ?1...?n
    update,     ///< the attributes as ?1...?n, the row key as ?n+1
    remove,     ///< the row key as ?1
  };
  /// One of the record type's statements, prepared on its first use: a
  /// command that only reads never pays for compiling the writes.
  SQLiteStatement& statement(EntityStore& store, Statement which);
  /// A statement that reads the named attributes of every row, in that
  /// order, or of the rows that meet an SQL `condition` on the columns,
  /// still by row key; prepared once per list and condition.
  SQLiteStatement& selectColumns(EntityStore& store, std::initializer_list<std::string_view> names,
                                 const std::string& condition = {});
  /// A statement that reads the row key and every attribute, as the
  /// select-all statement does, of the rows that meet an SQL `condition`,
  /// by row key; prepared once per condition.
  SQLiteStatement& selectRows(EntityStore& store, const std::string& condition);
  /// The statement `SELECT columns FROM` the table, of the rows that meet
  /// `condition` (all when empty), cached by its text.
  SQLiteStatement& selection(EntityStore& store, const std::string& columns, const std::string& condition);
  /// Changes whenever another connection commits to the file.
  std::int64_t dataVersion();

  /// Takes the write lock (waiting up to the busy timeout); throws
  /// StoreError(busy or saveFailed).
  void beginWriting();
  /// Commits beginWriting's transaction, then lets the next
  /// writer in; when it throws, abandonWriting ends the transaction.
  void commitTransaction();
  /// commitTransaction for a save of records (counted).
  void commitWriting();
  /// Inside the write transaction: raises the generation of `entityName`.
  void raiseGeneration(std::string_view entityName);
  /// Undoes an open write transaction and lets the next writer in; never
  /// throws.
  void abandonWriting() noexcept;
  /// Runs `write` (which returns how many rows it changed) in a write
  /// transaction of its own; a store error becomes a failed save.
  template <typename Write>
  std::int64_t writeAlone(Write write);

  ModelConfiguration configuration_;
  std::optional<std::filesystem::path> url_;
  SQLiteDatabase database_;
  /// Held from beginWriting until the commit has ended.
  WriterLock writer_;
  SQLiteStatement dataVersion_;
  SQLiteStatement readMetadata_;
  SQLiteStatement raiseGeneration_;
  std::vector<EntityStore> entities_;  // one per schema entity, in schema order
  DeletionLog deletions_{database_, configuration_.schema.entities};
  UndoJournal journal_{database_, configuration_.schema.entities, deletions_};
  HolidayList holidays_{database_};
  bool isReadOnly_ = false;
  std::uint64_t savesCommitted_ = 0;
  /// Whether the open transaction is beginReading's.
  bool reading_ = false;
};

}  // namespace quillmont
