#include "platform/store/SQLiteError.h"

#include <gtest/gtest.h>

namespace quillmont {
namespace {

// A full disk is said in words a person can act on, not as an I/O error.
TEST(SQLiteErrorTest, AFullDiskSaysSo) {
  sqlite3* database = nullptr;
  ASSERT_EQ(sqlite3_open(":memory:", &database), SQLITE_OK);
  ASSERT_EQ(sqlite3_exec(database, "CREATE TABLE t (x BLOB); PRAGMA max_page_count = 2;", nullptr, nullptr, nullptr),
            SQLITE_OK);
  const int result = sqlite3_exec(database, "INSERT INTO t VALUES (zeroblob(100000))", nullptr, nullptr, nullptr);
  ASSERT_EQ(result & 0xff, SQLITE_FULL);
  const StoreError error = SQLiteError::make(database, result, StoreError::Code::saveFailed, "saving");
  EXPECT_EQ(std::string(error.what()), "saving: the disk is full (free some space and try again)");
  EXPECT_EQ(error.code(), StoreError::Code::saveFailed);

  const StoreError other = SQLiteError::make(nullptr, SQLITE_IOERR, StoreError::Code::other, "reading");
  EXPECT_EQ(std::string(other.what()).rfind("reading: ", 0), 0u);
  EXPECT_EQ(std::string(other.what()).find("disk is full"), std::string::npos);
  sqlite3_close(database);
}

}  // namespace
}  // namespace quillmont
