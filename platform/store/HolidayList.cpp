#include "platform/store/HolidayList.h"

namespace quillmont {
namespace {

constexpr std::string_view table = "_holidays";

std::string quoted(std::string_view name) { return SQLiteDatabase::quoted(name); }

}  // namespace

bool HolidayList::tableExists() const {
  SQLiteStatement statement = database_.prepare("SELECT 1 FROM sqlite_master WHERE type = 'table' AND name = ?1");
  const std::string name(table);
  statement.bind(1, name);
  return statement.step();
}

std::vector<HolidayList::Entry> HolidayList::entries() const {
  std::vector<Entry> result;
  if (!tableExists()) return result;
  SQLiteStatement statement = database_.prepare("SELECT day, uid, name FROM " + quoted(table) + " ORDER BY day, uid");
  while (statement.step()) {
    Entry entry;
    statement.read(0, entry.day);
    statement.read(1, entry.uid);
    statement.read(2, entry.name);
    result.push_back(std::move(entry));
  }
  return result;
}

std::int64_t HolidayList::add(std::span<const Entry> entries) {
  if (entries.empty()) return 0;
  database_.execute("CREATE TABLE IF NOT EXISTS " + quoted(table) +
                    " (day TEXT NOT NULL, uid TEXT NOT NULL, name TEXT NOT NULL, PRIMARY KEY (day, uid))"
                    " WITHOUT ROWID");
  std::int64_t added = 0;
  SQLiteStatement insert =
      database_.prepare("INSERT OR IGNORE INTO " + quoted(table) + " (day, uid, name) VALUES (?1, ?2, ?3)");
  for (const Entry& entry : entries) {
    SQLiteStatement::Scope scope(insert);
    insert.bind(1, entry.day);
    insert.bind(2, entry.uid);
    insert.bind(3, entry.name);
    insert.step();
    added += sqlite3_changes(database_.handle());
  }
  return added;
}

}  // namespace quillmont
