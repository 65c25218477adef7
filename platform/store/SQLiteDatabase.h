// SQLiteDatabase: one SQLite connection, closed when it goes. The store
// uses one connection per container; it is not shared between threads.
#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/store/SQLiteStatement.h"
#include "platform/store/StoreError.h"

namespace quillmont {

class SQLiteDatabase {
 public:
  SQLiteDatabase() = default;
  /// Opens the file at `path` read-write, creating it when missing; throws
  /// StoreError(cannotOpen).
  static SQLiteDatabase openFile(const std::string& path);
  /// Opens the existing file at `path` for reading only. `immutable` also
  /// promises SQLite that nobody changes the file while it is open, which
  /// lets it read a write-ahead-logged store whose folder allows no log
  /// files; throws StoreError(cannotOpen).
  static SQLiteDatabase openFileReadOnly(const std::string& path, bool immutable);
  /// A private database in memory.
  static SQLiteDatabase openInMemory();

  ~SQLiteDatabase();
  SQLiteDatabase(SQLiteDatabase&& other) noexcept;
  SQLiteDatabase& operator=(SQLiteDatabase&& other) noexcept;
  SQLiteDatabase(const SQLiteDatabase&) = delete;
  SQLiteDatabase& operator=(const SQLiteDatabase&) = delete;

  sqlite3* handle() const { return database_; }

  /// `name` as an SQL identifier: in double quotes, inner quotes doubled.
  static std::string quoted(std::string_view name);

  /// Runs one or more statements that return no rows; failures throw a
  /// StoreError whose code is `code` unless SQLite names a more specific
  /// kind (busy, not a database).
  void execute(std::string_view sql, StoreError::Code code = StoreError::Code::other);
  SQLiteStatement prepare(std::string_view sql) const { return SQLiteStatement(database_, sql); }
  /// Commits the open transaction. With full syncs (the store's setting)
  /// it is on the disk when this returns; a commit the disk refused, in a
  /// write, a sync or a truncation, throws as `execute` does, and then
  /// nothing of it stays (SQLite rolls the journal back).
  void commit(StoreError::Code code);
  /// The first column of the first row of `sql` as an integer (0 without rows).
  std::int64_t queryInt64(std::string_view sql) const;
  /// Whether the main database has the table `table` (and in it `column`,
  /// unless that is null), from SQLite's parse of the schema: no statement
  /// is compiled.
  bool hasTable(const std::string& table, const char* column = nullptr) const;

  std::int64_t lastInsertRowid() const { return sqlite3_last_insert_rowid(database_); }
  bool isInTransaction() const { return sqlite3_get_autocommit(database_) == 0; }

 private:
  static SQLiteDatabase open(const char* path, int flags, std::string_view label);
  explicit SQLiteDatabase(sqlite3* database) : database_(database) {}

  sqlite3* database_ = nullptr;
};

}  // namespace quillmont
