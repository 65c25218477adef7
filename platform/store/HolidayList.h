// HolidayList: the public holidays a person imported, kept in the store so
// that every program (and, through sync, every machine) sees them. A holiday
// is a calendar day written "YYYY-MM-DD" (proleptic Gregorian, the day as the
// wall clock shows it wherever the store is read), the UID of the calendar
// event it came from and its name.
//
// Table: "_holidays" (day, uid, name), one row per day and UID, created on
// first use. It lives beside the schema's record types, not among them: the
// schema, its version and an older program's view of the store stay as they
// are, and an older program ignores the table.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "platform/store/SQLiteDatabase.h"

namespace quillmont {

class HolidayList {
 public:
  struct Entry {
    std::string day;  ///< "YYYY-MM-DD"
    std::string uid;
    std::string name;
    friend bool operator==(const Entry&, const Entry&) = default;
  };

  explicit HolidayList(SQLiteDatabase& database) : database_(database) {}

  /// Every holiday, by day and UID.
  std::vector<Entry> entries() const;
  /// Inside a write transaction: adds each of `entries` not kept yet (a day
  /// and UID kept already keeps its name). Returns how many were new.
  std::int64_t add(std::span<const Entry> entries);

 private:
  bool tableExists() const;

  SQLiteDatabase& database_;
};

}  // namespace quillmont
