#include "platform/store/SQLiteDatabase.h"

#include <utility>

#include "platform/store/SQLiteError.h"

namespace quillmont {

SQLiteDatabase SQLiteDatabase::open(const char* path, int flags, std::string_view label) {
  // Set once, before SQLite initialises (a later call changes nothing):
  // - no memory statistics: they take a global lock around every allocation;
  // - no page cache allocated in bulk when a connection opens: setting up
  //   its twenty slots touches every page of them, a page fault each, while
  //   a command reads most pages through the memory map.
  static const int configured =
      sqlite3_config(SQLITE_CONFIG_MEMSTATUS, 0) | sqlite3_config(SQLITE_CONFIG_PAGECACHE, nullptr, 0, 0);
  (void)configured;
  sqlite3* database = nullptr;
  // One connection per container, used from one thread: no connection mutex.
  const int result = sqlite3_open_v2(path, &database, flags | SQLITE_OPEN_NOMUTEX, nullptr);
  SQLiteDatabase connection(database);  // closes the handle on failure too
  if (result != SQLITE_OK) {
    throw SQLiteError::make(database, result, StoreError::Code::cannotOpen, "opening " + std::string(label));
  }
  sqlite3_extended_result_codes(database, 1);
  return connection;
}

SQLiteDatabase SQLiteDatabase::openFile(const std::string& path) {
  return open(path.c_str(), SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, path);
}

SQLiteDatabase SQLiteDatabase::openFileReadOnly(const std::string& path, bool immutable) {
  if (!immutable) return open(path.c_str(), SQLITE_OPEN_READONLY, path);
  // A URI carries the parameter; the path's own '?', '#' and '%' are escaped.
  std::string uri = "file:";
  for (const char c : path) {
    if (c == '?' || c == '#' || c == '%') {
      static constexpr char digits[] = "0123456789ABCDEF";
      const auto byte = static_cast<unsigned char>(c);
      uri += '%';
      uri += digits[byte >> 4];
      uri += digits[byte & 0xF];
    } else {
      uri += c;
    }
  }
  uri += "?immutable=1";
  return open(uri.c_str(), SQLITE_OPEN_READONLY | SQLITE_OPEN_URI, path);
}

SQLiteDatabase SQLiteDatabase::openInMemory() {
  return open(":memory:", SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_MEMORY, "the store in memory");
}

std::string SQLiteDatabase::quoted(std::string_view name) {
  std::string result = "\"";
  for (const char c : name) {
    result += c;
    if (c == '"') result += '"';
  }
  return result + '"';
}

void SQLiteDatabase::commit(StoreError::Code code) { execute("COMMIT", code); }

SQLiteDatabase::~SQLiteDatabase() { sqlite3_close_v2(database_); }

SQLiteDatabase::SQLiteDatabase(SQLiteDatabase&& other) noexcept : database_(std::exchange(other.database_, nullptr)) {}

SQLiteDatabase& SQLiteDatabase::operator=(SQLiteDatabase&& other) noexcept {
  std::swap(database_, other.database_);
  return *this;
}

void SQLiteDatabase::execute(std::string_view sql, StoreError::Code code) {
  const std::string text(sql);
  char* message = nullptr;
  const int result = sqlite3_exec(database_, text.c_str(), nullptr, nullptr, &message);
  sqlite3_free(message);  // sqlite3_errmsg still holds the same text
  if (result != SQLITE_OK) throw SQLiteError::make(database_, result, code, "SQLite");
}

std::int64_t SQLiteDatabase::queryInt64(std::string_view sql) const {
  SQLiteStatement statement = prepare(sql);
  return statement.step() ? statement.columnInt64(0) : 0;
}

bool SQLiteDatabase::hasTable(const std::string& table, const char* column) const {
  return sqlite3_table_column_metadata(database_, "main", table.c_str(), column, nullptr, nullptr, nullptr, nullptr,
                                       nullptr) == SQLITE_OK;
}

}  // namespace quillmont
