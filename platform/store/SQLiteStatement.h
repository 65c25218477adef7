// SQLiteStatement: one prepared SQLite statement, finalised when it goes.
// Binding and reading are overloaded on the value types records persist
// (UUID as a 16-byte blob, Date as seconds since 2001, an absent optional
// Date as NULL, integers, text, bools as 0/1), so that code walking a
// record's attribute list binds and reads every member the same way.
//
// Text and blobs are bound without copying: the bound value must outlive
// the step that uses it. Readers of rows must reset the statement when done
// (Scope does it), or the connection keeps its read snapshot open.
#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "platform/foundation/Date.h"
#include "platform/foundation/UUID.h"
#include "platform/store/SQLiteError.h"
#include "platform/store/StoreError.h"

namespace quillmont {

class SQLiteStatement {
 public:
  SQLiteStatement() = default;
  /// Prepares `sql` for repeated use; throws StoreError.
  SQLiteStatement(sqlite3* database, std::string_view sql) {
    const int result = sqlite3_prepare_v3(database, sql.data(), static_cast<int>(sql.size()), SQLITE_PREPARE_PERSISTENT,
                                          &statement_, nullptr);
    if (result != SQLITE_OK) {
      throw SQLiteError::make(database, result, StoreError::Code::other, "preparing a statement");
    }
  }
  ~SQLiteStatement() { sqlite3_finalize(statement_); }
  SQLiteStatement(SQLiteStatement&& other) noexcept : statement_(std::exchange(other.statement_, nullptr)) {}
  SQLiteStatement& operator=(SQLiteStatement&& other) noexcept {
    std::swap(statement_, other.statement_);
    return *this;
  }
  SQLiteStatement(const SQLiteStatement&) = delete;
  SQLiteStatement& operator=(const SQLiteStatement&) = delete;

  explicit operator bool() const { return statement_ != nullptr; }

  /// Resets the statement when it leaves scope, also when an exception passes.
  class Scope {
   public:
    explicit Scope(SQLiteStatement& statement) : statement_(statement) {}
    ~Scope() { statement_.reset(); }
    Scope(const Scope&) = delete;
    Scope& operator=(const Scope&) = delete;

   private:
    SQLiteStatement& statement_;
  };

  /// True when a row is ready, false when the statement has finished; throws StoreError.
  bool step() {
    const int result = sqlite3_step(statement_);
    if (result == SQLITE_ROW) return true;
    if (result == SQLITE_DONE) return false;
    throw SQLiteError::make(sqlite3_db_handle(statement_), result, StoreError::Code::other, "SQLite");
  }
  void reset() noexcept { sqlite3_reset(statement_); }

  // Parameters count from 1.
  void bind(int index, const UUID& value) {
    const int size = static_cast<int>(value.bytes.size());
    check(sqlite3_bind_blob(statement_, index, value.bytes.data(), size, SQLITE_STATIC));
  }
  void bind(int index, Date value) {
    check(sqlite3_bind_double(statement_, index, value.timeIntervalSinceReferenceDate));
  }
  void bind(int index, const std::optional<Date>& value) {
    check(value ? sqlite3_bind_double(statement_, index, value->timeIntervalSinceReferenceDate)
                : sqlite3_bind_null(statement_, index));
  }
  void bind(int index, std::int64_t value) { check(sqlite3_bind_int64(statement_, index, value)); }
  /// The text is not copied: it must live until the statement has stepped.
  void bind(int index, const std::string& value) {
    check(sqlite3_bind_text(statement_, index, value.data(), static_cast<int>(value.size()), SQLITE_STATIC));
  }
  /// A temporary would be gone before the step.
  void bind(int index, std::string&& value) = delete;
  void bind(int index, bool value) { check(sqlite3_bind_int(statement_, index, value ? 1 : 0)); }

  // Columns count from 0. Values of another type are converted by SQLite's
  // rules; a UUID column that is not a 16-byte blob reads as all zeros.
  void read(int column, UUID& value) const {
    const void* blob = sqlite3_column_blob(statement_, column);
    if (blob != nullptr && sqlite3_column_bytes(statement_, column) == static_cast<int>(value.bytes.size())) {
      std::memcpy(value.bytes.data(), blob, value.bytes.size());
    } else {
      value = UUID{};
    }
  }
  void read(int column, Date& value) const { value = Date(sqlite3_column_double(statement_, column)); }
  void read(int column, std::optional<Date>& value) const {
    if (sqlite3_column_type(statement_, column) == SQLITE_NULL) {
      value.reset();
    } else {
      value = Date(sqlite3_column_double(statement_, column));
    }
  }
  void read(int column, std::int64_t& value) const { value = sqlite3_column_int64(statement_, column); }
  void read(int column, std::string& value) const {
    const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement_, column));
    value.assign(text != nullptr ? text : "", static_cast<std::size_t>(sqlite3_column_bytes(statement_, column)));
  }
  void read(int column, bool& value) const { value = sqlite3_column_int64(statement_, column) != 0; }

  std::int64_t columnInt64(int column) const { return sqlite3_column_int64(statement_, column); }
  std::string columnText(int column) const {
    std::string text;
    read(column, text);
    return text;
  }

 private:
  void check(int result) const {
    if (result != SQLITE_OK) {
      throw SQLiteError::make(sqlite3_db_handle(statement_), result, StoreError::Code::other, "binding a value");
    }
  }

  sqlite3_stmt* statement_ = nullptr;
};

}  // namespace quillmont
