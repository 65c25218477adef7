// SQLiteError: turns a failed SQLite call into the StoreError the store
// reports: a busy database as busy, a file that is not a database (or is
// damaged) as notAStore, anything else with the caller's code. The message
// names what the store was doing and carries SQLite's own text.
#pragma once

#include <sqlite3.h>

#include <cerrno>

#include <string>
#include <string_view>

#include "platform/store/StoreError.h"

namespace quillmont::SQLiteError {

inline StoreError::Code codeFor(int resultCode, StoreError::Code fallback) {
  switch (resultCode & 0xff) {
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
      return StoreError::Code::busy;
    case SQLITE_NOTADB:
    case SQLITE_CORRUPT:
      return StoreError::Code::notAStore;
    default:
      return fallback;
  }
}

/// Whether the failure is a full disk: SQLite's own "database or disk is
/// full", or an I/O error whose system error says there is no space left.
inline bool isDiskFull(sqlite3* database, int resultCode) {
  if ((resultCode & 0xff) == SQLITE_FULL) return true;
  if ((resultCode & 0xff) != SQLITE_IOERR || database == nullptr) return false;
  const int systemError = sqlite3_system_errno(database);
  return systemError == ENOSPC || systemError == EDQUOT;
}

/// `database` may be null (a failed open without a handle).
inline StoreError make(sqlite3* database, int resultCode, StoreError::Code fallback, std::string_view doing) {
  std::string message(doing);
  message += ": ";
  if (isDiskFull(database, resultCode)) {
    message += "the disk is full (free some space and try again)";
  } else {
    message += database != nullptr ? sqlite3_errmsg(database) : sqlite3_errstr(resultCode);
  }
  return StoreError(codeFor(resultCode, fallback), message);
}

}  // namespace quillmont::SQLiteError
